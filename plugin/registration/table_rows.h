// The rows of the member tables: records that the compiler builds, after checking that the declaration and
// the functions behind it agree.
#pragma once

#include <type_traits>

#include "plugin/records.h"
#include "plugin/registration/signature.h"
#include "plugin/text.h"

inline constexpr uint32_t kClassAndMethodFlags = 4;
inline constexpr uint32_t kPropertyFlags = 6;

// The characters of a declaration, stored once.
template <Text Characters>
inline constexpr Text kText = Characters;

// A method, and the function behind its assignment if it has one.
template <class Self, Text Declaration, auto Function, auto Setter = nullptr>
consteval auto method_record() {
    using signature::agree, signature::parse, signature::SignatureOf;
    constexpr signature::Signature kDeclared = parse(Declaration.view());
    static_assert(agree<kDeclared, SignatureOf<Self, decltype(Function)>::value>());
    if constexpr (std::is_null_pointer_v<decltype(Setter)>) {
        return REALmethodRecord<decltype(Function)>{
            Function, nullptr, kText<Declaration>.bytes, kClassAndMethodFlags, nullptr, 0};
    } else {
        static_assert(agree<kDeclared.setter(), SignatureOf<Self, decltype(Setter)>::value>());
        return REALmethodRecord<decltype(Function), decltype(Setter)>{
            Function, Setter, kText<Declaration>.bytes, kClassAndMethodFlags, nullptr, 0};
    }
}

// A property's getter takes a 32-bit number after the object.
template <class Self, Text Name, Text Type, auto Getter>
consteval auto property_record() {
    using signature::agree, signature::HostType, signature::host_type, signature::Signature,
        signature::SignatureOf;
    static_assert(agree<Signature{host_type(Type.view()), 1, {HostType::Integer}},
                        SignatureOf<Self, decltype(Getter)>::value>());
    return REALpropertyRecord<decltype(Getter)>{.reserved0 = nullptr,
                                                .name = kText<Name>.bytes,
                                                .type = kText<Type>.bytes,
                                                .flags = kPropertyFlags,
                                                .getter = Getter,
                                                .reserved5 = nullptr,
                                                .reserved6 = 0,
                                                .reserved7 = nullptr,
                                                .reserved8 = nullptr,
                                                .reserved9 = 0,
                                                .reserved10 = nullptr,
                                                .reserved11 = 0};
}

// Records one after another, as an array of REALmethodDefinition or REALproperty lies in memory, each with
// its functions' own types.
template <class... Records>
struct Table;

template <class Last>
struct Table<Last> {
    static constexpr int32_t kCount = 1;
    Last last;

    explicit constexpr Table(Last record) : last(record) {}
};

template <class First, class... Rest>
struct Table<First, Rest...> {
    static constexpr int32_t kCount = 1 + int32_t(sizeof...(Rest));
    First first;
    Table<Rest...> rest;
    static_assert(sizeof(first) + sizeof(rest) == kCount * sizeof(First), "records lie without gaps");

    constexpr Table(First record, Rest... others) : first(record), rest(others...) {}
};

template <class... Records>
Table(Records...) -> Table<Records...>;
