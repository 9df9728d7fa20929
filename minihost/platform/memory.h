// Memory that others point to.
#pragma once

#include <cstddef>
#include <optional>

namespace minihost::platform {

// Whether all of the bytes can be read. Asks the system about each page, so it is nothing for the calls.
bool is_readable(const void* bytes, size_t size);

// The length of a text that ends with a zero byte; nothing where the text cannot be read.
std::optional<size_t> readable_length(const char* text);

}  // namespace minihost::platform
