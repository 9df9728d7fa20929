// Folder items over real paths, and their form as a file specification: the volume, the id of a directory,
// and a name in it. All files are on one volume; a directory gets its id when it is first written down.
//
// A name that does not fit, and the root directory, which has none, are written down as a directory
// with an empty name.
#include <algorithm>
#include <cstring>

#include "minihost/library/state.h"
#include "minihost/platform/files.h"

namespace minihost {
namespace {

constexpr int16_t kVolume = -1;
constexpr int32_t kFirstDirectory = 2;
constexpr size_t kLongestName = 63;  // bytes

// In the processor's byte order: the volume, the directory's id, and the name after its length.
constexpr size_t kVolumeAt = 0;
constexpr size_t kDirectoryAt = 2;
constexpr size_t kNameAt = 6;
static_assert(kNameAt + 1 + kLongestName == sizeof(FSSpec));

template <class Field>
Field field_at(const FSSpec& spec, size_t offset) {
    Field field;
    std::memcpy(&field, spec.bytes + offset, sizeof field);
    return field;
}

std::filesystem::path normal(const std::filesystem::path& path) {
    // An empty path is the current directory.
    const auto full = std::filesystem::absolute(path.empty() ? "." : path).lexically_normal();
    return full.has_filename() ? full : full.parent_path();
}

// Not the way to it.
bool is_name(const std::string& name) {
    return name != "." && name != ".." && name.find('\0') == name.npos &&
           platform::path_named(name).filename().string() == name;
}

}  // namespace

REALobject Host::State::add_folder_item(const std::filesystem::path& path) {
    std::filesystem::path full = normal(path);
    const REALobject item = add_object(*folder_item);
    if (Object* object = live(item)) object->path = std::move(full);
    return item;
}

FSSpec Host::State::spec_of(const std::filesystem::path& path) {
    std::string name = path.filename().string();
    const bool has_name = !name.empty() && name.size() <= kLongestName;
    const auto& directory = has_name ? path.parent_path() : path;
    if (!has_name) name.clear();

    auto known = std::ranges::find(directories, directory);
    if (known == directories.end()) known = directories.insert(known, directory);
    const auto id = int32_t(known - directories.begin()) + kFirstDirectory;

    FSSpec spec = {};
    std::memcpy(spec.bytes + kVolumeAt, &kVolume, sizeof kVolume);
    std::memcpy(spec.bytes + kDirectoryAt, &id, sizeof id);
    spec.bytes[kNameAt] = uint8_t(name.size());
    std::memcpy(spec.bytes + kNameAt + 1, name.data(), name.size());
    return spec;
}

std::optional<std::filesystem::path> Host::State::path_of(const FSSpec& spec) const {
    const int64_t index = int64_t(field_at<int32_t>(spec, kDirectoryAt)) - kFirstDirectory;
    const size_t length = spec.bytes[kNameAt];
    if (field_at<int16_t>(spec, kVolumeAt) != kVolume || index < 0 || index >= std::ssize(directories) ||
        length > kLongestName) {
        return std::nullopt;
    }
    const std::string name(reinterpret_cast<const char*>(spec.bytes) + kNameAt + 1, length);
    if (!is_name(name)) return std::nullopt;
    const auto& directory = directories[size_t(index)];
    return name.empty() ? directory : directory / platform::path_named(name);
}

ObjectRef Host::new_folder_item(const std::filesystem::path& path) {
    return ObjectRef::adopt(state_->add_folder_item(path));
}

std::filesystem::path Host::path_of(REALobject folder_item) const {
    const Object* object = state_->live(folder_item);
    if (!object || object->type != state_->folder_item) throw CallError("the object is no live FolderItem");
    return object->path;
}

}  // namespace minihost
