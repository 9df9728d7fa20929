// Slices are copies in blocks of their own, which the host owns from then on.
#include <algorithm>

#include "kernels/copy.h"
#include "memoryblock/members.h"
#include "plugin/block.h"
#include "plugin/exceptions.h"
#include "plugin/host.h"

namespace memoryblock {
namespace {

REALmemoryBlock copy_of(REALmemoryBlock block, int32_t offset, int32_t count) {
    const uint8_t* data = block_data(block);
    return data && count > 0 ? new_block(data + offset, count) : nullptr;
}

// The bytes of two blocks, one after the other. Quiet: a block that cannot be made is nil.
REALmemoryBlock joined(REALmemoryBlock block, int32_t size, REALmemoryBlock other, int32_t other_size) {
    const int64_t count = int64_t(size) + other_size;
    if (count >= INT32_MAX) return nullptr;
    const uint8_t* front = block_data(block);
    const uint8_t* back = block_data(other);
    const REALmemoryBlock result = front && back ? REALNewMemoryBlockOriginal(int32_t(count)) : nullptr;
    if (!result) return nullptr;
    uint8_t* data = block_data(result);
    if (!data) return REALUnlockObject(result), nullptr;
    kernels::copy(data, front, size_t(size));
    kernels::copy(data + size, back, size_t(other_size));
    return result;
}

}  // namespace

REALmemoryBlock getMid1(REALmemoryBlock block, int32_t offset) { return getMid2(block, offset, INT32_MAX); }

REALmemoryBlock getMid2(REALmemoryBlock block, int32_t offset, int32_t length) {
    if (!block) return RaiseNilBlock(), nullptr;
    if (length <= 0 || offset < 0) return nullptr;
    const int32_t size = block_size(block);
    if (size <= offset) return nullptr;
    return copy_of(block, offset, std::min(length, size - offset));
}

REALmemoryBlock getLeft(REALmemoryBlock block, int32_t length) {
    if (!block) return RaiseNilBlock(), nullptr;
    if (length <= 0) return nullptr;
    return copy_of(block, 0, std::min(length, block_size(block)));
}

REALmemoryBlock getRight(REALmemoryBlock block, int32_t length) {
    if (!block) return RaiseNilBlock(), nullptr;
    if (length <= 0) return nullptr;
    const int32_t size = block_size(block);
    if (size <= 0) return nullptr;
    const int32_t count = std::min(length, size);
    return copy_of(block, size - count, count);
}

REALmemoryBlock getAppend(REALmemoryBlock block, REALmemoryBlock other) {
    if (!block || !other) return RaiseNilBlock(), nullptr;
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
