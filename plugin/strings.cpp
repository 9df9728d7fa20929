#include "plugin/strings.h"

#include <cstdlib>
#include <cstring>

#include "plugin/host.h"

namespace {

constexpr int32_t kTerminator = 4;  // zero bytes after a copied text: enough for every code unit width

// What an empty view points to.
constexpr uint16_t EmptyBufferUInt16[2] = {};

using LenBFunction = int32_t (*)(REALstring);

// The host language's own LenB; nil while the host has none.
LenBFunction resolve_LenB() {
    static constinit LenBFunction pLenB = nullptr;
    if (!pLenB) {
        pLenB = reinterpret_cast<LenBFunction>(
            REALLoadFrameworkMethod(nullptr, "LenB( s as string ) as integer"));
    }
    return pLenB;
}

// Fills the record with a terminated copy of `length` bytes.
bool fill_with_copy(REALstringData* record, const char* bytes, int32_t length, uint32_t encoding) {
    if (length < 0 || (length > 0 && !bytes)) return false;
    auto* copy = static_cast<char*>(std::calloc(1, size_t(length) + kTerminator));
    if (!copy) return false;
    if (length > 0) std::memcpy(copy, bytes, size_t(length));
    *record = {copy, length, encoding};
    return true;
}

bool copy_string_data(REALstring string, uint32_t encoding, REALstringData* record) {
    const bool readable = REALCString.resolve() != nullptr;
    const LenBFunction LenB = resolve_LenB();
    if (!readable || !LenB || !string) return false;
    if (encoding == kTextEncodingUnknown || REALGetStringEncoding(string) == encoding) {
        const int32_t length = LenB(string);
        return fill_with_copy(record, REALCString(string), length, encoding);
    }
    const REALstring converted = REALConvertString(string, encoding);
    if (!converted) return false;
    const int32_t length = LenB(converted);
    const bool filled = fill_with_copy(record, REALCString(converted), length, encoding);
    REALUnlockString(converted);
    return filled;
}

}  // namespace

bool REALGetStringData(REALstring string, uint32_t encoding, REALstringData* record) {
    if (PluginGetStringData.resolve()) return PluginGetStringData(string, encoding, record) != 0;
    return copy_string_data(string, encoding, record);
}

void REALDisposeStringData(REALstringData* record) {
    if (PluginDisposeStringData.resolve()) return PluginDisposeStringData(record);
    std::free(record->data);
}

StoredText stored_text(REALstring string) {
    const auto* record = reinterpret_cast<const REALstringRecord*>(string);
    if (!record->buffer || record->length <= 0) return {nullptr, 0};
    return {record->buffer + 1, record->length};
}

rbText::~rbText() {
    if (string_) REALUnlockString(string_);
    if (converted_) REALUnlockString(converted_);
    if (stringDataHeld_) REALDisposeStringData(&stringData_);
    std::free(copy_);
}

void rbText::ConvertMacRoman() {
    view(nullptr, 0);
    if (!string_) return;
    const bool hostHandsOutData = rbversion_rbversion >= 2012.0;
    if (reading_ == kTakeStoredBytes) {
        if (hostHandsOutData) return read_data(kTextEncodingUnknown);
        return read_record(string_);
    }
    if (hostHandsOutData) {
        read_data(kTextEncodingMacRoman);
    } else {
        converted_ = REALConvertString(string_, kTextEncodingMacRoman);
        failed_ = !converted_;
        if (converted_) read_record(converted_);
    }
    terminate();
}

void rbText::view(const void* data, int32_t length) {
    const bool empty = !data || length <= 0;
    data_ = empty ? reinterpret_cast<const uint8_t*>(EmptyBufferUInt16) : static_cast<const uint8_t*>(data);
    length_ = empty ? 0 : length;
}

void rbText::read_data(uint32_t encoding) {
    stringDataHeld_ = REALGetStringData(string_, encoding, &stringData_);
    failed_ = !stringDataHeld_;
    if (stringDataHeld_) view(stringData_.data, stringData_.length);
}

void rbText::read_record(REALstring string) {
    const StoredText text = stored_text(string);
    view(text.data, text.length);
}

// Hosts follow a text with a byte of their own, which need not be zero.
void rbText::terminate() {
    if (data_[length_] == 0) return;
    const int64_t size = int64_t(length_) + kTerminator;
    if (size <= INT32_MAX) copy_ = std::calloc(1, size_t(size));
    if (!copy_) return view(nullptr, 0);
    std::memcpy(copy_, data_, size_t(length_));
    view(copy_, length_);
}
