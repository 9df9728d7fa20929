// Pictures as files that every viewer opens.
#pragma once

#include <cstdint>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>

namespace minihost {

// The most bytes of a picture's rows, each with one byte in front. The writer counts in 32 bits, doubles the
// room for its result, and a result can be an eighth longer than the rows.
constexpr int64_t kLargestPicture = 1'400'000'000;

// A PNG file's bytes, of `width` times `height` pixels in rows from the top, each of 1 (grey), 2 (grey and
// opacity), 3 (RGB) or 4 (RGBA) samples of 8 bits. Throws std::bad_alloc when `source` has not enough.
std::string png(const uint8_t* samples, int width, int height, int samples_per_pixel,
                std::pmr::memory_resource& source = *std::pmr::new_delete_resource());

struct PictureSize {
    int width;
    int height;
};

// The size and the samples, in the order in which png() takes them, of a file's bytes: PNG, PPM or PGM, with
// 8 or 16 bits a sample. Nothing for other files, and for pictures that need more memory than there is.
std::optional<PictureSize> picture_size(std::string_view file);
std::optional<std::string> picture_samples(std::string_view file, int samples_per_pixel);

}  // namespace minihost
