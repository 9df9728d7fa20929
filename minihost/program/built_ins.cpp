// The functions and members that the language brings along: one row for each, its declaration beside what it
// does.
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstring>
#include <fstream>

#include "minihost/program/functions.h"
#include "minihost/program/names.h"
#include "minihost/program/picture.h"

namespace minihost {
namespace {

using Arguments = std::span<const Value>;

// Blocks

// The place of `count` bytes inside a block. An unknown size is not checked.
uint8_t* place(Runtime& runtime, const ObjectRef& self, const Value& offset, int64_t count) {
    if (!self) raise(runtime, "NilObjectException", "memoryblock is nil");
    auto* data = static_cast<uint8_t*>(runtime.host.block_data(self.get()));
    const int64_t first = number<int32_t>(offset);
    const int64_t size = runtime.host.block_size(self.get());
    if (!data || first < 0 || count < 0 || (size > 0 && first + count > size)) {
        raise(runtime, "OutOfBoundsException",
              "offset " + std::to_string(first) + ", length " + std::to_string(count) + ", of a block of " +
                  std::to_string(size) + " bytes");
    }
    return data + first;
}

template <class Number, class Result>
Value get_number(Runtime& runtime, const ObjectRef& self, Arguments arguments) {
    Number value;
    std::memcpy(&value, place(runtime, self, arguments[0], sizeof value), sizeof value);
    return Result(value);
}

template <class Number, class Result>
Value set_number(Runtime& runtime, const ObjectRef& self, Arguments arguments) {
    const auto value = Number(std::get<Result>(arguments[1]));
    std::memcpy(place(runtime, self, arguments[0], sizeof value), &value, sizeof value);
    return {};
}

template <class Number, class Result>
Callable accessor(const std::string& declaration) {
    return {parse_declaration(declaration), get_number<Number, Result>, set_number<Number, Result>};
}

Value block_size(Runtime& runtime, const ObjectRef& self, Arguments) {
    if (!self) raise(runtime, "NilObjectException", "memoryblock is nil");
    return runtime.host.block_size(self.get());
}

Value get_bytes(Runtime& runtime, const ObjectRef& self, Arguments arguments) {
    const int32_t length = number<int32_t>(arguments[1]);
    const uint8_t* bytes = place(runtime, self, arguments[0], length);
    return runtime.host.new_string({reinterpret_cast<const char*>(bytes), size_t(length)},
                                   kTextEncodingUnknown);
}

// Stores at most `length` bytes of the string; what is missing becomes zeros.
Value set_bytes(Runtime& runtime, const ObjectRef& self, Arguments arguments) {
    const int32_t length = number<int32_t>(arguments[1]);
    uint8_t* bytes = place(runtime, self, arguments[0], length);
    std::string text(bytes_of(runtime, arguments[2]));
    text.resize(size_t(length));
    std::copy(text.begin(), text.end(), bytes);
    return {};
}

Value new_block(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    ObjectRef block = runtime.host.new_block(number<int32_t>(arguments[0]));
    if (!block)
        raise(runtime, "OutOfMemoryException", "no block of " + show(runtime, arguments[0]) + " bytes");
    return block;
}

Value block_from_hex(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    std::string digits;
    for (const char c : bytes_of(runtime, arguments[0])) {
        if (c != ' ' && c != '\n') digits += c;
    }
    const bool valid = digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    if (!valid || digits.size() % 2 != 0)
        raise(runtime, "RuntimeException", "BlockFromHex takes pairs of hexadecimal digits");
    std::string bytes;
    for (size_t i = 0; i < digits.size(); i += 2) bytes += char(std::stoi(digits.substr(i, 2), nullptr, 16));
    return runtime.host.new_block(bytes);
}

// Files

Value read_block(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const std::filesystem::path path(bytes_of(runtime, arguments[0]));
    std::string bytes;
    try {
        bytes = read_file(path);
    } catch (const std::runtime_error& error) {
        raise(runtime, "IOException", error.what());
    }
    ObjectRef block = runtime.host.new_block(bytes);
    if (!block) raise(runtime, "OutOfMemoryException", "no block is large enough for " + path.string());
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
              "cannot write " + path.string() + ": how many bytes the block has is unknown");
    }
    return {data, size_t(size)};
}

void write_file(Runtime& runtime, const std::filesystem::path& path, std::string_view bytes) {
    std::error_code error;
    if (path.has_parent_path()) std::filesystem::create_directories(path.parent_path(), error);
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), std::ssize(bytes));
    file.close();
    if (!file) raise(runtime, "IOException", file_error("cannot write", path));
}

Value write_block(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const std::filesystem::path path(bytes_of(runtime, arguments[0]));
    write_file(runtime, path, contents(runtime, path, arguments[1]));
    return {};
}

Value write_picture(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const std::filesystem::path path(bytes_of(runtime, arguments[0]));
    const std::string_view samples = contents(runtime, path, arguments[1]);
    const auto width = number<int32_t>(arguments[2]);
    const auto height = number<int32_t>(arguments[3]);
    const int64_t pixels = int64_t(width) * height;
    const bool sized = width > 0 && height > 0 && std::ssize(samples) % pixels == 0;
    const int64_t samples_per_pixel = sized ? std::ssize(samples) / pixels : 0;
    if (samples_per_pixel < 1 || samples_per_pixel > 4) {
        raise(runtime, "IOException",
              "cannot write " + path.string() + ": " + std::to_string(samples.size()) +
                  " bytes are no 1 to 4 samples for each of " + std::to_string(width) + " x " +
                  std::to_string(height) + " pixels");
    }
    if ((width * samples_per_pixel + 1) * height > kLargestPicture) {
        raise(runtime, "IOException",
              "cannot write " + path.string() + ": " + std::to_string(width) + " x " +
                  std::to_string(height) + " pixels are too many for a picture");
    }
    const std::string file =
        png(reinterpret_cast<const uint8_t*>(samples.data()), width, height, int(samples_per_pixel));
    if (file.empty()) raise(runtime, "OutOfMemoryException", "no memory to write " + path.string());
    write_file(runtime, path, file);
    return {};
}

Value folder_item(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    return runtime.host.new_folder_item(bytes_of(runtime, arguments[0]));
}

std::filesystem::path path_of(Runtime& runtime, const ObjectRef& self) {
    if (!self) raise(runtime, "NilObjectException", "folderitem is nil");
    return runtime.host.path_of(self.get());
}

// Strings

uint32_t encoding_argument(Runtime& runtime, const Value& name) {
    const auto encoding = encoding_number(bytes_of(runtime, name));
    if (!encoding) raise(runtime, "RuntimeException", "unknown encoding " + in_quotes(show(runtime, name)));
    return *encoding;
}

uint32_t encoding_of(Runtime& runtime, const Value& string) {
    const StringRef& held = std::get<StringRef>(string);
    return held ? runtime.host.encoding_of(held.get()) : *encoding_number("UTF-8");
}

Value define_encoding(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    return runtime.host.new_string(bytes_of(runtime, arguments[0]), encoding_argument(runtime, arguments[1]));
}

Value convert_encoding(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const uint32_t encoding = encoding_argument(runtime, arguments[1]);
    const StringRef& string = std::get<StringRef>(arguments[0]);
    if (!string) return StringRef();
    const auto text = runtime.host.text_of(string.get(), encoding);
    if (!text) raise(runtime, "RuntimeException", "the text has no form in " + encoding_name(encoding));
    return runtime.host.new_string(*text, encoding);
}

bool is_utf8(Runtime& runtime, const Value& string) {
    return encoding_of(runtime, string) == *encoding_number("UTF-8");
}

bool continues_character(char c) { return (uint8_t(c) & 0xC0) == 0x80; }

// Characters of UTF-8 text; bytes of any other.
Value string_length(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const std::string_view bytes = bytes_of(runtime, arguments[0]);
    if (!is_utf8(runtime, arguments[0])) return int32_t(bytes.size());
    return int32_t(std::count_if(bytes.begin(), bytes.end(), [](char c) { return !continues_character(c); }));
}

std::string utf8(uint32_t code) {
    if (code < 0x80) return {char(code)};
    std::string rest;
    uint32_t limit = 0x40;  // of what fits the first byte
    for (; code >= limit; code >>= 6, limit >>= 1) rest.insert(rest.begin(), char(0x80 | (code & 0x3F)));
    return char(~(limit * 2 - 1) | code) + rest;
}

Value character(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const int32_t code = number<int32_t>(arguments[0]);
    if (code < 0 || code > 0x10FFFF) raise(runtime, "OutOfBoundsException", "there is no such character");
    return utf8_string(runtime, utf8(uint32_t(code)));
}

// The code of the first character of UTF-8 text; the first byte of any other; 0 for no text.
Value character_code(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const std::string_view bytes = bytes_of(runtime, arguments[0]);
    if (bytes.empty()) return int32_t{0};
    const auto first = uint8_t(bytes[0]);
    if (first < 0xC0 || !is_utf8(runtime, arguments[0])) return int32_t(first);
    int32_t code = first & (first < 0xE0 ? 0x1F : first < 0xF0 ? 0x0F : 0x07);
    for (size_t i = 1; i < bytes.size() && continues_character(bytes[i]); ++i)
        code = code << 6 | (bytes[i] & 0x3F);
    return code;
}

Value to_hex(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    std::array<char, 20> buffer{};
    const int64_t value = number<int64_t>(arguments[0]);
    const bool narrow = value < 0 && value >= std::numeric_limits<int32_t>::min();
    const auto bits = narrow ? uint64_t(uint32_t(value)) : uint64_t(value);
    std::snprintf(buffer.data(), buffer.size(), "%llX", static_cast<unsigned long long>(bits));
    return utf8_string(runtime, buffer.data());
}

// Numbers

template <double function(double)>
Value real(Runtime&, const ObjectRef&, Arguments arguments) {
    return function(std::get<double>(arguments[0]));
}

template <class Number>
Value absolute(Runtime&, const ObjectRef&, Arguments arguments) {
    const auto value = std::get<Number>(arguments[0]);
    if constexpr (std::is_integral_v<Number>) {
        using Bits = std::make_unsigned_t<Number>;
        return value < 0 ? Number(0 - Bits(value)) : value;
    } else {
        return std::fabs(value);
    }
}

template <class Number>
Value smaller(Runtime&, const ObjectRef&, Arguments arguments) {
    return std::min(std::get<Number>(arguments[0]), std::get<Number>(arguments[1]));
}

template <class Number>
Value larger(Runtime&, const ObjectRef&, Arguments arguments) {
    return std::max(std::get<Number>(arguments[0]), std::get<Number>(arguments[1]));
}

Value microseconds(Runtime&, const ObjectRef&, Arguments) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::micro>(now).count();
}

Value argument(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const int32_t index = number<int32_t>(arguments[0]);
    if (index < 1 || size_t(index) > runtime.arguments.size()) {
        raise(runtime, "OutOfBoundsException",
              "Args(" + std::to_string(index) + ") of " + std::to_string(runtime.arguments.size()) +
                  " arguments");
    }
    return utf8_string(runtime, runtime.arguments[size_t(index) - 1]);
}

// The table

Callable function(const char* declaration, Callable::Function get, Callable::Function set = {}) {
    return {parse_declaration(declaration), std::move(get), std::move(set)};
}

// The argument in the declared type: fractions are cut off, but no whole number is changed.
Value argument_of(const std::string& name, const Parameter& parameter, const Value& given) {
    if (!is_whole(parameter.type)) return convert(given, parameter.type);
    const auto* fraction = std::get_if<double>(&given);
    const auto value = convert_scalar(fraction ? Value(std::trunc(*fraction)) : given, parameter.type.kind);
    if (!value) throw CallError(misfit_text(name, parameter, given));
    return *value;
}

// A row whose function sees its arguments in the declared types. The assigned value has the result's already.
BuiltIn row(const char* owner, Callable callable) {
    const auto typed = [declaration =
                            callable.declaration](const Callable::Function& function) -> Callable::Function {
        if (!function) return {};
        return [declaration, function](Runtime& runtime, const ObjectRef& self, Arguments arguments) {
            std::vector<Value> values;
            for (size_t i = 0; i < arguments.size(); ++i) {
                const bool declared = i < declaration.parameters.size();
                values.push_back(declared
                                     ? argument_of(declaration.name, declaration.parameters[i], arguments[i])
                                     : arguments[i]);
            }
            return function(runtime, self, values);
        };
    };
    callable.get = typed(callable.get);
    callable.set = typed(callable.set);
    return {owner, std::move(callable)};
}

std::vector<BuiltIn> table() {
    const auto integer = [](auto value) { return Value(int32_t(value)); };
    return {
        row("", function("ReadFile(path as String) as MemoryBlock", read_block)),
        row("", function("WriteFile(path as String, block as MemoryBlock)", write_block)),
        row("", function("WritePicture(path as String, samples as MemoryBlock, width as Integer, height as "
                         "Integer)",
                         write_picture)),
        row("", function("BlockFromHex(digits as String) as MemoryBlock", block_from_hex)),
        row("", function("GetFolderItem(path as String) as FolderItem", folder_item)),
        row("", function("ArgCount as Integer",
                         [=](Runtime& runtime, auto&, auto) { return integer(runtime.arguments.size()); })),
        row("", function("Args(index as Integer) as String", argument)),
        row("", function("ScriptFolder as String",
                         [](Runtime& runtime, auto&, auto) {
                             return utf8_string(runtime, runtime.script_folder.string());
                         })),
        row("", function("Str(value as Variant) as String",
                         [](Runtime& runtime, auto&, Arguments arguments) {
                             return utf8_string(runtime, show(runtime, arguments[0]));
                         })),
        row("", function("Val(text as String) as Double",
                         [](Runtime& runtime, auto&, Arguments arguments) {
                             return Value(
                                 std::strtod(std::string(bytes_of(runtime, arguments[0])).c_str(), nullptr));
                         })),
        row("", function("Hex(value as Int64) as String", to_hex)),
        row("", function("Chr(code as Integer) as String", character)),
        row("", function("Asc(text as String) as Integer", character_code)),
        row("", function("Len(text as String) as Integer", string_length)),
        row("", function("LenB(text as String) as Integer",
                         [=](Runtime& runtime, auto&, Arguments arguments) {
                             return integer(bytes_of(runtime, arguments[0]).size());
                         })),
        row("", function("DefineEncoding(text as String, encoding as String) as String", define_encoding)),
        row("", function("ConvertEncoding(text as String, encoding as String) as String", convert_encoding)),
        row("", function("Encoding(text as String) as String",
                         [](Runtime& runtime, auto&, Arguments arguments) {
                             return utf8_string(runtime, encoding_name(encoding_of(runtime, arguments[0])));
                         })),
        row("", function("Sqrt(value as Double) as Double", real<std::sqrt>)),
        row("", function("Sin(angle as Double) as Double", real<std::sin>)),
        row("", function("Cos(angle as Double) as Double", real<std::cos>)),
        row("", function("Exp(value as Double) as Double", real<std::exp>)),
        row("", function("Log(value as Double) as Double", real<std::log>)),
        row("", function("Floor(value as Double) as Double", real<std::floor>)),
        row("", function("Abs(value as Integer) as Integer", absolute<int32_t>)),
        row("", function("Abs(value as Int64) as Int64", absolute<int64_t>)),
        row("", function("Abs(value as Double) as Double", absolute<double>)),
        row("", function("Min(a as Integer, b as Integer) as Integer", smaller<int32_t>)),
        row("", function("Min(a as Int64, b as Int64) as Int64", smaller<int64_t>)),
        row("", function("Min(a as Double, b as Double) as Double", smaller<double>)),
        row("", function("Max(a as Integer, b as Integer) as Integer", larger<int32_t>)),
        row("", function("Max(a as Int64, b as Int64) as Int64", larger<int64_t>)),
        row("", function("Max(a as Double, b as Double) as Double", larger<double>)),
        row("", function("Microseconds as Double", microseconds)),

        row("New", function("MemoryBlock(size as Integer) as MemoryBlock", new_block)),
        row("MemoryBlock", function("Size as Integer", block_size)),
        row("MemoryBlock", accessor<uint8_t, int32_t>("Byte(offset as Integer) as Integer")),
        row("MemoryBlock", accessor<int8_t, int32_t>("Int8Value(offset as Integer) as Integer")),
        row("MemoryBlock", accessor<uint8_t, int32_t>("UInt8Value(offset as Integer) as Integer")),
        row("MemoryBlock", accessor<int16_t, int32_t>("Int16Value(offset as Integer) as Integer")),
        row("MemoryBlock", accessor<uint16_t, int32_t>("UInt16Value(offset as Integer) as Integer")),
        row("MemoryBlock", accessor<int32_t, int32_t>("Int32Value(offset as Integer) as Integer")),
        row("MemoryBlock", accessor<uint32_t, int64_t>("UInt32Value(offset as Integer) as Int64")),
        row("MemoryBlock", accessor<int64_t, int64_t>("Int64Value(offset as Integer) as Int64")),
        row("MemoryBlock", accessor<uint64_t, uint64_t>("UInt64Value(offset as Integer) as UInt64")),
        row("MemoryBlock", accessor<float, double>("SingleValue(offset as Integer) as Double")),
        row("MemoryBlock", accessor<double, double>("DoubleValue(offset as Integer) as Double")),
        row("MemoryBlock",
            function("StringValue(offset as Integer, length as Integer) as String", get_bytes, set_bytes)),

        row("FolderItem", function("Name as String",
                                   [](Runtime& runtime, const ObjectRef& self, auto) {
                                       return utf8_string(runtime,
                                                          path_of(runtime, self).filename().string());
                                   })),
        row("FolderItem", function("AbsolutePath as String",
                                   [](Runtime& runtime, const ObjectRef& self, auto) {
                                       return utf8_string(
                                           runtime,
                                           std::filesystem::absolute(path_of(runtime, self)).string());
                                   })),
        row("FolderItem", function("Exists as Boolean",
                                   [](Runtime& runtime, const ObjectRef& self, auto) {
                                       std::error_code error;
                                       return Value(std::filesystem::exists(path_of(runtime, self), error));
                                   })),
    };
}

}  // namespace

const std::vector<BuiltIn>& built_ins() {
    static const std::vector<BuiltIn> rows = table();
    return rows;
}

}  // namespace minihost
