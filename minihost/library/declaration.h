// The declarations by which a bundle describes its members, for example
// "MinZOR(firstMem as Ptr, BitSize as integer = 8) as boolean".
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "minihost/library/value.h"

namespace minihost {

struct Parameter {
    std::string name;
    Type type;
    std::optional<Value> default_value;  // a number or a Boolean
};

struct Declaration {
    std::string text;  // as registered
    std::string name;
    std::vector<Parameter> parameters;
    Type result;

    // How many arguments a call must give at the least.
    size_t required() const;
};

// Throws std::invalid_argument, which says what was found at which column and what was expected.
Declaration parse_declaration(std::string_view text);

// A type by its name in any capitalisation; a name that is no built-in type is a class.
Type parse_type(std::string_view name);
std::vector<std::string> built_in_type_names();

}  // namespace minihost
