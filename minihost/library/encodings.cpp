#include "minihost/library/encodings.h"

#include <algorithm>
#include <bit>
#include <cstdio>

#include "minihost/library/host.h"
#include "minihost/library/names.h"
#include "minihost/platform/encodings.h"

namespace minihost {
namespace {

static_assert(std::endian::native == std::endian::little, "UTF-16 and UTF-32 are in the processor's order");

struct Encoding {
    uint32_t number;
    const char* name;
    const char* system_name;
};

constexpr Encoding kEncodings[] = {
    {kTextEncodingMacRoman, "MacRoman", "MACINTOSH"},
    {0x0007, "MacCyrillic", "MAC-CYRILLIC"},
    {0x001D, "MacCentralEurope", "MAC-CENTRALEUROPE"},
    {0x0025, "MacIcelandic", "MAC-IS"},
    {0x0098, "MacUkrainian", "MACUKRAINIAN"},
    {0x0100, "UTF-16", "UTF-16LE"},
    {0x08000100, "UTF-8", "UTF-8"},
    {0x0C000100, "UTF-32", "UTF-32LE"},
    {0x10000100, "UTF-16BE", "UTF-16BE"},
    {0x14000100, "UTF-16LE", "UTF-16LE"},
    {0x18000100, "UTF-32BE", "UTF-32BE"},
    {0x1C000100, "UTF-32LE", "UTF-32LE"},
    {0x0201, "ISOLatin1", "ISO-8859-1"},
    {0x0202, "ISOLatin2", "ISO-8859-2"},
    {0x0203, "ISOLatin3", "ISO-8859-3"},
    {0x0204, "ISOLatin4", "ISO-8859-4"},
    {0x0205, "ISOLatinCyrillic", "ISO-8859-5"},
    {0x0206, "ISOLatinArabic", "ISO-8859-6"},
    {0x0207, "ISOLatinGreek", "ISO-8859-7"},
    {0x0208, "ISOLatinHebrew", "ISO-8859-8"},
    {0x0209, "ISOLatin5", "ISO-8859-9"},
    {0x020A, "ISOLatin6", "ISO-8859-10"},
    {0x020D, "ISOLatin7", "ISO-8859-13"},
    {0x020E, "ISOLatin8", "ISO-8859-14"},
    {0x020F, "ISOLatin9", "ISO-8859-15"},
    {0x0400, "DOSLatinUS", "CP437"},
    {0x0410, "DOSLatin1", "CP850"},
    {0x0412, "DOSLatin2", "CP852"},
    {0x0413, "DOSCyrillic", "CP855"},
    {0x0419, "DOSRussian", "CP866"},
    {0x0420, "DOSJapanese", "CP932"},
    {0x0421, "DOSChineseSimplified", "CP936"},
    {0x0422, "DOSKorean", "CP949"},
    {0x0423, "DOSChineseTraditional", "CP950"},
    {0x0500, "WindowsLatin1", "WINDOWS-1252"},
    {0x0501, "WindowsLatin2", "WINDOWS-1250"},
    {0x0502, "WindowsCyrillic", "WINDOWS-1251"},
    {0x0503, "WindowsGreek", "WINDOWS-1253"},
    {0x0504, "WindowsLatin5", "WINDOWS-1254"},
    {0x0505, "WindowsHebrew", "WINDOWS-1255"},
    {0x0506, "WindowsArabic", "WINDOWS-1256"},
    {0x0507, "WindowsBaltic", "WINDOWS-1257"},
    {0x0508, "WindowsVietnamese", "WINDOWS-1258"},
    {kTextEncodingUS_ASCII, "US-ASCII", "ASCII"},
    {0x0632, "GB18030", "GB18030"},
    {0x0820, "ISO-2022-JP", "ISO-2022-JP"},
    {0x0920, "EUC-JP", "EUC-JP"},
    {0x0930, "EUC-CN", "EUC-CN"},
    {0x0931, "EUC-TW", "EUC-TW"},
    {0x0940, "EUC-KR", "EUC-KR"},
    {0x0A01, "ShiftJIS", "SHIFT_JIS"},
    {0x0A02, "KOI8-R", "KOI8-R"},
    {0x0A03, "Big5", "BIG5"},
    {0x0A08, "KOI8-U", "KOI8-U"},
};

const Encoding* find_encoding(uint32_t number) {
    const auto* found = std::ranges::find(kEncodings, number, &Encoding::number);
    return found == std::end(kEncodings) ? nullptr : found;
}

// Without the signs that people put or leave out: "UTF-8" and "utf8", "MacRoman" and "Mac Roman".
std::string plain_name(std::string_view name) {
    std::string plain(name);
    std::erase_if(plain, [](char c) { return c == '-' || c == '_' || c == ' '; });
    return plain;
}

}  // namespace

std::optional<std::string> convert_text(std::string_view bytes, uint32_t from, uint32_t to) {
    if (to == kTextEncodingUnknown || to == from) return std::string(bytes);
    const Encoding* source = find_encoding(from);
    const Encoding* target = find_encoding(to);
    if (!source || !target) return std::nullopt;
    return platform::convert(bytes, source->system_name, target->system_name);
}

std::optional<uint32_t> encoding_number(std::string_view name) {
    if (name.empty()) return kTextEncodingUnknown;
    const std::string wanted = plain_name(name);
    for (const Encoding& encoding : kEncodings) {
        if (same_name(plain_name(encoding.name), wanted)) return encoding.number;
    }
    for (const Encoding& encoding : kEncodings) {
        if (same_name(plain_name(encoding.system_name), wanted)) return encoding.number;
    }
    return std::nullopt;
}

std::string encoding_name(uint32_t number) {
    if (number == kTextEncodingUnknown) return "";
    if (const Encoding* encoding = find_encoding(number)) return encoding->name;
    char text[24];
    std::snprintf(text, sizeof text, "encoding 0x%04X", static_cast<unsigned>(number));
    return text;
}

}  // namespace minihost
