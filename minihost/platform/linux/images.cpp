#include "minihost/platform/images.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace minihost::platform {
namespace {

constexpr int kMode = RTLD_NOW | RTLD_LOCAL;

// The dynamic linker maps what a file's headers announce, and reading past the end of a file that was cut off
// ends the program. What is no such file at all is left to the linker, which says so.
void require_whole(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    ElfW(Ehdr) head = {};
    file.read(reinterpret_cast<char*>(&head), sizeof head);
    if (!file || std::memcmp(head.e_ident, ELFMAG, SELFMAG) != 0) return;
    file.seekg(std::streamoff(head.e_phoff));
    const uint64_t size = std::filesystem::file_size(path);
    for (int i = 0; i < head.e_phnum; ++i) {
        ElfW(Phdr) segment = {};
        file.read(reinterpret_cast<char*>(&segment), sizeof segment);
        if (!file || segment.p_offset > size || segment.p_filesz > size - segment.p_offset)
            throw std::runtime_error("the file is cut off");
    }
}

// The dynamic linker names the file that it was given first.
std::string linker_reason(const std::string& name) {
    std::string reason = dlerror();
    if (const std::string prefix = name + ": "; reason.starts_with(prefix)) reason.erase(0, prefix.size());
    return reason;
}

void* load(const std::string& name) {
    void* image = dlopen(name.c_str(), kMode);
    if (!image) throw std::runtime_error(linker_reason(name));
    return image;
}

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

struct Descriptor {
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() { close(number_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    operator int() const { return number_; }

 private:
    int number_;
};

void copy(const std::filesystem::path& path, int target) {
    std::ifstream file(path, std::ios::binary);
    char buffer[65536];
    while (file.read(buffer, sizeof buffer), file.gcount() > 0) {
        const char* from = buffer;
        for (auto left = size_t(file.gcount()); left > 0;) {
            const ssize_t written = write(target, from, left);
            if (written < 0) fail("cannot be copied in memory");
            from += written;
            left -= size_t(written);
        }
    }
    if (file.bad()) fail("cannot be read");
}

// A path to a descriptor that no path before it was spelt like: the dynamic linker takes a known name for the
// image that it has, and numbers of descriptors come back. Each bit of a serial is a "./" more or less.
std::string new_path_to(int descriptor) {
    static uint32_t serial = 0;
    std::string path = "/proc/self/fd/";
    for (uint32_t bits = ++serial; bits != 0; bits >>= 1) path += (bits & 1) != 0 ? "./" : "/";
    return path + std::to_string(descriptor);
}

}  // namespace

// The dynamic linker hands out the image of a file that it has loaded before, so only the first image comes
// from the file itself, and the others from copies in memory.
void* load_fresh_image(const std::filesystem::path& path) {
    require_whole(path);
    const std::string full = std::filesystem::absolute(path).string();
    void* loaded = dlopen(full.c_str(), kMode | RTLD_NOLOAD);
    if (!loaded) return load(full);
    dlclose(loaded);
    const Descriptor descriptor(memfd_create(path.filename().c_str(), MFD_CLOEXEC));
    if (descriptor < 0) fail("no copy in memory");
    copy(path, descriptor);
    return load(new_path_to(descriptor));
}

void* find_symbol(void* image, const char* name) { return dlsym(image, name); }

}  // namespace minihost::platform
