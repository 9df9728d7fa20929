#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "minihost/library/state.h"

namespace minihost {
namespace {

void require_readable(const std::filesystem::path& bundle) {
    if (access(bundle.c_str(), R_OK) != 0) throw LoadError(bundle.string() + ": " + std::strerror(errno));
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(bundle, ignored))
        throw LoadError(bundle.string() + ": no regular file, so no bundle");
}

// The dynamic linker maps what a file's headers announce, and reading behind the end of a file that was cut
// off ends the program. What is no such file at all is left to the linker, which says so.
void require_whole(const std::filesystem::path& bundle) {
    std::ifstream file(bundle, std::ios::binary);
    ElfW(Ehdr) head = {};
    file.read(reinterpret_cast<char*>(&head), sizeof head);
    if (!file || std::memcmp(head.e_ident, ELFMAG, SELFMAG) != 0) return;
    file.seekg(std::streamoff(head.e_phoff));
    const uint64_t size = std::filesystem::file_size(bundle);
    for (int i = 0; i < head.e_phnum; ++i) {
        ElfW(Phdr) segment = {};
        file.read(reinterpret_cast<char*>(&segment), sizeof segment);
        if (!file || segment.p_offset > size || segment.p_filesz > size - segment.p_offset)
            throw LoadError(bundle.string() + ": no bundle that can be loaded (the file is cut off)");
    }
}

std::filesystem::path temporary_copy(const std::filesystem::path& bundle) {
    std::string name = (std::filesystem::temp_directory_path() / "minihost-XXXXXX").string();
    const int file = mkstemp(name.data());
    if (file < 0) throw LoadError(name + ": " + std::strerror(errno));
    close(file);
    std::error_code error;
    std::filesystem::copy_file(bundle, name, std::filesystem::copy_options::overwrite_existing, error);
    if (!error) return name;
    std::filesystem::remove(name);
    throw LoadError(bundle.string() + ": cannot be copied to " + name + ": " + error.message());
}

// The dynamic linker names the file that it was given first.
std::string linker_reason(const std::filesystem::path& image) {
    std::string reason = dlerror();
    const std::string prefix = image.string() + ": ";
    if (reason.starts_with(prefix)) reason.erase(0, prefix.size());
    return reason;
}

}  // namespace

// The dynamic linker would hand out the image of a file that it has loaded before, so it gets a copy.
EntryPoint open_bundle(const std::filesystem::path& bundle) {
    require_readable(bundle);
    require_whole(bundle);
    const std::filesystem::path copy = temporary_copy(bundle);
    void* image = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
    const std::string reason = image ? "" : linker_reason(copy);
    std::error_code ignored;
    std::filesystem::remove(copy, ignored);
    if (!image) throw LoadError(bundle.string() + ": no bundle that can be loaded (" + reason + ")");
    void* entry = dlsym(image, "REALPluginMain");
    if (!entry) throw LoadError(bundle.string() + ": no bundle, it has no entry point REALPluginMain");
    return reinterpret_cast<EntryPoint>(entry);
}

}  // namespace minihost
