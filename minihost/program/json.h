// What scripts print, as JSON.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "minihost/program/runtime.h"

namespace minihost {

// One value, or a list of several: numbers, true and false, null for Nil and for what is no number, text. A
// block is the hexadecimal form of its bytes. Bytes that are no text in UTF-8 become U+FFFD.
std::string json(Runtime& runtime, std::span<const Value> values);

// A text in quotation marks.
std::string json_string(std::string_view text);

}  // namespace minihost
