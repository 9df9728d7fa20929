#include "minihost/platform/files.h"

#include <sys/stat.h>
#include <unistd.h>

#include <string>

namespace minihost::platform {

File open_file(const std::filesystem::path& path, const char* mode) {
    return {_wfopen(path.c_str(), std::wstring(mode, mode + std::char_traits<char>::length(mode)).c_str()),
            std::fclose};
}

std::optional<int64_t> regular_size(std::FILE* file) {
    struct stat status = {};
    if (fstat(fileno(file), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return status.st_size;
}

bool seek(std::FILE* file, int64_t offset) { return fseeko(file, offset, SEEK_SET) == 0; }

std::filesystem::path name_beside(const std::filesystem::path& file) {
    std::filesystem::path name = file;
    return name += '.' + std::to_string(getpid()) + ".part";
}

}  // namespace minihost::platform
