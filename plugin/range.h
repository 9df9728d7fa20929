// The range rules: which bytes of a block a member may touch.
//
// A size greater than 0 is known; then no range reaches past it. A size of 0 or less is unknown: the
// caller's offset and count are used as they stand. Sums are formed in 64 bits, so none can wrap.
// The rules hold for any unit (bytes, bits) as long as all three numbers count the same one.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

struct Range {
    size_t first = 0;
    size_t count = 0;

    bool empty() const { return count == 0; }
};

// The part of [offset, offset + count) that lies inside; empty for a negative offset.
inline Range cut(int64_t size, int64_t offset, int64_t count) {
    if (size > 0) count = std::min(count, size - offset);
    if (offset < 0 || count <= 0) return {};
    return {size_t(offset), size_t(std::min<int64_t>(count, PTRDIFF_MAX))};  // no memory is larger
}

// Whether all of [offset, offset + count) lies inside. A negative offset or count does not.
inline bool inside(int64_t size, int64_t offset, int64_t count) {
    return offset >= 0 && count >= 0 && (size <= 0 || offset + count <= size);
}

// A count, where 0 or less stands for all that the block has from `offset` on (nothing when the size is
// unknown).
inline int64_t or_rest(int64_t size, int64_t offset, int64_t count) {
    return count > 0 ? count : size - offset;
}
