// The pieces of a gathering begin at regular distances, so the first and the last one say where all of them
// lie. The products are formed in 64 bits: with any 32-bit arguments each sum stays below 2^63.
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
    if (!source || !block) return RaiseNilBlock<REALboolean>();
    const Block from(source);
    const Block to(block);
    if (!from.data || !to.data) return false;
    if (NumberOfSteps <= 0) return true;
    const int64_t first = SourceOffsetBytes;
    const int64_t last = first + int64_t(NumberOfSteps - 1) * StepCount;
    const int64_t lowest = std::min(first, last);
    const int64_t span = std::max(first, last) + ByteCount - lowest;
    const int64_t copied = int64_t(NumberOfSteps) * ByteCount;
    if (!inside(from, lowest, span) || !inside(to, DestinationOffsetBytes, copied)) return false;
    kernels::gather(to.data + DestinationOffsetBytes, from.data + SourceOffsetBytes, size_t(ByteCount),
                    StepCount, size_t(NumberOfSteps));
    return true;
}

REALboolean CopyNthBits(REALmemoryBlock block, REALmemoryBlock source, int32_t SourceOffsetBits,
                        int32_t DestinationOffsetBits, int32_t BitCount, int32_t StepCount,
                        int32_t NumberOfSteps) {
    if (!source || !block) return RaiseNilBlock<REALboolean>();
    const Block from(source);
    const Block to(block);
    if (!from.data || !to.data) return false;
    if (NumberOfSteps <= 0 || BitCount <= 0) return true;
    const int64_t distance = int64_t(BitCount) + std::max(StepCount, 0);
    const int64_t span = (NumberOfSteps - 1) * distance + BitCount;
    const int64_t copied = int64_t(NumberOfSteps) * BitCount;
    if (!inside(8 * int64_t{from.size}, SourceOffsetBits, span)) return false;
    if (!inside(8 * int64_t{to.size}, DestinationOffsetBits, copied)) return false;
    kernels::gather_bits(to.data, uint64_t(DestinationOffsetBits), from.data, uint64_t(SourceOffsetBits),
                         uint64_t(BitCount), uint64_t(distance), size_t(NumberOfSteps));
    return true;
}

REALboolean ExpandBitsZOR(REALmemoryBlock block, REALmemoryBlock dest, int32_t SourceByteCount,
                          int32_t LowValue, int32_t HighValue) {
    if (SourceByteCount <= 0 || !block || !dest) return false;
    const Block from(block);
    const Block to(dest);
    const int64_t count = SourceByteCount;
    if (!inside(from, 0, count) || !inside(to, 0, 8 * count)) return false;
    const int64_t whole_groups = (count + 3) / 4 * 4;
    const Bytes source = cut(from, 0, whole_groups);
    const Bytes bytes = cut(to, 0, 8 * whole_groups);
    kernels::expand_bits(bytes.data(), bytes.size(), source.data(), source.size(), uint8_t(LowValue),
                         uint8_t(HighValue));
    return true;
}

}  // namespace memoryblock
