// Everything that the plug-in registers: static records that the host keeps and writes into.
#pragma once

#include "memoryblock/members.h"
#include "plugin/records.h"
#include "plugin/table_rows.h"

extern REALclassDefinition memBlkClass;  // the extension of MemoryBlock
extern REALclassDefinition MemClass;     // the class MemoryBlockZOR

// The global method.
using GlobalMethodRecord = REALmethodRecord<decltype(&memoryblock::newMemoryblockPtr)>;
extern GlobalMethodRecord globalsMethods;
