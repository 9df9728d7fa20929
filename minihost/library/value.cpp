#include "minihost/library/value.h"

#include <bit>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <limits>
#include <type_traits>

#include "minihost/library/declaration.h"
#include "minihost/library/names.h"

namespace minihost {
namespace {

struct NamedKind {
    std::string_view name;
    Kind kind;
};
constexpr NamedKind kKinds[] = {
    {"Integer", Kind::Integer}, {"Int32", Kind::Integer}, {"Int64", Kind::Int64},
    {"UInt64", Kind::UInt64},   {"Double", Kind::Double}, {"Boolean", Kind::Boolean},
    {"String", Kind::String},   {"Ptr", Kind::Ptr},
};

// The same number in another type; nothing when that type has no such number.
template <class To, class From>
std::optional<Value> exactly(From from) {
    constexpr int kSignificand = std::numeric_limits<double>::digits;
    if constexpr (std::is_same_v<To, From>) {
        return from;
    } else if constexpr (std::is_integral_v<To> && std::is_integral_v<From>) {
        if (!std::in_range<To>(from)) return std::nullopt;
    } else if constexpr (std::is_integral_v<To>) {
        constexpr auto kLowest = double(std::numeric_limits<To>::min());
        const double limit = std::ldexp(1.0, std::numeric_limits<To>::digits);
        if (!(from >= kLowest && from < limit) || from != std::trunc(from)) return std::nullopt;
    } else {
        const uint64_t magnitude = from < 0 ? 0 - uint64_t(from) : uint64_t(from);
        if (int(std::bit_width(magnitude)) - std::countr_zero(magnitude) > kSignificand) return std::nullopt;
    }
    return To(from);
}

}  // namespace

std::string address_text(const void* address) {
    char text[24];
    std::snprintf(text, sizeof text, "%#" PRIxPTR, reinterpret_cast<uintptr_t>(address));
    return text;
}

std::string to_string(const Type& type) {
    for (const NamedKind& named : kKinds) {
        if (named.kind == type.kind) return std::string(named.name);
    }
    return type.class_name;
}

Type parse_type(std::string_view name) {
    for (const NamedKind& named : kKinds) {
        if (same_name(named.name, name)) return {named.kind, ""};
    }
    return {Kind::Object, std::string(name)};
}

std::vector<std::string> built_in_type_names() {
    std::vector<std::string> names;
    for (const NamedKind& named : kKinds) names.emplace_back(named.name);
    return names;
}

std::optional<Value> convert_scalar(const Value& value, Kind kind) {
    return std::visit(
        [&](const auto& from) -> std::optional<Value> {
            using From = std::remove_cvref_t<decltype(from)>;
            if constexpr (std::is_same_v<From, bool>) {
                if (kind == Kind::Boolean) return from;
            } else if constexpr (std::is_arithmetic_v<From>) {
                if (kind == Kind::Integer) return exactly<int32_t>(from);
                if (kind == Kind::Int64) return exactly<int64_t>(from);
                if (kind == Kind::UInt64) return exactly<uint64_t>(from);
                if (kind == Kind::Double) return exactly<double>(from);
            }
            return std::nullopt;
        },
        value);
}

}  // namespace minihost
