// The class MemoryBlockZOR: an object that owns a run of memory with a 64-bit size. Create stops at 2 GiB,
// Resize does not. Most members of its block reach 2 GiB from the first byte; what lies beyond, AddressPtrZOR
// reaches, and the copies to and from addresses.
#pragma once

#include "plugin/records.h"

// The class as it is registered. From then on the host's `systemWord` says where instances have their data.
extern REALclassDefinition MemClass;

namespace largeblock {

// Create: frees what the instance held, then allocates `size` zero bytes. False for a size that is not
// 1 to 2,147,483,647 or cannot be allocated; then the instance is empty.
REALboolean CreateMem(REALobject instance, int64_t size);

// Resize: keeps the bytes up to the smaller of the old and the new size; further bytes are not zeroed, and
// the memory may move. False, and nothing changes, for a size of 0 or less or one that cannot be allocated.
REALboolean Resize(REALobject instance, int64_t size);

// Close, and the destructor: frees the memory. Nothing happens for an empty instance.
void MemClose(REALobject instance);

int64_t GetAddress(REALobject instance, int32_t unused);  // 0 when empty
int64_t GetSize(REALobject instance, int32_t unused);     // bytes; 0 when empty

// A block over the memory, valid until the next Create, Resize or Close; nil when empty, or
// when the host could not make it. The caller gets a reference of its own.
REALmemoryBlock GetMemory(REALobject instance, int32_t unused);

}  // namespace largeblock
