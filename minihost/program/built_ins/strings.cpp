#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "minihost/program/built_ins/table.h"
#include "minihost/program/names.h"
#include "minihost/program/number_format.h"

namespace minihost {
namespace {

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
    const int32_t code = integer(arguments[0]);
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
    const auto value = std::get<int64_t>(arguments[0]);
    const bool narrow = value < 0 && value >= std::numeric_limits<int32_t>::min();
    const auto bits = narrow ? uint64_t(uint32_t(value)) : uint64_t(value);
    std::snprintf(buffer.data(), buffer.size(), "%llX", static_cast<unsigned long long>(bits));
    return utf8_string(runtime, buffer.data());
}

Value text_of(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    return utf8_string(runtime, show(runtime, arguments[0]));
}

Value formatted(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    return utf8_string(runtime,
                       format_number(std::get<double>(arguments[0]), bytes_of(runtime, arguments[1])));
}

Value number_in(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    return std::strtod(std::string(bytes_of(runtime, arguments[0])).c_str(), nullptr);
}

Value byte_length(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    return int32_t(bytes_of(runtime, arguments[0]).size());
}

Value name_of_encoding(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    return utf8_string(runtime, encoding_name(encoding_of(runtime, arguments[0])));
}

}  // namespace

Rows string_functions() {
    return {
        {"Str(value as Variant) as String", text_of},
        {"Format(number as Double, pattern as String) as String", formatted},
        {"Val(text as String) as Double", number_in},
        {"Hex(value as Int64) as String", to_hex},
        {"Chr(code as Integer) as String", character},
        {"Asc(text as String) as Integer", character_code},
        {"Len(text as String) as Integer", string_length},
        {"LenB(text as String) as Integer", byte_length},
        {"DefineEncoding(text as String, encoding as String) as String", define_encoding},
        {"ConvertEncoding(text as String, encoding as String) as String", convert_encoding},
        {"Encoding(text as String) as String", name_of_encoding},
    };
}

}  // namespace minihost
