#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "minihost/library/state.h"
#include "minihost/platform/images.h"

namespace minihost {
namespace {

void require_readable(const std::filesystem::path& bundle) {
    if (access(bundle.c_str(), R_OK) != 0) throw LoadError(bundle.string() + ": " + std::strerror(errno));
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(bundle, ignored))
        throw LoadError(bundle.string() + ": no regular file, so no bundle");
}

void* load_image(const std::filesystem::path& bundle) {
    try {
        return platform::load_fresh_image(bundle);
    } catch (const std::exception& error) {
        throw LoadError(bundle.string() + ": no bundle that can be loaded (" + error.what() + ")");
    }
}

}  // namespace

EntryPoint open_bundle(const std::filesystem::path& bundle) {
    require_readable(bundle);
    void* entry = platform::find_symbol(load_image(bundle), "REALPluginMain");
    if (!entry) throw LoadError(bundle.string() + ": no bundle, it has no entry point REALPluginMain");
    return reinterpret_cast<EntryPoint>(entry);
}

}  // namespace minihost
