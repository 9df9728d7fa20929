#include "minihost/program/files.h"

#include "minihost/program/built_ins/table.h"
#include "minihost/program/names.h"
#include "minihost/program/picture.h"

namespace minihost {
namespace {

namespace fs = std::filesystem;

fs::path path_argument(Runtime& runtime, const Value& text) {
    const std::string_view path = bytes_of(runtime, text);
    if (path.find('\0') != path.npos)
        throw FileError("a path has no zero bytes, found " + in_quotes(printable(path)));
    return path;
}

Value read_file(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const fs::path path = path_argument(runtime, arguments[0]);
    InputFile file(path);
    const auto size = file.size();
    if (size > kLargestBlock) file.fail_too_large();
    ObjectRef block =
        size ? runtime.host.new_block(int32_t(*size)) : runtime.host.new_block(file.read_rest());
    if (!block) {
        raise(runtime, "OutOfMemoryException",
              "there is no memory for " + printable(path.string()) +
                  (size ? ", " + std::to_string(*size) + " bytes" : ""));
    }
    if (!size) return block;
    auto* data = static_cast<char*>(runtime.host.block_data(block.get()));
    const size_t count = file.read({data, size_t(*size)});
    return count == size_t(*size) ? block : runtime.host.new_block(std::string_view(data, count));
}

// The bytes of a block that is to be written.
std::string_view contents(Runtime& runtime, const std::filesystem::path& path, const Value& value) {
    const ObjectRef& block = std::get<ObjectRef>(value);
    if (!block) raise(runtime, "NilObjectException", "memoryblock is nil");
    const int32_t size = runtime.host.block_size(block.get());
    const auto* data = static_cast<const char*>(runtime.host.block_data(block.get()));
    if (size < 0 || (size == 0 && data)) {
        raise(runtime, "IOException",
              "cannot write " + printable(path.string()) + ": how many bytes the block has is unknown");
    }
    return {data, size_t(size)};
}

Value write_block(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const fs::path path = path_argument(runtime, arguments[0]);
    write_file(path, contents(runtime, path, arguments[1]));
    return {};
}

Value write_picture(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const fs::path path = path_argument(runtime, arguments[0]);
    const std::string_view samples = contents(runtime, path, arguments[1]);
    const int32_t width = integer(arguments[2]);
    const int32_t height = integer(arguments[3]);
    const auto fail = [&](const std::string& why) {
        throw FileError("cannot write " + printable(path.string()) + ": " + why);
    };
    const std::string size = std::to_string(width) + " x " + std::to_string(height) + " pixels";
    const int64_t pixels = int64_t(width) * height;
    const bool sized = width > 0 && height > 0 && std::ssize(samples) % pixels == 0;
    const int64_t samples_per_pixel = sized ? std::ssize(samples) / pixels : 0;
    if (samples_per_pixel < 1 || samples_per_pixel > 4) {
        fail(std::to_string(samples.size()) + " bytes are no 1 to 4 samples for each of " + size);
    }
    if ((width * samples_per_pixel + 1) * height > kLargestPicture)
        fail(size + " are too many for a picture");
    write_file(path,
               png(reinterpret_cast<const uint8_t*>(samples.data()), width, height, int(samples_per_pixel)));
    return {};
}

Value folder_item(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    return runtime.host.new_folder_item(path_argument(runtime, arguments[0]));
}

fs::path path_of(Runtime& runtime, const ObjectRef& self) {
    if (!self) raise(runtime, "NilObjectException", "folderitem is nil");
    return runtime.host.path_of(self.get());
}

Value name(Runtime& runtime, const ObjectRef& self, Arguments) {
    return utf8_string(runtime, path_of(runtime, self).filename().string());
}

Value absolute_path(Runtime& runtime, const ObjectRef& self, Arguments) {
    return utf8_string(runtime, fs::absolute(path_of(runtime, self)).string());
}

Value exists(Runtime& runtime, const ObjectRef& self, Arguments) {
    std::error_code error;
    return fs::exists(path_of(runtime, self), error);
}

}  // namespace

Rows file_functions() {
    return {
        {"ReadFile(path as String) as MemoryBlock", read_file},
        {"WriteFile(path as String, block as MemoryBlock)", write_block},
        {"WritePicture(path as String, samples as MemoryBlock, width as Integer, height as Integer)",
         write_picture},
        {"GetFolderItem(path as String) as FolderItem", folder_item},
    };
}

Rows folder_item_members() {
    return {
        {"Name as String", name},
        {"AbsolutePath as String", absolute_path},
        {"Exists as Boolean", exists},
    };
}

}  // namespace minihost
