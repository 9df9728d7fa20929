// What the file of a shared library says about itself.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace minihost::platform {

struct ImageFile {
    std::vector<std::string> exports;  // names that others can find, sorted
    std::vector<std::string> needs;    // libraries, in the file's order
};

// Throws std::runtime_error for a file that cannot be read as one for this processor.
ImageFile read_image_file(const std::filesystem::path& path);

// Whether a library is one that comes with every system: the C and C++ libraries and their parts.
bool is_system_library(const std::string& name);

}  // namespace minihost::platform
