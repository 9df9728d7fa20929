#include "kernels/mirror.h"

#include "memoryblock/members.h"
#include "plugin/block.h"
#include "plugin/exceptions.h"

namespace memoryblock {

void MirrorBitsInBytesZOR(REALmemoryBlock block, int32_t offsetByte, int32_t lengthByte) {
    if (!block) return RaiseNilBlock();
    const Bytes bytes = cut(block, offsetByte, lengthByte);
    if (!bytes.empty()) kernels::reverse_bits_in_bytes(bytes.data(), bytes.size());
}

void MirrorBytesZOR(REALmemoryBlock block, int32_t offsetByte, int32_t lengthByte) {
    if (!block) return RaiseNilBlock();
    if (lengthByte == 0) return;
    const Bytes bytes = cut_or_rest(block, offsetByte, lengthByte);
    if (!bytes.empty()) kernels::reverse_bytes(bytes.data(), bytes.size());
}

void MirrorBitsZOR(REALmemoryBlock block, int32_t offsetBit, int32_t lengthBit) {
    if (!block) return RaiseNilBlock();
    const int64_t bits = int64_t{8} * block_size(block);
    const Range range = cut(bits, offsetBit, lengthBit);
    if (range.empty()) return;
    if (uint8_t* data = block_data(block)) kernels::reverse_bits(data, range.first, range.count);
}

}  // namespace memoryblock
