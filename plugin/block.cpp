#include "plugin/block.h"

#include <algorithm>
#include <cstring>

#include "plugin/exceptions.h"
#include "plugin/host.h"

int32_t block_size(REALmemoryBlock block) { return block ? REALMemoryBlockGetSize(block) : 0; }

uint8_t* block_data(REALmemoryBlock block) {
    return block ? static_cast<uint8_t*>(REALMemoryBlockGetPtr(block)) : nullptr;
}

REALmemoryBlock new_block(const uint8_t* bytes, int32_t count) {
    const REALmemoryBlock block = count < INT32_MAX ? REALNewMemoryBlockOriginal(count) : nullptr;
    if (!block) {
        RaiseOutOfMemory(count);
        return nullptr;
    }
    uint8_t* data = block_data(block);
    if (!data) {
        REALUnlockObject(block);
        return nullptr;
    }
    std::memcpy(data, bytes, size_t(count));
    return block;
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
