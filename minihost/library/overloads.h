// Which overload a call means, and what its arguments become. The types of the arguments decide, never their
// values: a script and a C++ caller with arguments of the same types call the same member.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "minihost/library/host.h"

namespace minihost {

// The type of Nil: it fits every class, and Ptr.
inline const Type kNil{Kind::Object, ""};

// How far a type is from a declared one; nothing where it does not fit. 0 is the type itself, wider numbers
// and superclasses are nearer than narrower numbers. A parameter "as Variant" takes all.
std::optional<int> distance(const Host& host, const Type& declared, const Type& found);

// The index of the overload whose worst argument is nearest; of equally near ones that with the smallest sum,
// then the first. Throws CallError, whose `argument` is the one that does not fit.
size_t choose(const Host& host, std::span<const Declaration* const> overloads,
              std::span<const Type> arguments);
size_t choose(const Host& host, std::span<const Declaration* const> overloads,
              std::span<const Value> arguments);

Type type_of(const Host& host, const Value& value);

// The value as a type; nothing where that would lose something. A block may stand for a Ptr to its bytes.
std::optional<Value> convert_exactly(const Host& host, const Value& value, const Type& type);

// Parts of messages

// "2 to 3 arguments (srcOfs as Integer, ...)", the parameters as registered.
std::string count_text(const Declaration& declaration);
// "FillBytesZOR takes count as Integer, got String".
std::string misfit_text(const std::string& name, const Parameter& parameter, const Type& found);
std::string text_of(const Host& host, const Value& value);
std::string text_of(const Type& type);

}  // namespace minihost
