// Slices are copies in blocks of their own, which the host owns from then on.
#include <algorithm>

#include "kernels/copy.h"
#include "memoryblock/members.h"
#include "plugin/block.h"
#include "plugin/exceptions.h"
#include "plugin/host.h"

namespace memoryblock {
namespace {

// The new block with these bytes, those of `back` after those of `front`; given back when it has no data.
REALmemoryBlock filled(REALmemoryBlock made, Bytes front, Bytes back = {}) {
    uint8_t* data = block_data(made);
    if (!data) return REALUnlockObject(made), nullptr;
    kernels::copy(data, front.data(), front.size());
    if (!back.empty()) kernels::copy(data + front.size(), back.data(), back.size());
    return made;
}

// Raises when the block cannot be made.
REALmemoryBlock copy_of(REALmemoryBlock block, int32_t offset, int32_t count) {
    uint8_t* data = block_data(block);
    if (!data || count <= 0) return nullptr;
    const REALmemoryBlock made = allocate_block(count);
    if (!made) return RaiseOutOfMemory(count), nullptr;
    return filled(made, {data + offset, size_t(count)});
}

// The bytes of two blocks, one after the other. A block that cannot be made is nil.
REALmemoryBlock joined(REALmemoryBlock block, int32_t size, REALmemoryBlock other, int32_t other_size) {
    uint8_t* front = block_data(block);
    uint8_t* back = block_data(other);
    if (!front || !back) return nullptr;
    const REALmemoryBlock made = allocate_block(int64_t{size} + other_size);
    if (!made) return nullptr;
    return filled(made, {front, size_t(size)}, {back, size_t(other_size)});
}

}  // namespace

REALmemoryBlock getMid1(REALmemoryBlock block, int32_t offset) { return getMid2(block, offset, INT32_MAX); }

REALmemoryBlock getMid2(REALmemoryBlock block, int32_t offset, int32_t length) {
    if (!block) return RaiseNilBlock<REALmemoryBlock>();
    if (length <= 0 || offset < 0) return nullptr;
    const int32_t size = block_size(block);
    if (size <= offset) return nullptr;
    return copy_of(block, offset, std::min(length, size - offset));
}

REALmemoryBlock getLeft(REALmemoryBlock block, int32_t length) {
    if (!block) return RaiseNilBlock<REALmemoryBlock>();
    if (length <= 0) return nullptr;
    return copy_of(block, 0, std::min(length, block_size(block)));
}

REALmemoryBlock getRight(REALmemoryBlock block, int32_t length) {
    if (!block) return RaiseNilBlock<REALmemoryBlock>();
    if (length <= 0) return nullptr;
    const int32_t size = block_size(block);
    if (size <= 0) return nullptr;
    const int32_t count = std::min(length, size);
    return copy_of(block, size - count, count);
}

REALmemoryBlock getAppend(REALmemoryBlock block, REALmemoryBlock other) {
    if (!block || !other) return RaiseNilBlock<REALmemoryBlock>();
    const int32_t size = block_size(block);
    const int32_t other_size = block_size(other);
    if (size <= 0) return other_size > 0 ? copy_of(other, 0, other_size) : nullptr;
    if (other_size <= 0) return copy_of(block, 0, size);
    return joined(block, size, other, other_size);
}

uint64_t AddressZOR(REALmemoryBlock block, int64_t offset) { return uintptr_t(AddressPtrZOR(block, offset)); }

// Only a size of exactly 0 is unknown here; a negative one, taken as unsigned, accepts every offset.
void* AddressPtrZOR(REALmemoryBlock block, int64_t offset) {
    if (!block) return nullptr;
    const auto size = uint64_t(int64_t(block_size(block)));
    if (offset < 0 || (size != 0 && size < uint64_t(offset))) return nullptr;
    return reinterpret_cast<void*>(uintptr_t(block_data(block)) + uintptr_t(offset));
}

int32_t GetBlockSize(REALmemoryBlock block, int32_t /*unused*/) { return block_size(block); }

REALmemoryBlock newMemoryblockPtr(int32_t ptr) {
    if (ptr == 0) return nullptr;
    return REALPtrToMemoryBlock(reinterpret_cast<void*>(uintptr_t(uint32_t(ptr))));
}

}  // namespace memoryblock
