// Everything that a script can call: what the bundle registered, and what the language brings along.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "minihost/library/declaration.h"
#include "minihost/program/runtime.h"

namespace minihost {

// A function, method or property. `self` is the object that a member belongs to and may be nil.
struct Callable {
    using Function = std::function<Value(Runtime&, const ObjectRef& self, std::span<const Value> arguments)>;

    Declaration declaration;
    Function get;
    Function set = {};  // takes the assigned value after the arguments; empty where nothing can be assigned
};

// Stands for the owner of what New calls.
inline constexpr const char* kConstructor = "New";

// The overloads of a name; none for a name that there is not.
std::vector<Callable> find_functions(Host& host, std::string_view name);
std::vector<Callable> find_members(Host& host, std::string_view class_name, std::string_view name);
std::vector<Callable> find_constructors(Host& host, std::string_view class_name);

// All names there are, for suggestions and completion. An empty class name stands for all classes.
std::vector<std::string> function_names(Host& host);
std::vector<std::string> member_names(Host& host, std::string_view class_name = {});

// What the language brings along, functions first.
struct BuiltIn {
    std::string owner;  // a class, kConstructor, or empty for functions
    Callable callable;
};
const std::vector<BuiltIn>& built_ins();

}  // namespace minihost
