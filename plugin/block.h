// How members reach the bytes of blocks, and make new ones.
#pragma once

#include <span>

#include "plugin/host.h"
#include "plugin/range.h"
#include "plugin/records.h"
#include "plugin/strings.h"

// A block's size in bytes as the host reports it; 0 for a nil block.
inline int32_t block_size(REALmemoryBlock block) { return block ? REALMemoryBlockGetSize(block) : 0; }

// The address of a block's first byte; nil for a nil block and for one without data.
inline uint8_t* block_data(REALmemoryBlock block) {
    return block ? static_cast<uint8_t*>(REALMemoryBlockGetPtr(block)) : nullptr;
}

// A block's bytes for the length of one member call, which the host keeps alive. The host is asked for the
// data and then for the size: members that promise the size first ask with the handle itself.
struct Block {
    uint8_t* data;
    int32_t size;

    explicit Block(REALmemoryBlock block) : data(block_data(block)), size(block_size(block)) {}
};

// Holds a block, or the stored bytes of a string, for the length of one member call, and gives back what it
// took at its destruction. Without bytes, data is nil and length 0.
class rbBuffer {
 public:
    explicit rbBuffer(REALmemoryBlock block);
    explicit rbBuffer(REALstring string);
    ~rbBuffer();
    rbBuffer(const rbBuffer&) = delete;
    rbBuffer& operator=(const rbBuffer&) = delete;

    uint8_t* data() const { return data_; }
    int32_t length() const { return length_; }  // bytes; for a block, 0 is an unknown size

 private:
    REALstring string_ = nullptr;
    REALmemoryBlock object_ = nullptr;
    REALstringData stringData_ = {};
    bool stringDataHeld_ = false;
    uint8_t* data_ = nullptr;
    int32_t length_ = 0;
};

// The range rules (range.h), applied to a block. None has bytes inside where its data is nil.

// The bytes of a range that a member may work on.
using Bytes = std::span<uint8_t>;

inline Bytes cut(const Block& block, int64_t offset, int64_t count) {
    if (!block.data) return {};
    const Range range = cut(block.size, offset, count);
    return {block.data + range.first, range.count};
}

// For a size that the member has asked for already: asks for the data where the range leaves something.
inline Bytes bytes_of(REALmemoryBlock block, Range range) {
    uint8_t* data = range.empty() ? nullptr : block_data(block);
    return data ? Bytes(data + range.first, range.count) : Bytes();
}

inline Bytes cut(REALmemoryBlock block, int64_t offset, int64_t count) {
    return bytes_of(block, cut(block_size(block), offset, count));
}

// A count of 0 or less stands for all that follows.
inline Bytes cut_or_rest(REALmemoryBlock block, int64_t offset, int64_t count) {
    const int32_t size = block_size(block);
    return bytes_of(block, cut(size, offset, or_rest(size, offset, count)));
}
inline Bytes cut_or_rest(const rbBuffer& held, int64_t offset, int64_t count) {
    if (!held.data()) return {};
    const Range range = cut(held.length(), offset, or_rest(held.length(), offset, count));
    return {held.data() + range.first, range.count};
}

inline bool inside(const Block& block, int64_t offset, int64_t count) {
    return block.data && inside(block.size, offset, count);
}

// A new block of `count` bytes, for a member to fill and return; nil when the host cannot make it. Raises
// nothing: whether that is worth an exception, the member knows.
REALmemoryBlock allocate_block(int64_t count);
