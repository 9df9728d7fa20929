// Text between encodings.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace minihost::platform {

// The bytes in another encoding; nothing when they are no text in `from`, have no form in `to`, or the system
// does not know an encoding. These go by the names that the Internet has registered ("ISO-8859-1"), and some
// that are as well known ("CP437", "MAC-CYRILLIC").
std::optional<std::string> convert(std::string_view bytes, const char* from, const char* to);

}  // namespace minihost::platform
