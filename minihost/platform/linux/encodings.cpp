#include "minihost/platform/encodings.h"

#include <iconv.h>

#include <cstdint>

namespace minihost::platform {

std::optional<std::string> convert(std::string_view bytes, const char* from, const char* to) {
    // A byte becomes 4 at the most, and some encodings change their state before and after.
    std::string result(bytes.size() * 4 + 16, '\0');
    const iconv_t converter = iconv_open(to, from);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the failure value is an integer in a pointer's place
    if (converter == reinterpret_cast<iconv_t>(intptr_t{-1})) return std::nullopt;

    char* in = const_cast<char*>(bytes.data());
    char* out = result.data();
    size_t in_left = bytes.size();
    size_t out_left = result.size();
    constexpr auto kFailed = size_t(-1);
    const bool converted = iconv(converter, &in, &in_left, &out, &out_left) != kFailed &&
                           iconv(converter, nullptr, nullptr, &out, &out_left) != kFailed;
    iconv_close(converter);
    if (!converted) return std::nullopt;
    result.resize(result.size() - out_left);
    return result;
}

}  // namespace minihost::platform
