// Everything that the plug-in registers: static records that the host keeps and writes into. The class
// MemoryBlockZOR declares its own.
#pragma once

#include "plugin/records.h"

extern REALclassDefinition memBlkClass;  // the extension of MemoryBlock

// The record of the global method, whose type only the table needs to know.
struct GlobalMethod;
extern GlobalMethod globalsMethods;
