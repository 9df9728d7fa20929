// Compile-time agreement between a member's declaration in the host language and the C++ function behind it:
// the number of parameters, each one's type, and the result.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "plugin/records.h"

namespace signature {

enum class HostType {
    Nothing,
    Integer,
    Int64,
    UInt64,
    Double,
    Boolean,
    String,
    Ptr,
    MemoryBlock,
    FolderItem,
    Unknown,
};

// How C++ functions pass each host type.
template <class T>
inline constexpr HostType kHostType = HostType::Unknown;
template <>
inline constexpr HostType kHostType<void> = HostType::Nothing;
template <>
inline constexpr HostType kHostType<int32_t> = HostType::Integer;
template <>
inline constexpr HostType kHostType<int64_t> = HostType::Int64;
template <>
inline constexpr HostType kHostType<uint64_t> = HostType::UInt64;
template <>
inline constexpr HostType kHostType<double> = HostType::Double;
template <>
inline constexpr HostType kHostType<REALboolean> = HostType::Boolean;
template <>
inline constexpr HostType kHostType<REALstring> = HostType::String;
template <>
inline constexpr HostType kHostType<void*> = HostType::Ptr;
template <>
inline constexpr HostType kHostType<REALmemoryBlock> = HostType::MemoryBlock;
template <>
inline constexpr HostType kHostType<REALfolderItem> = HostType::FolderItem;

consteval char lower(char c) { return c >= 'A' && c <= 'Z' ? char(c + ('a' - 'A')) : c; }

consteval bool same_name(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, lower, lower);
}

// The index of the first `c` at or after `from`; the text's length when there is none.
// (std::string_view::find is no constant expression under GCC's sanitizers.)
consteval size_t find(std::string_view text, char c, size_t from = 0) {
    while (from < text.size() && text[from] != c) ++from;
    return from;
}

consteval HostType host_type(std::string_view name) {
    struct Named {
        std::string_view name;
        HostType type;
    };
    constexpr Named kTypes[] = {
        {"Integer", HostType::Integer},
        {"Int64", HostType::Int64},
        {"UInt64", HostType::UInt64},
        {"Double", HostType::Double},
        {"Boolean", HostType::Boolean},
        {"String", HostType::String},
        {"Ptr", HostType::Ptr},
        {"MemoryBlock", HostType::MemoryBlock},
        {"FolderItem", HostType::FolderItem},
    };
    for (const Named& type : kTypes) {
        if (same_name(type.name, name)) return type.type;
    }
    return HostType::Unknown;
}

// What a declaration or a function says: its result and its parameters, the object left out.
struct Signature {
    static constexpr size_t kMostParameters = 16;
    HostType result = HostType::Nothing;
    size_t count = 0;
    std::array<HostType, kMostParameters> parameters = {};

    consteval void add(HostType type) { parameters[count++] = type; }
    // The same with the result as a last parameter: what a setter takes.
    consteval Signature setter() const {
        Signature taking = *this;
        taking.result = HostType::Nothing;
        taking.add(result);
        return taking;
    }
};

// The type in "name as type = default" or in ") as type": the word after " as ", in any capitalisation.
consteval HostType type_after_as(std::string_view text) {
    for (size_t i = 0; i + 4 <= text.size(); ++i) {
        if (!same_name(text.substr(i, 4), " as ")) continue;
        const std::string_view type = text.substr(i + 4);
        return host_type(type.substr(0, find(type, ' ')));
    }
    return HostType::Unknown;
}

consteval Signature parse(std::string_view declaration) {
    Signature parsed;
    const size_t open = find(declaration, '(');
    if (open == declaration.size()) return parsed;
    const size_t close = find(declaration, ')', open);
    std::string_view rest = declaration.substr(open + 1, close - open - 1);
    while (!rest.empty()) {
        const size_t comma = find(rest, ',');
        parsed.add(type_after_as(rest.substr(0, comma)));
        rest.remove_prefix(std::min(comma + 1, rest.size()));
    }
    const std::string_view result = declaration.substr(close + 1);
    if (!result.empty()) parsed.result = type_after_as(result);
    return parsed;
}

// The signature of a function called on an object of type Self, which is its first argument; Self = void for
// a function that is called on nothing.
template <class Self, class Function>
struct SignatureOf;
template <class Self, class Result, class... Arguments>
struct SignatureOf<Self, Result (*)(Self, Arguments...)> {
    static constexpr Signature value{kHostType<Result>, sizeof...(Arguments), {kHostType<Arguments>...}};
};
template <class Result, class... Arguments>
struct SignatureOf<void, Result (*)(Arguments...)> {
    static constexpr Signature value{kHostType<Result>, sizeof...(Arguments), {kHostType<Arguments>...}};
};

template <Signature Declared, Signature Actual>
consteval bool agree() {
    static_assert(std::ranges::count(Declared.parameters, HostType::Unknown) == 0 &&
                      Declared.result != HostType::Unknown,
                  "the declaration names a type that the host does not have");
    static_assert(Declared.count == Actual.count, "the function takes another number of parameters");
    static_assert(Declared.parameters == Actual.parameters, "a parameter has another type");
    static_assert(Declared.result == Actual.result, "the result has another type");
    return true;
}

}  // namespace signature
