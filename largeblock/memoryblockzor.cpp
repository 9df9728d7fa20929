#include "largeblock/memoryblockzor.h"

#include <cstdlib>

#include "plugin/host.h"

namespace largeblock {
namespace {

// The instance data: all zero, or `size` bytes at `address`, which the instance owns, and a block over them
// if the host could make one.
struct Memory {
    int64_t size;
    REALmemoryBlock block;
    void* address;
};
static_assert(sizeof(Memory) == (kWidePointers ? 24 : 16));

Memory& memory_of(REALobject instance) {
    return *reinterpret_cast<Memory*>(reinterpret_cast<char*>(instance) + MemClass.systemWord);
}

void unlock_block(Memory& memory) {
    if (memory.block) REALUnlockObject(memory.block);
    memory.block = nullptr;
}

void hold(Memory& memory, void* address, int64_t size) {
    memory.address = address;
    memory.size = size;
    unlock_block(memory);
    memory.block = REALPtrToMemoryBlock(address);
}

}  // namespace

REALboolean CreateMem(REALobject instance, int64_t size) {
    MemClose(instance);
    if (size <= 0 || size > INT32_MAX) return false;
    void* address = std::calloc(1, size_t(size));
    if (!address) return false;
    hold(memory_of(instance), address, size);
    return true;
}

REALboolean Resize(REALobject instance, int64_t size) {
    if (size <= 0 || uint64_t(size) > SIZE_MAX) return false;
    Memory& memory = memory_of(instance);
    void* address = std::realloc(memory.address, size_t(size));
    if (!address) return false;
    hold(memory, address, size);
    return true;
}

void MemClose(REALobject instance) {
    Memory& memory = memory_of(instance);
    unlock_block(memory);
    std::free(memory.address);
    memory = {};
}

int64_t GetAddress(REALobject instance, int32_t /*unused*/) {
    return int64_t(uint64_t(uintptr_t(memory_of(instance).address)));
}

int64_t GetSize(REALobject instance, int32_t /*unused*/) { return memory_of(instance).size; }

REALmemoryBlock GetMemory(REALobject instance, int32_t /*unused*/) {
    const REALmemoryBlock block = memory_of(instance).block;
    if (block) REALLockObject(block);
    return block;
}

}  // namespace largeblock
