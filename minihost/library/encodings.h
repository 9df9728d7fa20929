// Text between the encodings of the host's strings.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace minihost {

// The bytes in another encoding; nothing when they are no text in `from`, have no form in `to`, or an
// encoding is not known. kTextEncodingUnknown as `to` stands for the bytes as they are.
std::optional<std::string> convert_text(std::string_view bytes, uint32_t from, uint32_t to);

}  // namespace minihost
