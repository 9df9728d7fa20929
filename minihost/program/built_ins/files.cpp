#include "minihost/program/files.h"

#include <algorithm>
#include <utility>

#include "minihost/program/built_ins/table.h"
#include "minihost/program/names.h"
#include "minihost/program/picture.h"
#include "minihost/program/sound.h"

namespace minihost {
namespace {

namespace fs = std::filesystem;

constexpr const char* kNoPicture = "it is no PNG, PPM or PGM picture of 8 or 16 bits a sample";

fs::path path_argument(Runtime& runtime, const Value& text) {
    const std::string_view path = bytes_of(runtime, text);
    if (path.find('\0') != path.npos)
        throw FileError("a path has no zero bytes, found " + in_quotes(printable(path)));
    return platform::path_named(path);
}

// What the file has left, up to the size of the block, which the script gets if that is all of it.
Value filled(Runtime& runtime, const ObjectRef& block, InputFile& file) {
    auto* data = static_cast<char*>(runtime.host.block_data(block.get()));
    const auto size = size_t(runtime.host.block_size(block.get()));
    const size_t count = file.read({data, size});
    return count == size ? block : runtime.host.new_block(std::string_view(data, count));
}

void check_range(Runtime& runtime, int64_t offset, int64_t length) {
    if (offset >= 0 && length >= 0) return;
    raise(runtime, "OutOfBoundsException",
          "offset " + std::to_string(offset) + ", length " + std::to_string(length) + ", of a file");
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
    return size ? filled(runtime, block, file) : block;
}

Value read_part(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const fs::path path = path_argument(runtime, arguments[0]);
    const auto offset = std::get<int64_t>(arguments[1]);
    const int32_t length = integer(arguments[2]);
    check_range(runtime, offset, length);
    InputFile file(path);
    file.skip(offset);
    // A file ends where it ends, however much is wanted.
    const auto rest = file.size() ? std::max<int64_t>(0, *file.size() - offset) : length;
    const auto block = runtime.host.new_block(int32_t(std::min<int64_t>(rest, length)));
    if (!block) raise(runtime, "OutOfMemoryException", "no block of " + std::to_string(length) + " bytes");
    return filled(runtime, block, file);
}

Value read_into(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const auto& block = std::get<ObjectRef>(arguments[0]);
    const fs::path path = path_argument(runtime, arguments[1]);
    const auto offset = std::get<int64_t>(arguments[2]);
    const auto length = std::get<int64_t>(arguments[3]);
    check_range(runtime, offset, length);
    if (!block) raise(runtime, "NilObjectException", "memoryblock is nil");
    auto* data = static_cast<char*>(runtime.host.block_data(block.get()));
    const int64_t size = runtime.host.block_size(block.get());
    if (!data || (size > 0 && length > size) || std::cmp_greater(length, SIZE_MAX)) {
        raise(runtime, "OutOfBoundsException",
              "length " + std::to_string(length) + ", of a block of " + std::to_string(size) + " bytes");
    }
    InputFile file(path);
    file.skip(offset);
    return int64_t(file.read({data, size_t(length)}));
}

// A picture's file, as it is.
std::string picture_file(Runtime& runtime, const Value& path) {
    return InputFile(path_argument(runtime, path)).read_rest();
}

PictureSize size_of_picture(Runtime& runtime, const Value& path) {
    const auto size = picture_size(picture_file(runtime, path));
    if (!size) throw FileError("cannot read " + printable(show(runtime, path)) + ": " + kNoPicture);
    return *size;
}

Value picture_width(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    return size_of_picture(runtime, arguments[0]).width;
}

Value picture_height(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    return size_of_picture(runtime, arguments[0]).height;
}

Value read_picture(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const int32_t samples = integer(arguments[1]);
    if (samples < 1 || samples > 4) {
        raise(runtime, "OutOfBoundsException", "a pixel has 1 to 4 samples, got " + std::to_string(samples));
    }
    const auto picture = picture_samples(picture_file(runtime, arguments[0]), samples);
    if (!picture)
        throw FileError("cannot read " + printable(show(runtime, arguments[0])) + ": " + kNoPicture);
    ObjectRef block = runtime.host.new_block(*picture);
    if (!block) raise(runtime, "OutOfMemoryException", "there is no memory for the picture");
    return block;
}

Sound sound_in(Runtime& runtime, const Value& path) {
    auto sound = sound_of(InputFile(path_argument(runtime, path)).read_rest());
    if (!sound) throw FileError("cannot read " + printable(show(runtime, path)) + ": it is no sound");
    return std::move(*sound);
}

Value sound_channels(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    return sound_in(runtime, arguments[0]).channels;
}

Value sound_rate(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    return sound_in(runtime, arguments[0]).rate;
}

Value read_sound(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    ObjectRef block = runtime.host.new_block(sound_in(runtime, arguments[0]).samples);
    if (!block) raise(runtime, "OutOfMemoryException", "there is no memory for the sound");
    return block;
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

Value write_sound(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const fs::path path = path_argument(runtime, arguments[0]);
    const std::string_view samples = contents(runtime, path, arguments[1]);
    const int32_t channels = integer(arguments[2]);
    const int32_t rate = integer(arguments[3]);
    const bool whole = channels > 0 && std::ssize(samples) % (int64_t(channels) * 2) == 0;
    const auto file = whole ? wav(samples, channels, rate) : std::nullopt;
    if (!file) {
        throw FileError("cannot write " + printable(path.string()) + ": " + std::to_string(samples.size()) +
                        " bytes are no 16-bit samples of " + std::to_string(channels) + " channels, " +
                        std::to_string(rate) + " a second");
    }
    write_file(path, *file);
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
        {"ReadFile(path as String, offset as Int64, length as Integer) as MemoryBlock", read_part},
        {"ReadInto(block as MemoryBlock, path as String, offset as Int64, length as Int64) as Int64",
         read_into},
        {"WriteFile(path as String, block as MemoryBlock)", write_block},
        {"WritePicture(path as String, samples as MemoryBlock, width as Integer, height as Integer)",
         write_picture},
        {"ReadPicture(path as String, samples as Integer) as MemoryBlock", read_picture},
        {"PictureWidth(path as String) as Integer", picture_width},
        {"PictureHeight(path as String) as Integer", picture_height},
        {"ReadSound(path as String) as MemoryBlock", read_sound},
        {"SoundChannels(path as String) as Integer", sound_channels},
        {"SoundRate(path as String) as Integer", sound_rate},
        {"WriteSound(path as String, samples as MemoryBlock, channels as Integer, rate as Integer)",
         write_sound},
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
