// What a bundle asks of its host, in words.
#pragma once

#include <functional>
#include <ostream>

#include "minihost/library/host.h"

namespace minihost {

// For Options::trace: a line for each call of a host operation, with the member that made it:
//
//     trace: MidZOR: newMemoryBlock(3) = MemoryBlock#2
//     trace: MidZOR: memoryBlockGetPtr(MemoryBlock#2) = 0x55d0c8a3f2c0
//
// Objects are named by class and number, strings by their text, encodings by name, and registered records by
// what they describe; all else that is no number is an address.
std::function<void(const OperationCall&)> trace_to(std::ostream& out);

}  // namespace minihost
