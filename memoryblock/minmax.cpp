// The smaller and the larger differ in the kernel only.
#include "kernels/minmax.h"

#include "memoryblock/members.h"
#include "plugin/block.h"
#include "plugin/exceptions.h"

namespace memoryblock {
namespace {

bool combine(decltype(kernels::minimum)* kernel, REALmemoryBlock block, const void* firstMem,
             const void* secondMem, int32_t BitSize, REALboolean Signed, int32_t offsetByte,
             int32_t lengthBytes) {
    if (!block) return RaiseNilBlock(), false;
    if (!firstMem || !secondMem) return RaiseNilPointer(), false;
    if (offsetByte < 0) return RaiseNegativeOffset(), false;
    const rbBuffer held(block);
    const Range range = cut_or_rest(held, offsetByte, lengthBytes);
    return kernel(held.data() + range.first, static_cast<const uint8_t*>(firstMem),
                  static_cast<const uint8_t*>(secondMem), range.count, BitSize, Signed != 0);
}

}  // namespace

REALboolean MinZOR(REALmemoryBlock block, void* firstMem, void* secondMem, int32_t BitSize,
                   REALboolean Signed, int32_t offsetByte, int32_t lengthBytes) {
    return REALboolean(
        combine(kernels::minimum, block, firstMem, secondMem, BitSize, Signed, offsetByte, lengthBytes));
}

REALboolean MaxZOR(REALmemoryBlock block, void* firstMem, void* secondMem, int32_t BitSize,
                   REALboolean Signed, int32_t offsetByte, int32_t lengthBytes) {
    return REALboolean(
        combine(kernels::maximum, block, firstMem, secondMem, BitSize, Signed, offsetByte, lengthBytes));
}

}  // namespace memoryblock
