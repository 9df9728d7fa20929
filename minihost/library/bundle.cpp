#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "minihost/library/state.h"

namespace minihost {
namespace {

void require_readable(const std::filesystem::path& bundle) {
    std::error_code ignored;
    if (std::filesystem::is_directory(bundle, ignored))
        throw LoadError(bundle.string() + ": a directory, no bundle");
    if (access(bundle.c_str(), R_OK) != 0) throw LoadError(bundle.string() + ": " + std::strerror(errno));
}

std::filesystem::path temporary_copy(const std::filesystem::path& bundle) {
    std::string name = (std::filesystem::temp_directory_path() / "minihost-XXXXXX").string();
    const int file = mkstemp(name.data());
    if (file < 0) throw LoadError(name + ": " + std::strerror(errno));
    close(file);
    std::error_code error;
    std::filesystem::copy_file(bundle, name, std::filesystem::copy_options::overwrite_existing, error);
    if (error) throw LoadError(bundle.string() + ": cannot be copied to " + name + ": " + error.message());
    return name;
}

// The dynamic linker names the file that it was given first.
std::string linker_reason(const std::filesystem::path& image) {
    std::string reason = dlerror();
    const std::string prefix = image.string() + ": ";
    if (reason.starts_with(prefix)) reason.erase(0, prefix.size());
    return reason;
}

}  // namespace

EntryPoint open_bundle(const std::filesystem::path& path) {
    const std::filesystem::path bundle = std::filesystem::absolute(path);
    require_readable(bundle);
    // The first image is the file itself, so that debuggers find it; the linker would hand out the same image
    // again, so that later ones are those of copies.
    const bool loaded = dlopen(bundle.c_str(), RTLD_NOW | RTLD_NOLOAD) != nullptr;
    const std::filesystem::path file = loaded ? temporary_copy(bundle) : bundle;
    void* image = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    const std::string reason = image ? "" : linker_reason(file);
    if (loaded) std::filesystem::remove(file);
    if (!image) throw LoadError(bundle.string() + ": no bundle that can be loaded (" + reason + ")");
    void* entry = dlsym(image, "REALPluginMain");
    if (!entry) throw LoadError(bundle.string() + ": no bundle, it has no entry point REALPluginMain");
    return reinterpret_cast<EntryPoint>(entry);
}

}  // namespace minihost
