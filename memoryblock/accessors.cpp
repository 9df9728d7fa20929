// Strings and folder items belong to the host: members choose the encoding and give back what they took.
#include <algorithm>

#include "kernels/copy.h"
#include "kernels/mirror.h"
#include "kernels/search.h"
#include "memoryblock/members.h"
#include "plugin/block.h"
#include "plugin/host.h"

namespace memoryblock {
namespace {

// A four-character code: the first character first, in a block last.
constexpr int32_t kCodeLength = 4;
using Code = uint8_t[kCodeLength];

// A new string; nil when the host cannot build it.
REALstring build_string(const uint8_t* bytes, int32_t count, uint32_t encoding) {
    const REALstring string = REALBuildString(reinterpret_cast<const char*>(bytes), count);
    if (string) REALSetStringEncoding(string, encoding);
    return string;
}

// A string that stands for a four-character code, held such that it gives its Mac OS Roman bytes. One without
// encoding is taken byte for byte: bytes that could be read otherwise need a string that says what they are.
rbText text_of_code(REALstring value) {
    if (REALGetStringEncoding(value) != kTextEncodingUnknown) {
        REALLockString(value);
        return {value, rbText::kConvert};
    }
    const rbBuffer stored(value);
    if (kernels::all_ascii(stored.data(), size_t(stored.length()))) {
        REALLockString(value);
        return {value, rbText::kTakeStoredBytes};
    }
    return {build_string(stored.data(), stored.length(), kTextEncodingMacRoman), rbText::kConvert};
}

void read_code(Code& code, REALstring value) {
    if (!value) return;
    rbText text = text_of_code(value);
    text.ConvertMacRoman();
    kernels::copy(code, text.data(), size_t(std::min(text.length(), kCodeLength)));
}

// The bytes at `offset`; nil where a block has no room for so many.
uint8_t* record_at(REALmemoryBlock block, int32_t offset, int32_t count) {
    if (!inside(block_size(block), offset, count)) return nullptr;
    uint8_t* data = block_data(block);
    return data ? data + offset : nullptr;
}

FSSpec* file_specification(REALmemoryBlock block, int32_t offset) {
    return reinterpret_cast<FSSpec*>(record_at(block, offset, sizeof(FSSpec)));
}

}  // namespace

REALstring getString(REALmemoryBlock block, int32_t offset, int32_t numBytes) {
    const Bytes text = cut(block, offset, numBytes);
    if (text.empty()) return nullptr;
    const bool ascii = kernels::all_ascii(text.data(), text.size());
    return build_string(text.data(), int32_t(text.size()),
                        ascii ? kTextEncodingUS_ASCII : kTextEncodingUnknown);
}

void setString(REALmemoryBlock block, REALstring str, int32_t offset) {
    const int32_t size = block_size(block);
    const rbBuffer text(str);
    const Bytes bytes = bytes_of(block, cut(size, offset, text.length()));
    if (!bytes.empty()) kernels::copy(bytes.data(), text.data(), bytes.size());
}

REALstring getOSType(REALmemoryBlock block, int32_t offset) {
    const uint8_t* stored = record_at(block, offset, kCodeLength);
    if (!stored) return nullptr;
    Code code;
    kernels::copy(code, stored, sizeof code);
    kernels::reverse_bytes(code, sizeof code);
    const bool ascii = kernels::all_ascii(code, sizeof code);
    return build_string(code, kCodeLength, ascii ? kTextEncodingUS_ASCII : kTextEncodingMacRoman);
}

void setOSType(REALmemoryBlock block, int32_t offset, REALstring value) {
    uint8_t* stored = record_at(block, offset, kCodeLength);
    if (!stored) return;
    Code code = {' ', ' ', ' ', ' '};
    read_code(code, value);
    kernels::reverse_bytes(code, sizeof code);
    kernels::copy(stored, code, sizeof code);
}

REALfolderItem getFSSpec(REALmemoryBlock block, int32_t offset) {
    const FSSpec* record = file_specification(block, offset);
    return record ? REALFolderItemFromFSSpec(record) : nullptr;
}

void setFSSpec(REALmemoryBlock block, int32_t offset, REALfolderItem item) {
    if (FSSpec* record = file_specification(block, offset)) REALFSSpecFromFolderItem(record, item);
}

}  // namespace memoryblock
