// What a script works on while it runs, and the values of the host language as the script handles them.
#pragma once

#include <csignal>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "minihost/library/host.h"
#include "minihost/library/overloads.h"
#include "minihost/program/hex_dump.h"
#include "minihost/program/script_error.h"

namespace minihost {

struct Runtime {
    Host& host;
    std::ostream& out;
    std::vector<std::string> arguments;   // of the script, without its name
    std::filesystem::path script_folder;  // where the script lies
    HexDump dump;
    bool json = false;  // Print writes JSON
    std::vector<Value> variables = {};
    Position at = {};                                          // what runs
    static inline volatile std::sig_atomic_t interrupted = 0;  // set where all that runs must end
};

// Thrown where what runs is interrupted.
struct Interrupted : std::runtime_error {
    Interrupted() : std::runtime_error("interrupted") {}
};

// Thrown by the script's wish to end, with the status that the program is to end with.
struct Quit {
    int status;
};

// Raises a host exception in the script.
[[noreturn]] void raise(Runtime& runtime, std::string_view class_name, std::string_view message);

// Types

inline const Type kBoolean{Kind::Boolean, ""};
inline const Type kString{Kind::String, ""};
inline const Type kInteger{Kind::Integer, ""};
inline const Type kInt64{Kind::Int64, ""};
inline const Type kDouble{Kind::Double, ""};

Type object_type(std::string_view class_name);
std::vector<std::string> type_names(Host& host);  // that can stand after As
bool is_number(const Type& type);
bool is_whole(const Type& type);

// Whether a value of one type does where another one is declared.
bool fits(const Host& host, const Type& declared, const Type& found);

// Values. A value of a type is held in one alternative of Value always; nil references are empty ones.

Value default_value(const Type& type);

// A number's value as a C++ number, which wraps around; for numbers that are known to fit, and for bits.
template <class To>
To number(const Value& value) {
    return std::visit(
        [](const auto& held) {
            if constexpr (std::is_arithmetic_v<std::decay_t<decltype(held)>>) {
                return To(held);
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

// A value in the form of a type that it fits. Fractions are cut off; a number outside the type's range gives
// nothing. A block may stand for the address of its bytes.
std::optional<Value> convert(const Value& value, const Type& type);

// "Integer (-2147483648 to 2147483647)"
std::string range_text(const Type& type);

// What Print shows of a value, and Str returns.
std::string show(Runtime& runtime, const Value& value);
// The bytes of a block, which may be nil.
void print_block(Runtime& runtime, const ObjectRef& block);

std::string_view bytes_of(Runtime& runtime, const Value& string);
Value utf8_string(Runtime& runtime, std::string_view bytes);

}  // namespace minihost
