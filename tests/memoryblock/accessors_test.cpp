// Strings, four-character codes and file specifications in blocks.
#include <algorithm>
#include <optional>

#include "tests/support/bundle_test.h"

using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

const uint32_t kUtf16 = *minihost::encoding_number("UTF-16");

class AccessorsTest : public MemberTest {
 protected:
    // A string that a member returned: its encoding and its bytes; nothing for nil.
    std::optional<std::pair<uint32_t, std::string>> string(const ObjectRef& block, const char* member,
                                                           std::vector<Value> arguments) {
        const auto string = call_for<StringRef>(block, member, std::move(arguments));
        if (!string) return std::nullopt;
        return std::pair(host().encoding_of(string.get()), std::string(host().bytes_of(string.get())));
    }

    // Each way in which a host hands out a string's bytes.
    static std::vector<Options> hosts() {
        return {{},
                {.without = {"PluginGetStringData", "PluginDisposeStringData"}},
                {.version = 2013.0},
                {.version = 2012.0},
                {.version = 2011.0},
                {.version = std::nullopt}};
    }
};

TEST_F(AccessorsTest, StringsAreCutAtTheEndOfTheBlock) {
    for (const auto side : GuardedBytes::kBothSides) {
        GuardedBytes memory(hex("41 00 7f 42 e9 43 44 45 80"), side);
        const std::string all(memory.bytes().begin(), memory.bytes().end());
        for (const int32_t offset : extremes(9)) {
            for (const int32_t count : extremes(9)) {
                SCOPED_TRACE(testing::Message() << count << " bytes from " << offset);
                const auto found = string(view(memory), "GetStringZOR", {offset, count});
                ASSERT_EQ(found.has_value(), offset >= 0 && offset < 9 && count > 0);
                if (!found) continue;
                const std::string part = all.substr(size_t(offset), size_t(count));
                const bool ascii = std::ranges::all_of(part, [](char c) { return uint8_t(c) < 0x80; });
                ASSERT_EQ(*found, std::pair(ascii ? kTextEncodingUS_ASCII : kTextEncodingUnknown, part));
            }
        }
        EXPECT_EQ(string(view(memory, -1), "GetStringZOR", {1, 2}),
                  std::pair(kTextEncodingUS_ASCII, "\0\x7F"s));
    }
}

TEST_F(AccessorsTest, StringsAreStoredAsTheyAreUpToTheEndOfTheBlock) {
    for (const Options& options : hosts()) {
        start(options);
        Random random;
        for (const std::string_view stored : {""sv, "a"sv, "\xC3\xA9\0b"sv, "more than nine"sv}) {
            for (const int32_t offset : extremes(9)) {
                for (const int32_t size : {9, 0}) {
                    if (size == 0 && (offset > 9 || offset + std::ssize(stored) > 9)) continue;
                    GuardedBytes memory(9, GuardedBytes::kEnd, random);
                    auto expected = memory.copy();
                    if (offset >= 0 && offset < 9) {
                        std::ranges::copy(stored.substr(0, size_t(9 - offset)), expected.begin() + offset);
                    }
                    call(view(memory, size), "SetStringZOR", {text(stored, kUtf8), offset});
                    ASSERT_TRUE(same_bytes(memory.bytes(), expected)) << '"' << stored << "\" at " << offset;
                }
            }
        }
        const ObjectRef memory = block("abc");
        call(memory, "SetStringZOR", {StringRef(), 0});
        EXPECT_EQ(bytes(memory), hex("61 62 63"));
    }
}

TEST_F(AccessorsTest, CodesLieInTheBlockWithTheirLastCharacterFirst) {
    struct {
        std::string_view value;
        uint32_t encoding;
        const char* stored;
    } const cases[] = {
        {"TEXT", kTextEncodingUS_ASCII, "54 58 45 54"},
        {"wxyz.", kUtf8, "7a 79 78 77"},
        {"\xC3\xA9xyz", kUtf8, "7a 79 78 8e"},
        {"w\0x\0y\0z\0"sv, kUtf16, "7a 79 78 77"},
        {"wxyz", kTextEncodingUnknown, "7a 79 78 77"},
        {"\xE9x\0z\xE9"sv, kTextEncodingUnknown, "7a 00 78 e9"},
        {"\xE9xyz", kTextEncodingMacRoman, "7a 79 78 e9"},
        {"w", kUtf8, "20 20 20 77"},
        {"wx\xE9", kTextEncodingUnknown, "20 e9 78 77"},
        {"", kUtf8, "20 20 20 20"},
        {"", kTextEncodingUnknown, "20 20 20 20"},
        {"\xE4\xB8\xADxyz", kUtf8, "20 20 20 20"},  // has no form in Mac OS Roman
    };
    for (const Options& options : hosts()) {
        start(options);
        for (const auto& [value, encoding, stored] : cases) {
            const ObjectRef memory = block("..........");
            assign(memory, "OSTypeZOR", {3}, text(value, encoding));
            auto expected = hex("2e 2e 2e 00 00 00 00 2e 2e 2e");
            std::ranges::copy(hex(stored), expected.begin() + 3);
            EXPECT_TRUE(same_bytes(bytes(memory), expected)) << '"' << value << "\", encoding " << encoding;
        }
        const ObjectRef memory = block(hex("00 54 58 45 54 7a 00 78 8e"));
        EXPECT_EQ(string(memory, "OSTypeZOR", {1}), std::pair(kTextEncodingUS_ASCII, "TEXT"s));
        EXPECT_EQ(string(memory, "OSTypeZOR", {5}), std::pair(kTextEncodingMacRoman, "\x8Ex\0z"s));
        assign(memory, "OSTypeZOR", {5}, StringRef());
        EXPECT_EQ(string(memory, "OSTypeZOR", {5}), std::pair(kTextEncodingUS_ASCII, "    "s));
    }
}

TEST_F(AccessorsTest, CodesAreWhereAllFourBytesLie) {
    for (const int32_t offset : {INT32_MIN, -4, -1, 0, 5, 6, 9, INT32_MAX - 3, INT32_MAX}) {
        SCOPED_TRACE(offset);
        GuardedBytes memory(hex("01 02 03 04 05 06 07 08 09"));
        auto expected = memory.copy();
        const bool inside = offset >= 0 && offset <= 5;
        EXPECT_EQ(string(view(memory), "OSTypeZOR", {offset}).has_value(), inside);
        if (inside) std::ranges::copy("zyxw"sv, expected.begin() + offset);
        assign(view(memory), "OSTypeZOR", {offset}, text("wxyz"));
        EXPECT_TRUE(same_bytes(memory.bytes(), expected));
        EXPECT_TRUE(!inside || string(view(memory, 0), "OSTypeZOR", {offset}));
    }
}

TEST_F(AccessorsTest, FileSpecificationsAreTheHosts) {
    const std::filesystem::path path = std::filesystem::temp_directory_path() / "some file";
    const ObjectRef item = host().new_folder_item(path);
    for (const int32_t size : {71, 0}) {
        GuardedBytes memory(71);
        assign(view(memory, size), "FSSpecZOR", {1}, item);
        const auto found = call_for<ObjectRef>(view(memory, size), "FSSpecZOR", {1});
        ASSERT_TRUE(found);
        EXPECT_EQ(host().path_of(found.get()), path);
        const auto stored = memory.copy();
        for (const int32_t offset : {INT32_MIN, -1, 2, 71, INT32_MAX - 69, INT32_MAX}) {
            if (size == 0 && offset > 0) continue;
            EXPECT_FALSE(call_for<ObjectRef>(view(memory, size), "FSSpecZOR", {offset}));
            assign(view(memory, size), "FSSpecZOR", {offset}, item);
        }
        EXPECT_TRUE(same_bytes(memory.bytes(), stored));
        assign(view(memory, size), "FSSpecZOR", {1}, ObjectRef());
        EXPECT_TRUE(same_bytes(memory.bytes(), std::vector<uint8_t>(71)));
    }
}

TEST_F(AccessorsTest, WhatIsMissingIsNil) {
    // Not at offset 0: an address just after nil is no nil.
    const auto nothing = [&](const ObjectRef& none) {
        EXPECT_FALSE(string(none, "GetStringZOR", {1, 4}));
        EXPECT_FALSE(string(none, "OSTypeZOR", {1}));
        EXPECT_FALSE(call_for<ObjectRef>(none, "FSSpecZOR", {1}));
        call(none, "SetStringZOR", {text("abcd"), 1});
        assign(none, "OSTypeZOR", {1}, text("abcd"));
        assign(none, "FSSpecZOR", {1}, ObjectRef());
    };
    nothing({});
    nothing(host().new_view(nullptr, 80));

    start({.without = {"REALBuildString", "FolderItemFromFSSpec", "REALFSSpecFromFolderItem"}});
    const ObjectRef memory = host().new_block(80);
    EXPECT_FALSE(string(memory, "GetStringZOR", {0, 4}));
    EXPECT_FALSE(string(memory, "OSTypeZOR", {0}));
    EXPECT_FALSE(call_for<ObjectRef>(memory, "FSSpecZOR", {0}));
    assign(memory, "FSSpecZOR", {0}, ObjectRef());
    EXPECT_EQ(bytes(memory), std::vector<uint8_t>(80));
    assign(memory, "OSTypeZOR", {0}, text("\xE9xyz"));
    EXPECT_EQ(bytes(memory)[0], ' ');
}

}  // namespace
