#include "kernels/fill.h"

#include "kernels/mirror.h"
#include "memoryblock/members.h"
#include "plugin/block.h"
#include "plugin/exceptions.h"

namespace memoryblock {
namespace {

using Kernel = void(uint8_t* data, size_t n);

inline void change(REALmemoryBlock block, int32_t offset, int32_t count, Kernel* kernel) {
    const Bytes bytes = cut(Block(block), offset, count);
    if (!bytes.empty()) kernel(bytes.data(), bytes.size());
}

}  // namespace

void fillbytes(REALmemoryBlock block, int32_t offset, int32_t count, int32_t value) {
    if (!block) return RaiseNilBlock();
    const Bytes bytes = cut_or_rest(block, offset, count);
    if (!bytes.empty()) kernels::fill(bytes.data(), bytes.size(), uint8_t(value));
}

void InvertBytesZOR(REALmemoryBlock block, int32_t offset, int32_t count) {
    change(block, offset, count, kernels::invert);
}

void swapBytes(REALmemoryBlock block, int32_t offset, int32_t numBytes) {
    change(block, offset, numBytes, kernels::reverse_bytes);
}

void swapBytes16(REALmemoryBlock block, int32_t offset, int32_t numBytes) {
    change(block, offset, numBytes, kernels::swap_units16);
}

void swapBytes32(REALmemoryBlock block, int32_t offset, int32_t numBytes) {
    change(block, offset, numBytes, kernels::swap_units32);
}

}  // namespace memoryblock
