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
    char digits[24] = {};
    std::to_chars(digits, digits + sizeof digits, size);
    char message[200] = "Failed to allocate a memoryblock with ";
    std::strcat(message, digits);
    std::strcat(message, " bytes in size.");
    RaiseException("OutOfMemoryException", message, 0);
}
