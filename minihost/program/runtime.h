// What a script works on while it runs, and the values of the host language as the script handles them.
#pragma once

#include <cmath>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "minihost/library/host.h"
#include "minihost/program/hex_dump.h"

namespace minihost {

struct Runtime {
    Host& host;
    std::ostream& out;
    std::vector<std::string> arguments;   // of the script, without its name
    std::filesystem::path script_folder;  // where the script lies
    HexDump dump;
    std::vector<Value> variables = {};
    int line = 0;                                              // of what runs
    static inline volatile std::sig_atomic_t interrupted = 0;  // set where all that runs must end
};

// Raises a host exception in the script.
[[noreturn]] void raise(Runtime& runtime, std::string_view class_name, std::string_view message);

// Types

inline const Type kNil{Kind::Object, ""};  // fits every class, and Ptr
inline const Type kBoolean{Kind::Boolean, ""};
inline const Type kString{Kind::String, ""};
inline const Type kInt64{Kind::Int64, ""};
inline const Type kDouble{Kind::Double, ""};

Type object_type(std::string_view class_name);
std::string type_name(const Type& type);
bool is_number(const Type& type);
bool is_whole(const Type& type);

// How well a value of one type does where another one is declared. A parameter "as Variant" takes all.
enum class Fit { No, Narrowed, Whole };
Fit fit(Host& host, const Type& declared, const Type& found);

// Values. A value of a type is held in one alternative of Value always; nil references are empty ones.

Value default_value(const Type& type);

template <class To, class From>
To to_number(From from) {
    using Limits = std::numeric_limits<To>;
    if constexpr (std::is_integral_v<To> && std::is_floating_point_v<From>) {
        if (std::isnan(from)) return 0;
        if (from <= From(Limits::min())) return Limits::min();
        if (from >= From(Limits::max())) return Limits::max();
    }
    return To(from);
}

// A value as a C++ number: whole numbers wrap, fractions are cut off and stay within the limits.
template <class To>
To number(const Value& value) {
    return std::visit(
        [](const auto& held) {
            using From = std::decay_t<decltype(held)>;
            if constexpr (std::is_arithmetic_v<From>) {
                return to_number<To>(held);
            } else {
                return To{};
            }
        },
        value);
}

// Calls `function` with a zero of the C++ type that stands for a number type.
template <class Function>
auto with_number(Kind kind, Function&& function) {
    switch (kind) {
        case Kind::Integer:
            return function(int32_t{});
        case Kind::Int64:
            return function(int64_t{});
        case Kind::UInt64:
            return function(uint64_t{});
        default:
            return function(double{});
    }
}

// A value in the form of a type that it fits. A block may stand for the address of its bytes.
Value convert(Value value, const Type& type);

// What Print shows of a value, and Str returns.
std::string show(Runtime& runtime, const Value& value);
// The bytes of a block, which may be nil.
void print_block(Runtime& runtime, const ObjectRef& block);

std::string_view bytes_of(Runtime& runtime, const Value& string);
Value utf8_string(Runtime& runtime, std::string_view bytes);

// Files

// "cannot read out/x: No such file or directory", by errno.
std::string file_error(const std::string& what, const std::filesystem::path& path);
// What can be read of an open file, whose name is for messages. Throws std::runtime_error.
std::string read_rest(std::FILE* file, const std::filesystem::path& name);
// The bytes of a file. Throws std::runtime_error.
std::string read_file(const std::filesystem::path& path);

}  // namespace minihost
