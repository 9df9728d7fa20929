// Every member cuts its range and makes one pass over it.
#include "kernels/mirror.h"

#include "memoryblock/members.h"
#include "plugin/block.h"
#include "plugin/exceptions.h"

namespace memoryblock {

void MirrorBitsInBytesZOR(REALmemoryBlock block, int32_t offsetByte, int32_t lengthByte) {
    if (!block) return RaiseNilBlock();
    const Range range = cut(block_size(block), offsetByte, lengthByte);
    if (range.empty()) return;
    if (uint8_t* data = block_data(block)) kernels::reverse_bits_in_bytes(data + range.first, range.count);
}

void MirrorBytesZOR(REALmemoryBlock block, int32_t offsetByte, int32_t lengthByte) {
    if (!block) return RaiseNilBlock();
    if (lengthByte == 0) return;
    const int32_t size = block_size(block);
    const Range range = cut(size, offsetByte, or_rest(size, offsetByte, lengthByte));
    if (range.empty()) return;
    if (uint8_t* data = block_data(block)) kernels::reverse_bytes(data + range.first, range.count);
}

void MirrorBitsZOR(REALmemoryBlock block, int32_t offsetBit, int32_t lengthBit) {
    if (!block) return RaiseNilBlock();
    const int64_t bits = int64_t{8} * block_size(block);
    const Range range = cut(bits, offsetBit, lengthBit);
    if (range.empty()) return;
    if (uint8_t* data = block_data(block)) kernels::reverse_bits(data, range.first, range.count);
}

}  // namespace memoryblock
