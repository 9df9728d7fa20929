#include "plugin/block.h"

#include <algorithm>

REALmemoryBlock allocate_block(int64_t count) {
    return count < INT32_MAX ? REALNewMemoryBlockOriginal(int32_t(count)) : nullptr;
}

rbBuffer::rbBuffer(REALmemoryBlock block) : object_(block) {
    if (!object_) return;
    REALLockObject(object_);
    const int32_t size = std::max(0, block_size(object_));
    data_ = block_data(object_);
    if (data_) length_ = size;
}

rbBuffer::rbBuffer(REALstring string) {
    if (!string) return;
    if (rbversion_rbversion > 2013.0) {
        stringDataHeld_ = REALGetStringData(string, kTextEncodingUnknown, &stringData_);
        if (!stringDataHeld_) return;
        data_ = static_cast<uint8_t*>(stringData_.data);
        if (data_) length_ = std::max(0, stringData_.length);
    } else {
        string_ = string;
        REALLockString(string_);
        const StoredText text = stored_text(string_);
        data_ = reinterpret_cast<uint8_t*>(const_cast<char*>(text.data));
        length_ = text.length;
    }
}

rbBuffer::~rbBuffer() {
    if (string_) REALUnlockString(string_);
    if (object_) REALUnlockObject(object_);
    if (stringDataHeld_) REALDisposeStringData(&stringData_);
}
