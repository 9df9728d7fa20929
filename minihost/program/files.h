// Files, as scripts read and write them. What goes wrong is thrown as FileError, with the path in the
// message.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "minihost/platform/files.h"

namespace minihost {

// The most bytes that the host's blocks hold.
constexpr int64_t kLargestBlock = 2147483646;

struct FileError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A file that is read from its start to its end.
class InputFile {
 public:
    explicit InputFile(const std::filesystem::path& path);
    // Bytes come from an open file, which stays open; `name` stands for it in messages.
    InputFile(std::FILE* file, std::string name);

    // The size of a regular file; of others nothing is known before they have been read.
    std::optional<int64_t> size() const;
    // Leaves out bytes; those of a file that is shorter are at its end.
    void skip(int64_t count);
    // Reads until the buffer is full or the file ends, and returns how many bytes there were. Throws
    // Interrupted when it is interrupted.
    size_t read(std::span<char> buffer);
    // What there is left. Throws for more than `largest` bytes.
    std::string read_rest(int64_t largest = kLargestBlock);

    [[noreturn]] void fail_too_large() const;

 private:
    platform::File file_;
    std::string name_;
};

// Puts the bytes where the path says, in place of the file that may be there; folders are made. When that
// fails, the old file is as it was.
void write_file(const std::filesystem::path& path, std::string_view bytes);

}  // namespace minihost
