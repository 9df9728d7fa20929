// Every member cuts its range and makes one pass over it.
#include "kernels/fill.h"

#include "kernels/mirror.h"
#include "memoryblock/members.h"
#include "plugin/block.h"
#include "plugin/exceptions.h"

namespace memoryblock {
namespace {

using Kernel = void(uint8_t* data, size_t n);

void change(REALmemoryBlock block, int32_t offset, int32_t count, Kernel* kernel) {
    uint8_t* data = block_data(block);
    const Range range = cut(block_size(block), offset, count);
    if (data && !range.empty()) kernel(data + range.first, range.count);
}

}  // namespace

void fillbytes(REALmemoryBlock block, int32_t offset, int32_t count, int32_t value) {
    if (!block) return RaiseNilBlock();
    const int32_t size = block_size(block);
    const Range range = cut(size, offset, or_rest(size, offset, count));
    if (range.empty()) return;
    if (uint8_t* data = block_data(block)) kernels::fill(data + range.first, range.count, uint8_t(value));
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
