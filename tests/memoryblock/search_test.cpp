// The searching and comparing members: ranges, patterns, and what they answer when there is nothing to
// search.
#include <algorithm>

#include "tests/support/bundle_test.h"
#include "tests/support/system.h"

using namespace std::string_view_literals;

namespace {

class SearchTest : public MemberTest {
 protected:
    int32_t find(const char* member, const ObjectRef& block, std::vector<Value> arguments) {
        return call_for<int32_t>(block, member, std::move(arguments));
    }
};

// The offsets at which a block has bytes, of a range.
std::vector<int32_t> offsets_inside(const Bytes& bytes, int32_t offset, int64_t count) {
    std::vector<int32_t> offsets;
    for (int64_t i = offset; offset >= 0 && i < offset + count && i < std::ssize(bytes); ++i) {
        offsets.push_back(int32_t(i));
    }
    return offsets;
}

bool inside(const Bytes& bytes, int32_t offset, int64_t count) {
    return offset >= 0 && count >= 0 && offset + count <= std::ssize(bytes);
}

// Start by start, byte by byte.
int32_t pattern_offset(const Bytes& bytes, int32_t offset, int32_t limit, const Bytes& pattern) {
    const int64_t searched = limit != 0 ? limit : std::ssize(bytes);
    if (offset < 0 || offset >= std::ssize(bytes) || searched <= 0 || pattern.empty()) return -2;
    const auto starts = offsets_inside(bytes, offset, searched);
    for (size_t i = 0; i + pattern.size() <= starts.size(); ++i) {
        if (std::equal(pattern.begin(), pattern.end(), bytes.begin() + starts[i])) return starts[i];
    }
    return -1;
}

TEST_F(SearchTest, BytesAreFoundInsideTheBlockOnly) {
    for (const auto side : GuardedBytes::kBothSides) {
        GuardedBytes memory(hex("00 41 00 00 ff ff 41 00 00"), side);
        const Bytes bytes = memory.copy();
        for (const int32_t offset : extremes(9)) {
            for (const int32_t count : extremes(9)) {
                SCOPED_TRACE(testing::Message() << count << " bytes from " << offset);
                const auto offsets = offsets_inside(bytes, offset, count);
                for (const int32_t value : {0, 0x41, 321, -1, 0x7F, INT32_MIN}) {
                    const auto is_value = [&](int32_t i) { return bytes[size_t(i)] == uint8_t(value); };
                    const auto found = std::ranges::find_if(offsets, is_value);
                    const auto other = std::ranges::find_if_not(offsets, is_value);
                    ASSERT_EQ(find("FindByteZOR", view(memory), {offset, count, value}),
                              found == offsets.end() ? -1 : *found);
                    ASSERT_EQ(find("FindNotByteZOR", view(memory), {offset, count, value}),
                              other == offsets.end() ? -1 : *other);
                }
                const bool zero =
                    std::ranges::all_of(offsets, [&](int32_t i) { return bytes[size_t(i)] == 0; });
                ASSERT_EQ(call_for<bool>(view(memory), "BytesZeroZOR", {offset, count}),
                          count <= 0 || (inside(bytes, offset, count) && zero));
            }
        }
    }
}

TEST_F(SearchTest, RangesAreComparedWholeOrNotAtAll) {
    GuardedBytes first(hex("01 02 01 02 01 02 03 01 02"));
    GuardedBytes second(hex("01 02 03 01 02 01 02 01 02 03 01 02"), GuardedBytes::kStart);
    for (const int32_t from : extremes(9)) {
        for (const int32_t count : extremes(9)) {
            for (const int32_t to : extremes(12)) {
                const auto equal = [&](const Bytes& left, const Bytes& right) {
                    return count == 0 ||
                           (inside(left, from, count) && inside(right, to, count) &&
                            std::equal(left.begin() + from, left.begin() + from + count, right.begin() + to));
                };
                SCOPED_TRACE(testing::Message() << count << " bytes from " << from << " and " << to);
                ASSERT_EQ(call_for<bool>(view(first), "BytesEqualZOR", {from, count, view(second), to}),
                          equal(first.copy(), second.copy()));
                ASSERT_EQ(call_for<bool>(view(second), "BytesEqualZOR", {from, count, view(second), to}),
                          equal(second.copy(), second.copy()));
            }
        }
    }
}

TEST_F(SearchTest, PatternsOfBlocksAndStringsAreFoundWhereTheyLieWhollyInside) {
    GuardedBytes memory(hex("61 62 61 62 61 62 63 00 61"));
    GuardedBytes target(hex("61 62 63 00"), GuardedBytes::kStart);
    const Bytes bytes = memory.copy();
    const Bytes all = target.copy();
    for (const int32_t offset : extremes(9)) {
        for (const int32_t limit : extremes(9)) {
            for (const int32_t from : extremes(4)) {
                for (const int32_t length : extremes(4)) {
                    const int64_t count = length > 0 ? length : int64_t(4) - from;
                    const bool usable = inside(all, from, count);
                    const Bytes pattern =
                        usable ? Bytes(all.begin() + from, all.begin() + from + ptrdiff_t(count)) : Bytes();
                    ASSERT_EQ(find("FindBytesZOR", view(memory), {offset, limit, view(target), from, length}),
                              pattern_offset(bytes, offset, limit, pattern))
                        << limit << " bytes from " << offset << ", " << length << " of the target from "
                        << from;
                }
            }
            for (const std::string_view pattern : {""sv, "a"sv, "abc"sv, "c\0a"sv, "\0"sv, "ababababab"sv}) {
                ASSERT_EQ(find("FindStringZOR", view(memory), {offset, limit, text(pattern)}),
                          pattern_offset(bytes, offset, limit, Bytes(pattern.begin(), pattern.end())))
                    << limit << " bytes from " << offset << ", \"" << pattern << '"';
            }
        }
    }
}

TEST_F(SearchTest, StringsAreTakenAsStoredByEveryHost) {
    const std::set<std::string, std::less<>> no_data = {"PluginGetStringData", "PluginDisposeStringData"};
    for (const Options& options :
         std::vector<Options>{{}, {.without = no_data}, {.version = 2013.0}, {.version = std::nullopt}}) {
        start(options);
        const ObjectRef memory = block(hex("e9 c3 a9 00 42"));
        EXPECT_EQ(find("FindStringZOR", memory, {0, 0, text("\xC3\xA9", kUtf8)}), 1);
        EXPECT_EQ(find("FindStringZOR", memory, {0, 0, text("\xE9", kTextEncodingMacRoman)}), 0);
        EXPECT_EQ(find("FindStringZOR", memory, {0, 0, text("\0B"sv)}), 3);
        EXPECT_EQ(find("FindStringZOR", memory, {9, 0, text("B")}), -2);
        EXPECT_EQ(find("FindStringZOR", memory, {0, 0, StringRef()}), -2);
    }
    start({.without = {"PluginGetStringData", "StringGetCString"}});
    EXPECT_EQ(find("FindStringZOR", block("B"), {0, 0, text("B")}), -2);
}

TEST_F(SearchTest, AnUnknownSizeLeavesTheRangeToTheCaller) {
    GuardedBytes memory(hex("00 00 05 06"));
    GuardedBytes target(hex("05 06"));
    for (const int32_t size : {0, -1}) {
        const ObjectRef open = view(memory, size);
        EXPECT_EQ(find("FindByteZOR", open, {1, 3, 6}), 3);
        EXPECT_EQ(find("FindByteZOR", open, {1, 2, 6}), -1);
        EXPECT_EQ(find("FindNotByteZOR", open, {-1, 3, 1}), -1);
        EXPECT_TRUE(call_for<bool>(open, "BytesZeroZOR", {0, 2}));
        EXPECT_FALSE(call_for<bool>(open, "BytesZeroZOR", {-1, 2}));
        EXPECT_TRUE(call_for<bool>(open, "BytesEqualZOR", {2, 2, view(target, size), 0}));
        EXPECT_EQ(find("FindBytesZOR", open, {0, 4, view(target), 0, 0}), size == 0 ? 2 : -2);
        EXPECT_EQ(find("FindBytesZOR", view(memory), {0, 4, view(target, size), 1, 1}), size == 0 ? 3 : -2);
        EXPECT_EQ(find("FindBytesZOR", open, {0, 0, view(target), 0, 0}), -2);
        EXPECT_EQ(find("FindBytesZOR", view(memory), {0, 4, view(target, size), 0, 0}), -2);
        EXPECT_EQ(find("FindStringZOR", open, {1, 3, text("\x06")}), size == 0 ? 3 : -2);
        EXPECT_EQ(find("FindStringZOR", open, {1, 0, text("\x06")}), -2);
    }
}

// Zeros around the last offset that 32 bits can tell, at the end of memory that is only reserved.
TEST_F(SearchTest, WhatNoOffsetCanTellIsNotFound) {
    constexpr size_t kTail = 128 * 1024;
    constexpr size_t kSize = size_t(INT32_MAX) + 1 + kTail / 2;
    uint8_t* data = map_tail(kSize, kTail);
    if (!data) GTEST_SKIP() << "no room for 2 GiB of addresses";
    data[INT32_MAX - 1] = 7;
    data[size_t(INT32_MAX) + 9] = 8;
    const ObjectRef open = host().new_view(data);
    const int32_t start = INT32_MAX - 10;
    EXPECT_EQ(find("FindByteZOR", open, {start, 100, 7}), INT32_MAX - 1);
    EXPECT_EQ(find("FindStringZOR", open, {start, 100, text("\x07")}), INT32_MAX - 1);
    EXPECT_EQ(find("FindByteZOR", open, {start, 100, 8}), -1);
    EXPECT_EQ(find("FindStringZOR", open, {start, 100, text("\x08")}), -1);
    unmap(data, kSize);
}

TEST_F(SearchTest, NilHasItsOwnAnswers) {
    const ObjectRef memory = block("abc");
    for (const ObjectRef& none : {ObjectRef(), host().new_view(nullptr, 3)}) {
        EXPECT_EQ(find("FindByteZOR", none, {0, 3, 0}), -1);
        EXPECT_EQ(find("FindNotByteZOR", none, {0, 3, 0}), -1);
        EXPECT_EQ(find("FindBytesZOR", none, {0, 3, memory, 0, 1}), -2);
        EXPECT_EQ(find("FindBytesZOR", memory, {0, 3, none, 1, 1}), -2);
        EXPECT_EQ(find("FindStringZOR", none, {0, 3, text("a")}), -2);
        EXPECT_FALSE(call_for<bool>(none, "BytesZeroZOR", {0, 0}));
        EXPECT_FALSE(call_for<bool>(none, "BytesEqualZOR", {0, 0, memory, 0}));
        EXPECT_FALSE(call_for<bool>(memory, "BytesEqualZOR", {0, 0, none, 0}));
    }
}

// Where the size is unknown, what follows the byte that decides may be no memory at all.
TEST_F(SearchTest, NoByteIsReadBehindThePageOfTheOneThatDecides) {
    for (const size_t decisive : {0u, 7u, 8u, 40u, 99u}) {
        GuardedBytes memory(100, GuardedBytes::kEnd);
        memory.data()[decisive] = 1;
        const ObjectRef open = view(memory, 0);
        EXPECT_EQ(find("FindByteZOR", open, {0, INT32_MAX, 1}), int32_t(decisive));
        EXPECT_EQ(find("FindNotByteZOR", open, {0, INT32_MAX, 0}), int32_t(decisive));
        EXPECT_FALSE(call_for<bool>(open, "BytesZeroZOR", {0, INT32_MAX}));
    }
}

}  // namespace
