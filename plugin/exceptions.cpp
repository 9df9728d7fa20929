#include "plugin/exceptions.h"

#include <charconv>
#include <cstring>

#include "plugin/host.h"

void RaiseException(const char* exceptionClassName, const char* message, uint32_t errorNumber) {
    REALstring text = nullptr;
    if (message && *message) text = REALBuildString(message, int32_t(std::strlen(message)));
    if (text) REALSetStringEncoding(text, kTextEncodingUS_ASCII);

    REALobject exception = REALnewInstance(exceptionClassName);
    if (!exception) exception = REALnewInstance("RuntimeException");
    if (exception) {
        REALSetPropValueString(exception, "Message", text);
        REALSetPropValueInt32(exception, "ErrorNumber", int32_t(errorNumber));
        REALRaiseException(exception);
        REALUnlockObject(exception);
    }
    if (text) REALUnlockString(text);
}

void RaiseOutOfMemory(int64_t size) {
    constexpr char kBefore[] = "Failed to allocate a memoryblock with ";
    constexpr char kAfter[] = " bytes in size.";
    constexpr size_t kMostDigits = 20;
    char message[sizeof kBefore + kMostDigits + sizeof kAfter];
    std::memcpy(message, kBefore, sizeof kBefore);
    char* const digits = message + sizeof kBefore - 1;
    char* const end = std::to_chars(digits, digits + kMostDigits, size).ptr;
    std::memcpy(end, kAfter, sizeof kAfter);
    RaiseException("OutOfMemoryException", message, 0);
}
