// The host operations: functions of the host, reached through the resolver by key.
//
// An operation asks for its address at its first use and keeps it. While the resolver does not know the
// key, a call is skipped and counts as having returned 0 or nil, and the next use asks again.
#pragma once

#include "plugin/records.h"
#include "plugin/text.h"

using Resolver = void* (*)(const char* key);

extern Resolver gResolver;                 // given to REALPluginMain; set once
extern double rbversion_rbversion;         // the host's version; 0.0 when it has none
extern int32_t CurrentREALControlVersion;  // the version word of the records: 9 to 12

template <Text Key, class Signature>
class HostOperation;

template <Text Key, class Result, class... Arguments>
class HostOperation<Key, Result(Arguments...)> {
 public:
    using Function = Result (*)(Arguments...);

    // The host's function, or nil while the resolver does not know the key.
    static Function resolve() { return function_ ? function_ : ask_and_keep(); }

    // The same without the cache.
    static Function ask() { return gResolver ? reinterpret_cast<Function>(gResolver(Key.bytes)) : nullptr; }

    // Once the address is known, a call is a load, a test and a jump.
    Result operator()(Arguments... arguments) const {
        if (function_) [[likely]]
            return function_(arguments...);
        return call_first(arguments...);
    }

 private:
    [[gnu::noinline, gnu::cold]] static Function ask_and_keep() { return function_ = ask(); }

    [[gnu::noinline, gnu::cold]] static Result call_first(Arguments... arguments) {
        const Function function = ask_and_keep();
        return function ? function(arguments...) : Result();
    }

    static inline constinit Function function_ = nullptr;
};

inline constexpr HostOperation<"RegisterPluginVersion", void(int32_t)> REALRegisterPluginVersion;
inline constexpr HostOperation<"REALGetRBVersion", double()> REALGetRBVersion;

inline constexpr HostOperation<"PluginRegisterClassExtension", void(REALclassDefinition*)>
    REALRegisterClassExtension;
inline constexpr HostOperation<"PluginRegisterClass", void(REALclassDefinition*)> REALRegisterClass;
inline constexpr HostOperation<"PluginRegisterMethod", void(void* /* REALmethodDefinition */)>
    REALRegisterMethod;

inline constexpr HostOperation<"memoryBlockGetPtr", void*(REALmemoryBlock)> REALMemoryBlockGetPtr;
inline constexpr HostOperation<"memoryBlockGetSize", int32_t(REALmemoryBlock)> REALMemoryBlockGetSize;
inline constexpr HostOperation<"newMemoryBlock", REALmemoryBlock(int32_t)> REALNewMemoryBlockOriginal;
inline constexpr HostOperation<"PtrToMemoryBlock", REALmemoryBlock(void*)> REALPtrToMemoryBlock;

inline constexpr HostOperation<"REALLockObject", void(REALobject)> REALLockObject;
inline constexpr HostOperation<"REALUnlockObject", void(REALobject)> REALUnlockObject;
inline constexpr HostOperation<"REALLockString", void(REALstring)> REALLockString;
inline constexpr HostOperation<"REALUnlockString", void(REALstring)> REALUnlockString;

inline constexpr HostOperation<"REALBuildString", REALstring(const char*, int32_t)> REALBuildString;
inline constexpr HostOperation<"REALSetStringEncoding", void(REALstring, uint32_t)> REALSetStringEncoding;
inline constexpr HostOperation<"REALGetStringEncoding", uint32_t(REALstring)> REALGetStringEncoding;
inline constexpr HostOperation<"REALConvertString", REALstring(REALstring, uint32_t)> REALConvertString;
inline constexpr HostOperation<"StringGetCString", const char*(REALstring)> REALCString;
inline constexpr HostOperation<"REALLoadGlobalMethod", void*(void*, const char*)> REALLoadFrameworkMethod;
// The two behind REALGetStringData and REALDisposeStringData, which have fallbacks (strings.h).
inline constexpr HostOperation<"PluginGetStringData", REALboolean(REALstring, uint32_t, REALstringData*)>
    PluginGetStringData;
inline constexpr HostOperation<"PluginDisposeStringData", void(REALstringData*)> PluginDisposeStringData;

inline constexpr HostOperation<"PluginNewInstance", REALobject(const char*)> REALnewInstance;
inline constexpr HostOperation<"REALSetPropValueString", void(REALobject, const char*, REALstring)>
    REALSetPropValueString;
inline constexpr HostOperation<"REALSetPropValueInt", void(REALobject, const char*, int32_t)>
    REALSetPropValueInt32;
inline constexpr HostOperation<"RuntimeRaiseException", void(REALobject)> REALRaiseException;

inline constexpr HostOperation<"FolderItemFromFSSpec", REALfolderItem(const FSSpec*)>
    REALFolderItemFromFSSpec;
inline constexpr HostOperation<"REALFSSpecFromFolderItem", void(FSSpec*, REALfolderItem)>
    REALFSSpecFromFolderItem;
