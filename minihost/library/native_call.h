// Native calls of functions whose parameters are known only from a declaration.
#pragma once

#include <span>

#include "minihost/library/value.h"
#include "minihost/platform/native_call.h"

namespace minihost {

using platform::Word;
using platform::Words;

inline constexpr size_t kMostParameters =
    platform::kMostArguments - 2;  // besides the object, and an assigned value

// The value's alternative says which kind of word it is. References stay with the value.
Word to_word(const Value& value);

class NativeCall : public platform::NativeCall {
 public:
    NativeCall(void* function, std::span<const Kind> parameters, Kind result);
};

}  // namespace minihost
