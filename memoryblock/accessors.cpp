// Strings and folder items are the host's; what is done here is to choose encodings and to give back what was
// taken.
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

// The file specification record at `offset`; nil where a block has no room for one.
FSSpec* file_specification(REALmemoryBlock block, int32_t offset) {
    if (!inside(block_size(block), offset, sizeof(FSSpec))) return nullptr;
    uint8_t* data = block_data(block);
    return data ? reinterpret_cast<FSSpec*>(data + offset) : nullptr;
}

}  // namespace

REALstring getString(REALmemoryBlock block, int32_t offset, int32_t numBytes) {
    const Range range = cut(block_size(block), offset, numBytes);
    if (range.empty()) return nullptr;
    const uint8_t* data = block_data(block);
    if (!data) return nullptr;
    const uint8_t* text = data + range.first;
    const bool ascii = kernels::all_ascii(text, range.count);
    return build_string(text, int32_t(range.count), ascii ? kTextEncodingUS_ASCII : kTextEncodingUnknown);
}

void setString(REALmemoryBlock block, REALstring str, int32_t offset) {
    const int32_t size = block_size(block);
    const rbBuffer text(str);
    const Range range = cut(size, offset, text.length());
    if (range.empty()) return;
    if (uint8_t* data = block_data(block)) kernels::copy(data + range.first, text.data(), range.count);
}

REALstring getOSType(REALmemoryBlock block, int32_t offset) {
    if (!inside(block_size(block), offset, kCodeLength)) return nullptr;
    const uint8_t* data = block_data(block);
    if (!data) return nullptr;
    Code code;
    kernels::copy(code, data + offset, sizeof code);
    kernels::reverse_bytes(code, sizeof code);
    const bool ascii = kernels::all_ascii(code, sizeof code);
    return build_string(code, kCodeLength, ascii ? kTextEncodingUS_ASCII : kTextEncodingMacRoman);
}

void setOSType(REALmemoryBlock block, int32_t offset, REALstring value) {
    if (!inside(block_size(block), offset, kCodeLength)) return;
    uint8_t* data = block_data(block);
    if (!data) return;
    Code code = {' ', ' ', ' ', ' '};
    read_code(code, value);
    kernels::reverse_bytes(code, sizeof code);
    kernels::copy(data + offset, code, sizeof code);
}

REALfolderItem getFSSpec(REALmemoryBlock block, int32_t offset) {
    const FSSpec* record = file_specification(block, offset);
    return record ? REALFolderItemFromFSSpec(record) : nullptr;
}

void setFSSpec(REALmemoryBlock block, int32_t offset, REALfolderItem item) {
    if (FSSpec* record = file_specification(block, offset)) REALFSSpecFromFolderItem(record, item);
}

}  // namespace memoryblock
