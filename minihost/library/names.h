// Names of the host language are the same in any capitalisation.
#pragma once

#include <algorithm>
#include <string_view>

namespace minihost {

inline char lower_case(char c) { return c >= 'A' && c <= 'Z' ? char(c + ('a' - 'A')) : c; }

inline bool same_name(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, lower_case, lower_case);
}

}  // namespace minihost
