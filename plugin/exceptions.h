// Misuse is reported to the program as a host exception. Raising returns: the member then returns its
// neutral result, and the host unwinds the program.
#pragma once

#include <cstdint>

// Raises an instance of the named host class, or of "RuntimeException" when the host does not know that
// class; raises nothing when no instance can be made. The texts are NUL-terminated; a nil or empty
// message leaves "Message" nil. The message is US-ASCII.
void RaiseException(const char* exceptionClassName, const char* message, uint32_t errorNumber);

void RaiseNilBlock();        // "NilObjectException", "memoryblock is nil"
void RaiseNilPointer();      // "NilObjectException", "ptr is nil"
void RaiseNegativeOffset();  // "UnsupportedOperationException", "offset < 0"

// "OutOfMemoryException", with the size (bytes) of the block that could not be made.
void RaiseOutOfMemory(int64_t size);
