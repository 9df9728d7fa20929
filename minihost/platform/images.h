// Images of shared libraries.
#pragma once

#include <filesystem>

namespace minihost::platform {

// Loads an image that shares no static data with any loaded before, and stays for good. Throws
// std::runtime_error, which says why it cannot.
void* load_fresh_image(const std::filesystem::path& file);

// Nil when the image exports no such symbol.
void* find_symbol(void* image, const char* name);

}  // namespace minihost::platform
