// The bytes of a shared library's file, for those who read its tables.
#pragma once

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace minihost::platform {

[[noreturn]] inline void refuse_image(const std::string& what = "image") {
    throw std::runtime_error("the file is no whole " + what);
}

// Each place is checked against the file's size; std::runtime_error where it does not lie inside.
class ImageBytes {
 public:
    explicit ImageBytes(const std::filesystem::path& path) {
        std::ifstream in(path, std::ios::binary);
        bytes_.assign(std::istreambuf_iterator<char>(in), {});
    }

    template <class Record>
    Record at(size_t offset) const {
        if (offset > bytes_.size() || bytes_.size() - offset < sizeof(Record)) refuse_image();
        Record record;
        std::memcpy(&record, bytes_.data() + offset, sizeof record);
        return record;
    }

    // Up to its zero byte.
    std::string text(size_t offset) const {
        const size_t end = offset < bytes_.size() ? bytes_.find('\0', offset) : bytes_.npos;
        if (end == bytes_.npos) refuse_image("table of names");
        return bytes_.substr(offset, end - offset);
    }

 private:
    std::string bytes_;
};

}  // namespace minihost::platform
