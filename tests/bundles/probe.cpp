// A bundle whose members are the services that the real bundle's members share, so that tests can call each
// by itself, on any host.
#include <cstring>
#include <string>

#include "plugin/block.h"
#include "plugin/exceptions.h"
#include "plugin/host.h"
#include "plugin/registration/table_rows.h"
#include "plugin/strings.h"

namespace {

std::string text_of(const rbBuffer& buffer) {
    return {reinterpret_cast<const char*>(buffer.data()), size_t(buffer.length())};
}

// A nil message stays nil.
void raise(REALstring className, REALstring message, int32_t errorNumber) {
    const std::string name = text_of(rbBuffer(className));
    const std::string text = message ? text_of(rbBuffer(message)) : "";
    RaiseException(name.c_str(), message ? text.c_str() : nullptr, uint32_t(errorNumber));
}

void raise_out_of_memory(int64_t size) { RaiseOutOfMemory(size); }

// A block with a copy of bytes.
REALmemoryBlock new_block(const uint8_t* bytes, int32_t count) {
    const REALmemoryBlock block = allocate_block(count);
    if (!block) return RaiseOutOfMemory(count), nullptr;
    std::memcpy(block_data(block), bytes, size_t(count));
    return block;
}

// The bytes and as many more behind them; nil when they cannot be had.
REALmemoryBlock string_data(REALstring string, int32_t encoding, int32_t more) {
    REALstringData record = {};
    if (!REALGetStringData(string, uint32_t(encoding), &record)) return nullptr;
    REALmemoryBlock result = nullptr;
    if (record.encoding == uint32_t(encoding)) {
        result = new_block(static_cast<uint8_t*>(record.data), record.length + more);
    }
    REALDisposeStringData(&record);
    return result;
}

// The view and the byte behind it; nil when it could not be made.
REALmemoryBlock mac_roman(REALstring string, REALboolean asStored) {
    if (string) REALLockString(string);
    rbText text(string, asStored ? rbText::kTakeStoredBytes : rbText::kConvert);
    if (text.length() >= 0) return nullptr;
    text.ConvertMacRoman();
    return text.failed() ? nullptr : new_block(text.data(), text.length() + 1);
}

// Nil when the buffer has no data.
REALmemoryBlock string_buffer(REALstring string) {
    const rbBuffer buffer(string);
    return buffer.data() ? new_block(buffer.data(), buffer.length()) : nullptr;
}

// The length; -1 when the buffer has no data, and -2 for a length without data.
int32_t block_buffer(REALmemoryBlock block) {
    const rbBuffer buffer(block);
    if (buffer.data()) return buffer.length();
    return buffer.length() == 0 ? -1 : -2;
}

template <Text Declaration, auto Function>
constexpr auto global = method_record<void, Declaration, Function>();

constinit auto raiseRecord =
    global<"Raise(className as String, message as String, errorNumber as Integer)", raise>;
constinit auto raiseOutOfMemoryRecord = global<"RaiseOutOfMemory(size as Int64)", raise_out_of_memory>;
constinit auto stringDataRecord =
    global<"StringData(s as String, encoding as Integer, more as Integer = 0) as MemoryBlock", string_data>;
constinit auto macRomanRecord =
    global<"MacRoman(s as String, asStored as Boolean) as MemoryBlock", mac_roman>;
constinit auto stringBufferRecord = global<"StringBuffer(s as String) as MemoryBlock", string_buffer>;
constinit auto blockBufferRecord = global<"BlockBuffer(block as MemoryBlock) as Integer", block_buffer>;

}  // namespace

extern "C" __attribute__((visibility("default"))) void REALPluginMain(Resolver resolver) {
    gResolver = resolver;
    rbversion_rbversion = REALGetRBVersion();
    REALRegisterMethod(&raiseRecord);
    REALRegisterMethod(&raiseOutOfMemoryRecord);
    REALRegisterMethod(&stringDataRecord);
    REALRegisterMethod(&macRomanRecord);
    REALRegisterMethod(&stringBufferRecord);
    REALRegisterMethod(&blockBufferRecord);
}
