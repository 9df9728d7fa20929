// Every member checks its range and makes one pass over it; what a search finds is told as an offset from the
// block's first byte.
#include "kernels/search.h"

#include <algorithm>

#include "memoryblock/members.h"
#include "plugin/block.h"

namespace memoryblock {
namespace {

constexpr int32_t kNone = -1;
constexpr int32_t kUnusable = -2;

// No block reaches further, so no offset that is found is greater.
constexpr int64_t kLargestBlock = INT32_MAX;

int32_t offset_in_block(int32_t first, size_t found) {
    return found == kernels::kNotFound ? kNone : int32_t(size_t(first) + found);
}

using FindKernel = size_t(const uint8_t* data, size_t n, uint8_t value);

int32_t find_value(REALmemoryBlock block, int32_t offset, int32_t count, int32_t value, FindKernel* find) {
    const uint8_t* data = block_data(block);
    if (!data || count <= 0) return kNone;
    const int32_t size = block_size(block);
    const Range range = cut(size > 0 ? size : kLargestBlock, offset, count);
    if (range.empty()) return kNone;
    return offset_in_block(offset, find(data + range.first, range.count, uint8_t(value)));
}

// `limit` bytes from `offset` are searched, or for 0 as many as the block has.
int32_t find_pattern(REALmemoryBlock block, int32_t offset, int32_t limit, const uint8_t* pattern,
                     int64_t length) {
    const uint8_t* data = block_data(block);
    const int64_t size = block_size(block);
    const int64_t end = offset + (limit != 0 ? limit : size);
    const int64_t bound = size != 0 ? size : end;
    if (bound <= offset || offset < 0 || end <= offset) return kUnusable;
    if (!data || !pattern || length <= 0) return kUnusable;
    const Range range = cut(std::min({end, bound, kLargestBlock}), offset, end - offset);
    return offset_in_block(offset, kernels::find(data + range.first, range.count, pattern, size_t(length)));
}

}  // namespace

int32_t FindByteZOR(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, int32_t byteValue) {
    return find_value(block, srcOfs, numBytes, byteValue, kernels::find_byte);
}

int32_t FindNotByteZOR(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, int32_t byteValue) {
    return find_value(block, srcOfs, numBytes, byteValue, kernels::find_not_byte);
}

int32_t findBytes1(REALmemoryBlock block, int32_t srcOfs, int32_t maxBytes, REALstring target) {
    const rbBuffer pattern(target);
    return find_pattern(block, srcOfs, maxBytes, pattern.data(), pattern.length());
}

int32_t findBytes2(REALmemoryBlock block, int32_t srcOfs, int32_t maxBytes, REALmemoryBlock target,
                   int32_t targOfs, int32_t targLen) {
    const uint8_t* pattern = block_data(target);
    const int32_t size = block_size(target);
    const int64_t length = or_rest(size, targOfs, targLen);
    if (!pattern || length <= 0 || size < 0 || !inside(size, targOfs, length)) return kUnusable;
    return find_pattern(block, srcOfs, maxBytes, pattern + targOfs, length);
}

REALboolean BytesEqualZOR(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, REALmemoryBlock destBlk,
                          int32_t destOfs) {
    if (!block || !destBlk) return false;
    const uint8_t* first = block_data(block);
    const uint8_t* second = block_data(destBlk);
    if (!first || !second) return false;
    if (numBytes == 0) return true;
    if (!inside(block_size(block), srcOfs, numBytes) || !inside(block_size(destBlk), destOfs, numBytes)) {
        return false;
    }
    return REALboolean(kernels::equal(first + srcOfs, second + destOfs, size_t(numBytes)));
}

REALboolean BytesZeroZOR(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes) {
    const uint8_t* data = block_data(block);
    if (!data) return false;
    if (numBytes <= 0) return true;
    if (!inside(block_size(block), srcOfs, numBytes)) return false;
    return REALboolean(kernels::all_zero(data + srcOfs, size_t(numBytes)));
}

}  // namespace memoryblock
