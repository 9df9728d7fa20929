#include "kernels/minmax.h"

#include <optional>

#include "memoryblock/members.h"
#include "plugin/block.h"
#include "plugin/exceptions.h"

namespace memoryblock {
namespace {

std::optional<kernels::Element> element(int32_t BitSize, bool is_signed) {
    using enum kernels::Element;
    switch (BitSize) {
        case 8: return is_signed ? kInt8 : kUint8;
        case 16: return is_signed ? kInt16 : kUint16;
        case 32: return is_signed ? kInt32 : kUint32;
        case 64: return is_signed ? kInt64 : kUint64;
        default: return std::nullopt;
    }
}

REALboolean choose(decltype(kernels::minimum)* kernel, REALmemoryBlock block, const void* firstMem,
                   const void* secondMem, int32_t BitSize, REALboolean Signed, int32_t offsetByte,
                   int32_t lengthBytes) {
    if (!block) return RaiseNilBlock<REALboolean>();
    if (!firstMem || !secondMem) return RaiseNilPointer<REALboolean>();
    if (offsetByte < 0) return RaiseNegativeOffset<REALboolean>();
    const rbBuffer held(block);
    const Bytes bytes = cut_or_rest(held, offsetByte, lengthBytes);
    const auto kind = element(BitSize, Signed != 0);
    if (!kind) return false;
    kernel(*kind, bytes.data(), static_cast<const uint8_t*>(firstMem),
           static_cast<const uint8_t*>(secondMem), bytes.size() / size_t(BitSize / 8));
    return true;
}

}  // namespace

REALboolean MinZOR(REALmemoryBlock block, void* firstMem, void* secondMem, int32_t BitSize,
                   REALboolean Signed, int32_t offsetByte, int32_t lengthBytes) {
    return choose(kernels::minimum, block, firstMem, secondMem, BitSize, Signed, offsetByte, lengthBytes);
}

REALboolean MaxZOR(REALmemoryBlock block, void* firstMem, void* secondMem, int32_t BitSize,
                   REALboolean Signed, int32_t offsetByte, int32_t lengthBytes) {
    return choose(kernels::maximum, block, firstMem, secondMem, BitSize, Signed, offsetByte, lengthBytes);
}

}  // namespace memoryblock
