// How members reach the bytes of blocks, and make new ones.
#pragma once

#include "plugin/range.h"
#include "plugin/records.h"
#include "plugin/strings.h"

// A block's size in bytes as the host reports it; 0 for a nil block.
int32_t block_size(REALmemoryBlock block);

// The address of a block's first byte; nil for a nil block and for one without data.
uint8_t* block_data(REALmemoryBlock block);

// A new block with a copy of `count` bytes, for a member to return. Nil when the host cannot make it, which
// raises "OutOfMemoryException", or when the new block has no data, which does not.
REALmemoryBlock new_block(const uint8_t* bytes, int32_t count);

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

// The part of [offset, offset + count) that lies inside a held block, where a count of 0 or less stands for
// all that follows; empty for a block without data.
inline Range cut_or_rest(const rbBuffer& held, int64_t offset, int64_t count) {
    return held.data() ? cut(held.length(), offset, or_rest(held.length(), offset, count)) : Range{};
}
