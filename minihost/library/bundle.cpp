#include <cerrno>
#include <cstring>

#include "minihost/library/state.h"
#include "minihost/platform/files.h"
#include "minihost/platform/images.h"

namespace minihost {
namespace {

void require_readable(const std::filesystem::path& bundle) {
    std::error_code ignored;
    const auto status = std::filesystem::status(bundle, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        throw LoadError(bundle.string() + ": no regular file, so no bundle");
    if (!platform::open_file(bundle, "rb")) throw LoadError(bundle.string() + ": " + std::strerror(errno));
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
