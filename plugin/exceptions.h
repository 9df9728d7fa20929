// Misuse is reported to the program as a host exception. Raising returns: the member then returns zero, and
// the host unwinds the program. So that a check is one line, what raises gives that zero, of any type:
// `if (!block) return RaiseNilBlock();`, or `RaiseNilBlock<REALboolean>()` in a member with a result.
#pragma once

#include <cstdint>

// Raises an instance of the named host class, or of "RuntimeException" when the host does not know that
// class; raises nothing when no instance can be made. The texts are NUL-terminated; a nil or empty
// message leaves "Message" nil. The message is US-ASCII.
[[gnu::cold]] void RaiseException(const char* exceptionClassName, const char* message, uint32_t errorNumber);

// The size (bytes) is that of the block that could not be made.
[[gnu::cold]] void RaiseOutOfMemory(int64_t size);

template <class Zero = void>
Zero RaiseNilBlock() {
    return RaiseException("NilObjectException", "memoryblock is nil", 0), Zero();
}

template <class Zero = void>
Zero RaiseNilPointer() {
    return RaiseException("NilObjectException", "ptr is nil", 0), Zero();
}

template <class Zero = void>
Zero RaiseNegativeOffset() {
    return RaiseException("UnsupportedOperationException", "offset < 0", 0), Zero();
}
