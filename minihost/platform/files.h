// Files by their paths, in the C library's form.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace minihost::platform {

// The path that a text in UTF-8 names.
inline std::filesystem::path path_named(std::string_view text) {
    return std::u8string(text.begin(), text.end());
}

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// As std::fopen does: empty when it fails, and errno says why.
File open_file(const std::filesystem::path& path, const char* mode);

// Of a regular file; of others nothing is known before they have been read.
std::optional<int64_t> regular_size(std::FILE* file);

// To a place in a regular file, from its start. False when it fails.
bool seek(std::FILE* file, int64_t offset);

// A name for a file beside another one, which no other running program chooses.
std::filesystem::path name_beside(const std::filesystem::path& file);

}  // namespace minihost::platform
