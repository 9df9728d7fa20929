#include "minihost/platform/files.h"

#include <sys/stat.h>
#include <unistd.h>

#include <string>

namespace minihost::platform {

File open_file(const std::filesystem::path& path, const char* mode) {
    return {std::fopen(path.c_str(), mode), std::fclose};
}

std::optional<int64_t> regular_size(std::FILE* file) {
    struct stat status = {};
    if (fstat(fileno(file), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    // The kernel's own files say 0 whatever they hold.
    return status.st_size > 0 ? std::optional<int64_t>(status.st_size) : std::nullopt;
}

bool seek(std::FILE* file, int64_t offset) { return fseeko(file, off_t(offset), SEEK_SET) == 0; }

std::filesystem::path name_beside(const std::filesystem::path& file) {
    std::filesystem::path name = file;
    return name += '.' + std::to_string(getpid()) + ".part";
}

}  // namespace minihost::platform
