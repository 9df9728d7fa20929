// Lengths are bytes, for 16-bit samples too.
#include "kernels/scale.h"

#include "memoryblock/members.h"
#include "plugin/block.h"
#include "plugin/exceptions.h"

namespace memoryblock {
namespace {

void scale(decltype(kernels::scale_uint8)* kernel, size_t sample_bytes, REALmemoryBlock block, double Factor,
           int32_t offsetByte, int32_t lengthBytes) {
    if (!block) return RaiseNilBlock();
    if (offsetByte < 0) return RaiseNegativeOffset();
    const rbBuffer held(block);
    const Bytes bytes = cut_or_rest(held, offsetByte, lengthBytes);
    kernel(bytes.data(), bytes.size() / sample_bytes, Factor);
}

}  // namespace

void MultiplyUInt8ZOR(REALmemoryBlock block, double Factor, int32_t offsetByte, int32_t lengthBytes) {
    scale(kernels::scale_uint8, sizeof(uint8_t), block, Factor, offsetByte, lengthBytes);
}

void MultiplyUInt16ZOR(REALmemoryBlock block, double Factor, int32_t offsetByte, int32_t lengthBytes) {
    scale(kernels::scale_uint16, sizeof(uint16_t), block, Factor, offsetByte, lengthBytes);
}

}  // namespace memoryblock
