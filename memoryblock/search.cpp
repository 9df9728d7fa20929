// Kernels find places in the range that they are given; members answer with offsets in the block.
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

inline int32_t find_value(REALmemoryBlock block, int32_t offset, int32_t count, int32_t value,
                          FindKernel* find) {
    const Block bytes(block);
    if (!bytes.data || count <= 0) return kNone;
    const Range range = cut(bytes.size > 0 ? bytes.size : kLargestBlock, offset, count);
    if (range.empty()) return kNone;
    return offset_in_block(offset, find(bytes.data + range.first, range.count, uint8_t(value)));
}

// `limit` bytes from `offset` are searched, or for 0 as many as the block has.
int32_t find_pattern(REALmemoryBlock block, int32_t offset, int32_t limit, const uint8_t* pattern,
                     int64_t length) {
    const Block bytes(block);
    const int64_t end = int64_t{offset} + (limit != 0 ? limit : bytes.size);
    const int64_t bound = bytes.size != 0 ? bytes.size : end;
    if (bound <= offset || offset < 0 || end <= offset) return kUnusable;
    if (!bytes.data || !pattern || length <= 0) return kUnusable;
    const int64_t last = std::min({end, bound, kLargestBlock});
    return offset_in_block(
        offset, kernels::find(bytes.data + offset, size_t(last - offset), pattern, size_t(length)));
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
    const Block pattern(target);
    const int64_t length = or_rest(pattern.size, targOfs, targLen);
    if (length <= 0 || pattern.size < 0 || !inside(pattern, targOfs, length)) return kUnusable;
    return find_pattern(block, srcOfs, maxBytes, pattern.data + targOfs, length);
}

REALboolean BytesEqualZOR(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, REALmemoryBlock destBlk,
                          int32_t destOfs) {
    if (!block || !destBlk) return false;
    const Block first(block);
    const Block second(destBlk);
    if (!first.data || !second.data) return false;
    if (numBytes == 0) return true;
    if (!inside(first, srcOfs, numBytes) || !inside(second, destOfs, numBytes)) return false;
    return REALboolean(kernels::equal(first.data + srcOfs, second.data + destOfs, size_t(numBytes)));
}

REALboolean BytesZeroZOR(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes) {
    const Block bytes(block);
    if (!bytes.data) return false;
    if (numBytes <= 0) return true;
    if (!inside(bytes, srcOfs, numBytes)) return false;
    return REALboolean(kernels::all_zero(bytes.data + srcOfs, size_t(numBytes)));
}

}  // namespace memoryblock
