#include "memoryblock/members.h"
#include "plugin/block.h"
#include "plugin/host.h"

namespace memoryblock {

int32_t GetBlockSize(REALmemoryBlock block, int32_t /*unused*/) { return block_size(block); }

REALmemoryBlock newMemoryblockPtr(int32_t ptr) {
    if (ptr == 0) return nullptr;
    return REALPtrToMemoryBlock(reinterpret_cast<void*>(uintptr_t(uint32_t(ptr))));
}

}  // namespace memoryblock
