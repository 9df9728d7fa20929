#include "minihost/program/json.h"

#include <cmath>
#include <cstdio>

#include "minihost/program/names.h"

namespace minihost {
namespace {

// The bytes of the character that begins here; 0 when there is none.
size_t character_length(std::string_view text) {
    const auto first = uint8_t(text[0]);
    const size_t length = first < 0x80   ? 1
                          : first < 0xC2 ? 0
                          : first < 0xE0 ? 2
                          : first < 0xF0 ? 3
                          : first < 0xF5 ? 4
                                         : 0;
    if (text.size() < length) return 0;
    for (size_t i = 1; i < length; ++i) {
        if ((uint8_t(text[i]) & 0xC0) != 0x80) return 0;
    }
    // Too long a form, a half of a pair, or beyond the last character.
    const auto second = length > 2 ? uint8_t(text[1]) : uint8_t(0x80);
    const bool valid = !(first == 0xE0 && second < 0xA0) && !(first == 0xED && second > 0x9F) &&
                       !(first == 0xF0 && second < 0x90) && !(first == 0xF4 && second > 0x8F);
    return valid ? length : 0;
}

std::string hex(const Host& host, REALobject block) {
    const int32_t size = host.block_size(block);
    const auto* bytes = static_cast<const uint8_t*>(host.block_data(block));
    std::string result;
    for (int32_t i = 0; bytes && i < size; ++i) {
        for (const int digit : {bytes[i] >> 4, bytes[i] & 15}) result.push_back("0123456789abcdef"[digit]);
    }
    return result;
}

std::string json_of(Runtime& runtime, const Value& value) {
    const auto* object = std::get_if<ObjectRef>(&value);
    if (std::holds_alternative<std::monostate>(value) || (object && !*object)) return "null";
    if (const auto* truth = std::get_if<bool>(&value)) return *truth ? "true" : "false";
    if (const auto* real = std::get_if<double>(&value); real && !std::isfinite(*real)) return "null";
    if (object && runtime.host.is_a(object->get(), "MemoryBlock"))
        return json_string(hex(runtime.host, object->get()));
    const std::string text = show(runtime, value);
    const bool number = std::holds_alternative<int32_t>(value) || std::holds_alternative<int64_t>(value) ||
                        std::holds_alternative<uint64_t>(value) || std::holds_alternative<double>(value);
    return number ? text : json_string(text);
}

}  // namespace

std::string json_string(std::string_view text) {
    std::string result;
    result.push_back('"');
    while (!text.empty()) {
        const size_t length = character_length(text);
        const char c = text[0];
        if (length == 0) {
            result.append("\\ufffd");
        } else if (c == '"' || c == '\\') {
            result.push_back('\\');
            result.push_back(c);
        } else if (uint8_t(c) < ' ') {
            char code[8];
            std::snprintf(code, sizeof code, "\\u%04x", unsigned(c));
            result.append(code);
        } else {
            result.append(text.substr(0, length));
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    result.push_back('"');
    return result;
}

std::string json(Runtime& runtime, std::span<const Value> values) {
    if (values.size() == 1) return json_of(runtime, values[0]);
    std::string list;
    list.push_back('[');
    for (const Value& value : values) {
        if (list.size() > 1) list.append(", ");
        list.append(json_of(runtime, value));
    }
    list.push_back(']');
    return list;
}

}  // namespace minihost
