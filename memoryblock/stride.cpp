// The pieces of a gathering begin at regular distances, so that the first and the last one tell where all
// lie. The products stand in 64 bits: with any 32-bit arguments each sum stays below 2^63.
#include "kernels/expand.h"
#include "kernels/gather.h"

#include <algorithm>

#include "memoryblock/members.h"
#include "plugin/block.h"
#include "plugin/exceptions.h"

namespace memoryblock {

REALboolean CopyNthBytes(REALmemoryBlock block, REALmemoryBlock source, int32_t SourceOffsetBytes,
                         int32_t DestinationOffsetBytes, int32_t ByteCount, int32_t StepCount,
                         int32_t NumberOfSteps) {
    if (!source || !block) return RaiseNilBlock(), REALboolean(false);
    const uint8_t* from = block_data(source);
    uint8_t* to = block_data(block);
    if (!from || !to) return false;
    if (NumberOfSteps <= 0) return true;
    const int64_t first = SourceOffsetBytes;
    const int64_t last = first + int64_t(NumberOfSteps - 1) * StepCount;
    const int64_t lowest = std::min(first, last);
    const int64_t span = std::max(first, last) + ByteCount - lowest;
    const int64_t copied = int64_t(NumberOfSteps) * ByteCount;
    if (!inside(block_size(source), lowest, span)) return false;
    if (!inside(block_size(block), DestinationOffsetBytes, copied)) return false;
    kernels::gather(to + DestinationOffsetBytes, from + SourceOffsetBytes, size_t(ByteCount), StepCount,
                    size_t(NumberOfSteps));
    return true;
}

REALboolean CopyNthBits(REALmemoryBlock block, REALmemoryBlock source, int32_t SourceOffsetBits,
                        int32_t DestinationOffsetBits, int32_t BitCount, int32_t StepCount,
                        int32_t NumberOfSteps) {
    if (!source || !block) return RaiseNilBlock(), REALboolean(false);
    const uint8_t* from = block_data(source);
    uint8_t* to = block_data(block);
    if (!from || !to) return false;
    if (NumberOfSteps <= 0 || BitCount <= 0) return true;
    const int64_t distance = int64_t(BitCount) + std::max(StepCount, 0);
    const int64_t span = (NumberOfSteps - 1) * distance + BitCount;
    const int64_t copied = int64_t(NumberOfSteps) * BitCount;
    if (!inside(8 * int64_t(block_size(source)), SourceOffsetBits, span)) return false;
    if (!inside(8 * int64_t(block_size(block)), DestinationOffsetBits, copied)) return false;
    kernels::gather_bits(to, uint64_t(DestinationOffsetBits), from, uint64_t(SourceOffsetBits),
                         uint64_t(BitCount), uint64_t(distance), size_t(NumberOfSteps));
    return true;
}

REALboolean ExpandBitsZOR(REALmemoryBlock block, REALmemoryBlock dest, int32_t SourceByteCount,
                          int32_t LowValue, int32_t HighValue) {
    if (SourceByteCount <= 0 || !block || !dest) return false;
    const uint8_t* from = block_data(block);
    uint8_t* to = block_data(dest);
    if (!from || !to) return false;
    const int32_t from_size = block_size(block);
    const int32_t to_size = block_size(dest);
    const int64_t count = SourceByteCount;
    if (!inside(from_size, 0, count) || !inside(to_size, 0, 8 * count)) return false;
    const int64_t whole_groups = (count + 3) / 4 * 4;
    kernels::expand_bits(to, cut(to_size, 0, 8 * whole_groups).count, from,
                         cut(from_size, 0, whole_groups).count, uint8_t(LowValue), uint8_t(HighValue));
    return true;
}

}  // namespace memoryblock
