#include "minihost/program/picture.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <unordered_map>
#include <vector>

namespace {

// What the library allocates while it writes a picture. It does not look whether it got any memory, so that
// must throw, and what it holds then goes with this object.
class Memory {
 public:
    static Memory* of_picture;  // the library's macros have no context

    explicit Memory(std::pmr::memory_resource& source) : source_(source) { of_picture = this; }
    ~Memory() { of_picture = nullptr; }
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;

    void* allocate(size_t size) {
        std::pmr::vector<std::byte> block(size, &source_);
        void* bytes = block.data();
        blocks_.emplace(bytes, std::move(block));
        return bytes;
    }
    void* reallocate(void* old, size_t size) {
        void* bytes = allocate(size);
        if (!old) return bytes;
        std::memcpy(bytes, old, std::min(size, blocks_.at(old).size()));
        release(old);
        return bytes;
    }
    void release(void* bytes) { blocks_.erase(bytes); }

 private:
    std::pmr::memory_resource& source_;
    std::unordered_map<void*, std::pmr::vector<std::byte>> blocks_;
};

Memory* Memory::of_picture = nullptr;

}  // namespace

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#define STBIW_MALLOC(size) Memory::of_picture->allocate(size_t(size))
#define STBIW_REALLOC(old, size) Memory::of_picture->reallocate(old, size_t(size))
#define STBIW_FREE(bytes) Memory::of_picture->release(bytes)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <stb/stb_image_write.h>
#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#define STBI_ONLY_PNM
#define STBI_NO_STDIO
#define STBI_NO_LINEAR
#define STBI_NO_HDR
#include <stb/stb_image.h>
#pragma GCC diagnostic pop

namespace minihost {

std::string png(const uint8_t* samples, int width, int height, int samples_per_pixel,
                std::pmr::memory_resource& source) {
    const Memory memory(source);
    std::string file;
    const auto append = [](void* context, void* bytes, int count) {
        static_cast<std::string*>(context)->append(static_cast<const char*>(bytes), size_t(count));
    };
    stbi_write_png_to_func(append, &file, width, height, samples_per_pixel, samples,
                           width * samples_per_pixel);
    return file;
}

namespace {

const stbi_uc* bytes_of(std::string_view file) { return reinterpret_cast<const stbi_uc*>(file.data()); }

}  // namespace

std::optional<PictureSize> picture_size(std::string_view file) {
    PictureSize size = {};
    int samples = 0;
    const bool read =
        stbi_info_from_memory(bytes_of(file), int(file.size()), &size.width, &size.height, &samples) != 0;
    return read ? std::optional(size) : std::nullopt;
}

std::optional<std::string> picture_samples(std::string_view file, int samples_per_pixel) {
    PictureSize size = {};
    int in_file = 0;
    const std::unique_ptr<stbi_uc, void (*)(void*)> samples(
        stbi_load_from_memory(bytes_of(file), int(file.size()), &size.width, &size.height, &in_file,
                              samples_per_pixel),
        stbi_image_free);
    if (!samples) return std::nullopt;
    return std::string(reinterpret_cast<const char*>(samples.get()),
                       size_t(size.width) * size_t(size.height) * size_t(samples_per_pixel));
}

}  // namespace minihost
