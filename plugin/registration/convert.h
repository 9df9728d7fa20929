// Conversion of class records into the older layout of hosts with the version word 9: 25 fields instead of
// 29, with shorter records in the tables that they point to.
#pragma once

#include "plugin/records.h"

// A newly allocated record of kOlderClassSize bytes, which the caller copies and frees; nil when it cannot be
// allocated. The tables that it points to are allocated too and belong to the host from then on. A table that
// cannot be allocated is nil, with a count of 0. The records of the definition's own table 11 are changed:
// the second field of each then points to its copy.
void* FixClass(const REALclassDefinition* definition);

// A newly allocated table of properties in the older layout; nil for an empty table.
void* FixProperties(const void* table, int32_t count);
