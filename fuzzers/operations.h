// What a host answers: each of its operations may be missing, known only from the second request on, or
// failing.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace fuzz {

enum class Operation : uint8_t {
    kGetPtr,
    kGetSize,
    kNewBlock,
    kViewBlock,
    kLockObject,
    kUnlockObject,
    kLockString,
    kUnlockString,
    kBuildString,
    kSetEncoding,
    kGetEncoding,
    kConvert,
    kCString,
    kGetData,
    kDisposeData,
    kLoadGlobal,
    kNewInstance,
    kSetText,
    kSetNumber,
    kRaise,
    kFromSpec,
    kToSpec,
};

// Their keys, in the same order.
inline constexpr std::string_view kKeys[] = {
    "memoryBlockGetPtr",    "memoryBlockGetSize",      "newMemoryBlock",          "PtrToMemoryBlock",
    "REALLockObject",       "REALUnlockObject",        "REALLockString",          "REALUnlockString",
    "REALBuildString",      "REALSetStringEncoding",   "REALGetStringEncoding",   "REALConvertString",
    "StringGetCString",     "PluginGetStringData",     "PluginDisposeStringData", "REALLoadGlobalMethod",
    "PluginNewInstance",    "REALSetPropValueString",  "REALSetPropValueInt",     "RuntimeRaiseException",
    "FolderItemFromFSSpec", "REALFSSpecFromFolderItem"};
inline constexpr size_t kOperations = std::size(kKeys);

enum class Answer : uint8_t {
    kWorks,
    kMissing,
    kLate,     // missing at the first request
    kFailing,  // does nothing and returns 0 or nil
};

// A host: which version it says it has, and how it answers.
struct HostKind {
    size_t version = 0;  // an index into kVersions
    std::array<Answer, kOperations> answers = {};

    Answer& operator[](Operation operation) { return answers[size_t(operation)]; }
};

// One host for each way in which versions differ to the bundle.
inline constexpr std::optional<double> kVersions[] = {2013.04, 2013.02, 2013.0, 2012.0, 2011.0, std::nullopt};

}  // namespace fuzz
