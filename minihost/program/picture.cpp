#include "minihost/program/picture.h"

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace minihost {

std::string png(const uint8_t* samples, int width, int height, int samples_per_pixel) {
    std::string file;
    const auto append = [](void* context, void* bytes, int count) {
        static_cast<std::string*>(context)->append(static_cast<const char*>(bytes), size_t(count));
    };
    stbi_write_png_to_func(append, &file, width, height, samples_per_pixel, samples,
                           width * samples_per_pixel);
    return file;
}

}  // namespace minihost
