// The host's records: what the plug-in fills in to describe what it registers, and what the host
// fills in to hand out a string's bytes. Plain C structs with the platform's natural alignment; a
// number is 32 bits wide on every platform.
#pragma once

#include <cstddef>
#include <cstdint>

// Opaque host objects. A MemoryBlock and a FolderItem are objects; a string is not.
struct REALobjectStruct {};
struct REALmemoryBlockStruct : REALobjectStruct {};
struct REALfolderItemStruct : REALobjectStruct {};
struct REALstringStruct;

using REALobject = REALobjectStruct*;
using REALmemoryBlock = REALmemoryBlockStruct*;
using REALfolderItem = REALfolderItemStruct*;
using REALstring = REALstringStruct*;

// A host Boolean: one byte, nonzero meaning true. The plug-in returns 0 or 1.
using REALboolean = int8_t;

// The classic file specification record. Only the host reads or writes its fields.
struct FSSpec {
    uint8_t bytes[70];
};

// Text encodings, as the host numbers them.
inline constexpr uint32_t kTextEncodingMacRoman = 0;
inline constexpr uint32_t kTextEncodingUS_ASCII = 0x0600;
inline constexpr uint32_t kTextEncodingUnknown = 0xFFFF;  // the bytes as stored

// A string's bytes: what "PluginGetStringData" fills in and "PluginDisposeStringData" releases.
struct REALstringData {
    void* data;
    int32_t length;  // bytes, any terminating zero bytes not counted
    uint32_t encoding;
};

// What a string handle points to on hosts up to 2013.0: the text starts one byte after `buffer`.
struct REALstringRecord {
    int32_t reserved0;
    const char* buffer;
    int32_t reserved2;
    int32_t length;  // bytes
};

// One method. The record is a template only so that a record that knows its functions' types can be
// initialised at compile time; to the host every instance is a `REALmethodDefinition`.
template <class Function = void (*)(), class Setter = void (*)()>
struct REALmethodRecord {
    Function function;
    Setter setter;  // nil unless the member can be assigned
    const char* declaration;
    uint32_t flags;
    // The older layout (kOldestLayout) ends here.
    const void* reserved4;
    int32_t reserved5;
};
using REALmethodDefinition = REALmethodRecord<>;
inline constexpr size_t kOlderMethodSize = offsetof(REALmethodDefinition, reserved4);

// One property. A getter takes the object and a 32-bit number that it may ignore.
template <class Getter = void (*)()>
struct REALpropertyRecord {
    const char* reserved0;
    const char* name;
    const char* type;
    uint32_t flags;
    Getter getter;
    const void* reserved5;
    int32_t reserved6;
    const void* reserved7;
    const void* reserved8;
    int32_t reserved9;
    // The older layout (kOldestLayout) ends here.
    const void* reserved10;
    int32_t reserved11;
};
using REALproperty = REALpropertyRecord<>;
inline constexpr size_t kOlderPropertySize = offsetof(REALproperty, reserved10);

// The version words of class records. The oldest stands for the older layout, all later ones for the newer.
inline constexpr int32_t kOldestLayout = 9;
inline constexpr int32_t kNewestLayout = 12;

// A class, or an extension of a host class. Each table comes with its count. The record is also
// written: by the plug-in at start-up, and by the host, which stores the offset of the instance data.
struct REALclassDefinition {
    int32_t version;
    const char* name;
    const char* super;
    int32_t instanceDataSize;  // bytes
    int32_t systemWord;        // bytes from an object's address to its instance data; the host's
    void (*constructor)(REALobject);
    void (*destructor)(REALobject);
    void* properties;
    int32_t propertyCount;
    void* methods;
    int32_t methodCount;
    void* table11;
    int32_t count12;
    void* table13;
    int32_t count14;
    void* field15;
    void* table16;
    int32_t count17;
    void* table18;
    int32_t count19;
    uint32_t flags;
    void* sharedProperties;
    int32_t sharedPropertyCount;
    void* sharedMethods;
    int32_t sharedMethodCount;
    // The older layout (kOldestLayout) ends here.
    void* table25;
    int32_t count26;
    void* table27;
    int32_t count28;
};
inline constexpr size_t kOlderClassSize = offsetof(REALclassDefinition, table25);

// The host's layout, as sizes on 64-bit and 32-bit platforms.
inline constexpr bool kWidePointers = sizeof(void*) == 8;
static_assert(sizeof(REALclassDefinition) == (kWidePointers ? 216 : 116));
static_assert(kOlderClassSize == (kWidePointers ? 184 : 100));
static_assert(offsetof(REALclassDefinition, properties) == (kWidePointers ? 48 : 28));
static_assert(offsetof(REALclassDefinition, methods) == (kWidePointers ? 64 : 36));
static_assert(offsetof(REALclassDefinition, flags) == (kWidePointers ? 148 : 80));
static_assert(sizeof(REALmethodDefinition) == (kWidePointers ? 48 : 24));
static_assert(kOlderMethodSize == (kWidePointers ? 32 : 16));
static_assert(sizeof(REALproperty) == (kWidePointers ? 96 : 48));
static_assert(kOlderPropertySize == (kWidePointers ? 80 : 40));
static_assert(sizeof(REALstringData) == (kWidePointers ? 16 : 12));
static_assert(sizeof(REALstringRecord) == (kWidePointers ? 24 : 16));
static_assert(sizeof(FSSpec) == 70 && alignof(FSSpec) == 1);
