// Pictures as files that every viewer opens.
#pragma once

#include <cstdint>
#include <memory_resource>
#include <string>

namespace minihost {

// The most bytes of a picture's rows, each with one byte in front. The writer counts in 32 bits, doubles the
// room for its result, and a result can be an eighth longer than the rows.
constexpr int64_t kLargestPicture = 1'400'000'000;

// A PNG file's bytes, of `width` times `height` pixels in rows from the top, each of 1 (grey), 2 (grey and
// opacity), 3 (RGB) or 4 (RGBA) samples of 8 bits. Throws std::bad_alloc when `source` has not enough.
std::string png(const uint8_t* samples, int width, int height, int samples_per_pixel,
                std::pmr::memory_resource& source = *std::pmr::new_delete_resource());

}  // namespace minihost
