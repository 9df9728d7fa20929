// By way of UTF-16, and the system's code pages.
#include "minihost/platform/encodings.h"

#include <windows.h>

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace minihost::platform {
namespace {

using Bytes = std::optional<std::string>;
using Wide = std::optional<std::wstring>;

struct CodePage {
    std::string_view name;
    UINT number;
};

constexpr CodePage kCodePages[] = {
    {"MACINTOSH", 10000},   {"MAC-CYRILLIC", 10007}, {"MAC-CENTRALEUROPE", 10029},
    {"MAC-IS", 10079},      {"MACUKRAINIAN", 10017}, {"UTF-8", CP_UTF8},
    {"ISO-8859-10", 28600}, {"ISO-8859-13", 28603},  {"ISO-8859-14", 28604},
    {"ISO-8859-15", 28605}, {"ASCII", 20127},        {"GB18030", 54936},
    {"ISO-2022-JP", 50220}, {"EUC-JP", 20932},       {"EUC-CN", 936},
    {"EUC-KR", 949},        {"SHIFT_JIS", 932},      {"KOI8-R", 20866},
    {"BIG5", 950},          {"KOI8-U", 21866},
};

// Names that end with a number, to which another one is added.
constexpr CodePage kFamilies[] = {{"CP", 0}, {"WINDOWS-", 0}, {"ISO-8859-", 28590}};

// 0 when there is none.
UINT code_page(std::string_view name) {
    const auto* page = std::ranges::find(kCodePages, name, &CodePage::name);
    if (page != std::end(kCodePages)) return page->number;
    for (const CodePage& family : kFamilies) {
        UINT number = 0;
        if (!name.starts_with(family.name)) continue;
        std::from_chars(name.data() + family.name.size(), name.data() + name.size(), number);
        return family.number + number;
    }
    return 0;
}

// UTF-16 and UTF-32: the size of a unit, and whether its bytes are in the other order than the processor's.
struct Units {
    size_t size;
    bool swapped;
};

std::optional<Units> units(std::string_view name) {
    if (name == "UTF-16LE") return Units{2, false};
    if (name == "UTF-16BE") return Units{2, true};
    if (name == "UTF-32LE") return Units{4, false};
    if (name == "UTF-32BE") return Units{4, true};
    return std::nullopt;
}

constexpr uint32_t kFirstHigh = 0xD800;
constexpr uint32_t kFirstLow = 0xDC00;
constexpr uint32_t kAfterLow = 0xE000;
constexpr uint32_t kFirstOfPair = 0x10000;
constexpr uint32_t kLast = 0x10FFFF;

bool is_high(wchar_t unit) { return unit >= kFirstHigh && unit < kFirstLow; }
bool is_low(wchar_t unit) { return unit >= kFirstLow && unit < kAfterLow; }

bool is_text(std::wstring_view text) {
    for (size_t i = 0; i < text.size(); ++i) {
        if (is_low(text[i])) return false;
        if (is_high(text[i]) && (++i == text.size() || !is_low(text[i]))) return false;
    }
    return true;
}

Wide from_units(std::string_view bytes, Units units) {
    if (bytes.size() % units.size != 0) return std::nullopt;
    std::wstring text;
    for (size_t at = 0; at < bytes.size(); at += units.size) {
        uint32_t code = 0;
        for (size_t i = 0; i < units.size; ++i) {
            const size_t byte = units.swapped ? i : units.size - 1 - i;
            code = code << 8 | static_cast<unsigned char>(bytes[at + byte]);
        }
        if (code > kLast || (units.size == 4 && code >= kFirstHigh && code < kAfterLow)) return std::nullopt;
        if (code >= kFirstOfPair) {
            text += wchar_t(kFirstHigh + ((code - kFirstOfPair) >> 10));
            code = kFirstLow + (code & 0x3FF);
        }
        text += wchar_t(code);
    }
    return text;
}

std::string to_units(std::wstring_view text, Units units) {
    std::string bytes;
    for (size_t at = 0; at < text.size(); ++at) {
        uint32_t code = text[at];
        if (units.size == 4 && is_high(text[at])) {
            code = kFirstOfPair + ((code - kFirstHigh) << 10) + (text[at + 1] - kFirstLow);
            ++at;
        }
        for (size_t i = 0; i < units.size; ++i) {
            const size_t byte = units.swapped ? units.size - 1 - i : i;
            bytes += char(code >> (8 * byte));
        }
    }
    return bytes;
}

Wide from_page(std::string_view bytes, UINT page) {
    if (bytes.empty()) return std::wstring();
    const auto convert = [&](DWORD flags) -> Wide {
        std::wstring text(bytes.size() * 2, L'\0');
        const int count =
            MultiByteToWideChar(page, flags, bytes.data(), int(bytes.size()), text.data(), int(text.size()));
        if (count == 0) return std::nullopt;
        text.resize(size_t(count));
        return text;
    };
    const Wide text = convert(MB_ERR_INVALID_CHARS);
    // Some code pages find no fault with any bytes.
    return !text && GetLastError() == ERROR_INVALID_FLAGS ? convert(0) : text;
}

// What has no form becomes something else, which is not what it was when it is read again.
Bytes to_page(std::wstring_view text, UINT page) {
    if (text.empty()) return std::string();
    std::string bytes(text.size() * 8 + 16, '\0');
    const int count = WideCharToMultiByte(page, 0, text.data(), int(text.size()), bytes.data(),
                                          int(bytes.size()), nullptr, nullptr);
    bytes.resize(size_t(count));
    if (count == 0 || from_page(bytes, page) != text) return std::nullopt;
    return bytes;
}

bool is_ascii(auto text) {
    return std::ranges::all_of(text, [](auto c) { return c >= 0 && c < 0x80; });
}

Wide decoded(std::string_view bytes, std::string_view from) {
    if (const auto form = units(from)) return from_units(bytes, *form);
    if (from == "ASCII" && !is_ascii(bytes)) return std::nullopt;
    const UINT page = code_page(from);
    return page == 0 ? std::nullopt : from_page(bytes, page);
}

Bytes encoded(std::wstring_view text, std::string_view to) {
    if (const auto form = units(to)) return to_units(text, *form);
    if (to == "ASCII" && !is_ascii(text)) return std::nullopt;
    const UINT page = code_page(to);
    return page == 0 ? std::nullopt : to_page(text, page);
}

}  // namespace

std::optional<std::string> convert(std::string_view bytes, const char* from, const char* to) {
    const Wide text = decoded(bytes, from);
    return text && is_text(*text) ? encoded(*text, to) : std::nullopt;
}

}  // namespace minihost::platform
