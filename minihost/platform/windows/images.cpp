#include "minihost/platform/images.h"

#include <windows.h>

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace minihost::platform {
namespace {

namespace fs = std::filesystem;

std::string reason(DWORD error) {
    if (error == ERROR_BAD_EXE_FORMAT) return "the file is no whole image for this processor";
    if (error == ERROR_MOD_NOT_FOUND) return "a library that it needs is missing";
    return std::system_category().message(int(error));
}

HMODULE load(const fs::path& file) {
    // What a library needs may lie beside it. No box asks for what is missing.
    SetErrorMode(SEM_FAILCRITICALERRORS);
    const HMODULE image = LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (!image) throw std::runtime_error(reason(GetLastError()));
    return image;
}

// Copies of files. An image's file cannot be removed before the image has gone: both go when the program
// ends.
class Copies {
 public:
    Copies() {
        const std::string name = "minihost" + std::to_string(GetCurrentProcessId());
        folder_ = fs::temp_directory_path() / name;
        fs::create_directories(folder_);
    }
    ~Copies() {
        for (const HMODULE image : images_) FreeLibrary(image);
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }
    Copies(const Copies&) = delete;
    Copies& operator=(const Copies&) = delete;

    HMODULE load_copy(const fs::path& file) {
        fs::path copy = folder_ / std::to_string(images_.size());
        copy += file.filename();
        fs::copy_file(file, copy, fs::copy_options::overwrite_existing);
        images_.push_back(load(copy));
        return images_.back();
    }

 private:
    fs::path folder_;
    std::vector<HMODULE> images_;
};

}  // namespace

// The system hands out the image of a file that it has loaded before, so only the first image comes from the
// file itself.
void* load_fresh_image(const fs::path& file) {
    const fs::path full = fs::absolute(file).make_preferred();
    if (!GetModuleHandleW(full.c_str())) return load(full);
    static Copies copies;
    return copies.load_copy(full);
}

void* find_symbol(void* image, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(image), name));
}

}  // namespace minihost::platform
