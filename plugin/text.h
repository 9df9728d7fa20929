// A string literal as a template argument.
#pragma once

#include <cstddef>
#include <string_view>

template <size_t N>
struct Text {
    char bytes[N];

    consteval Text(const char (&literal)[N]) {  // NOLINT: implicit, so that literals can be passed
        for (size_t i = 0; i < N; ++i) bytes[i] = literal[i];
    }
    constexpr std::string_view view() const { return {bytes, N - 1}; }
};
