// What the language brings along, in tables: a row is a declaration and what it does.
#pragma once

#include <string_view>
#include <vector>

#include "minihost/program/functions.h"

namespace minihost {

using Arguments = std::span<const Value>;

struct Row {
    using Function = Value (*)(Runtime&, const ObjectRef& self, Arguments arguments);

    const char* declaration;
    Function get;            // its arguments come in the declared types
    Function set = nullptr;  // takes the assigned value, in the type of the result, after the arguments
};
using Rows = std::vector<Row>;

Rows program_functions();
Rows file_functions();
Rows string_functions();
Rows number_functions();
Rows block_functions();
Rows constructors();
Rows block_members();
Rows folder_item_members();

// The argument of an Integer parameter.
inline int32_t integer(const Value& argument) { return std::get<int32_t>(argument); }

}  // namespace minihost
