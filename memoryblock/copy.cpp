#include "kernels/copy.h"

#include <cstring>

#include "memoryblock/members.h"
#include "plugin/block.h"

namespace memoryblock {
namespace {

// The bytes of a block that a copy may touch; nil when it must not be made.
uint8_t* bytes_for_copy(REALmemoryBlock block, int32_t offset, int32_t count) {
    const Block bytes(block);
    return inside(bytes, offset, count) ? bytes.data + offset : nullptr;
}

void copy(uint8_t* destination, const uint8_t* source, int32_t count) {
    if (destination && source && count > 0) kernels::copy(destination, source, size_t(count));
}

// What a handle's master pointer addresses; nil for a nil handle.
uint8_t* handle_data(int32_t handle) {
    void* data = nullptr;
    if (handle != 0)
        std::memcpy(&data, reinterpret_cast<const void*>(uintptr_t(uint32_t(handle))), sizeof data);
    return static_cast<uint8_t*>(data);
}

}  // namespace

void copyBytes1(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, int32_t destOfs) {
    copyBytes2(block, srcOfs, numBytes, block, destOfs);
}

void copyBytes2(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, REALmemoryBlock destBlk,
                int32_t destOfs) {
    const uint8_t* source = bytes_for_copy(block, srcOfs, numBytes);
    copy(bytes_for_copy(destBlk, destOfs, numBytes), source, numBytes);
}

void toMacPtr(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, void* destPtr) {
    copy(static_cast<uint8_t*>(destPtr), bytes_for_copy(block, srcOfs, numBytes), numBytes);
}

void fromMacPtr(REALmemoryBlock block, void* srcPtr, int32_t numBytes, int32_t destOfs) {
    copy(bytes_for_copy(block, destOfs, numBytes), static_cast<const uint8_t*>(srcPtr), numBytes);
}

void toMacHdl(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, int32_t destHandle) {
    const uint8_t* source = bytes_for_copy(block, srcOfs, numBytes);
    if (source && numBytes > 0) copy(handle_data(destHandle), source, numBytes);
}

void fromMacHdl(REALmemoryBlock block, int32_t srcHandle, int32_t numBytes, int32_t destOfs) {
    uint8_t* destination = bytes_for_copy(block, destOfs, numBytes);
    if (destination && numBytes > 0) copy(destination, handle_data(srcHandle), numBytes);
}

}  // namespace memoryblock
