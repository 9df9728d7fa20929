// The members of the MemoryBlock extension, as the host calls them: the block first, then the declared
// arguments. plugin/tables.cpp has their declarations in the host language.
#pragma once

#include "plugin/records.h"

namespace memoryblock {

// Copying (copy.cpp). Every copy is one through an intermediate buffer, so that ranges may overlap. A
// negative count or offset, a range past the end of a block of known size, a nil block, address or handle
// copies nothing; nothing is raised. An address or a handle is used from its first byte; a handle is the
// 32-bit address of a pointer to the data.
void copyBytes1(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, int32_t destOfs);
void copyBytes2(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, REALmemoryBlock destBlk,
                int32_t destOfs);
void toMacPtr(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, void* destPtr);
void fromMacPtr(REALmemoryBlock block, void* srcPtr, int32_t numBytes, int32_t destOfs);
void toMacHdl(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, int32_t destHandle);
void fromMacHdl(REALmemoryBlock block, int32_t srcHandle, int32_t numBytes, int32_t destOfs);

// Slices, addresses and size (slices.cpp).
int32_t GetBlockSize(REALmemoryBlock block, int32_t unused);
REALmemoryBlock newMemoryblockPtr(int32_t ptr);

}  // namespace memoryblock
