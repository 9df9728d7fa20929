// Pictures as files that every viewer opens.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

namespace minihost {

// The most bytes of a picture's rows, each with one byte in front.
constexpr int64_t kLargestPicture = std::numeric_limits<int>::max();

// A PNG file's bytes, of `width` times `height` pixels in rows from the top, each of 1 (grey), 2 (grey and
// opacity), 3 (RGB) or 4 (RGBA) samples of 8 bits. Empty when there is no memory for it.
std::string png(const uint8_t* samples, int width, int height, int samples_per_pixel);

}  // namespace minihost
