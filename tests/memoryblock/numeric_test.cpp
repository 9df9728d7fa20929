// The members that take a block as an array of numbers: which part of it they change, and what they check
// first.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "tests/support/bundle_test.h"

using minihost::Host;
using minihost::ObjectRef;
using minihost::Options;
using minihost::Pointer;
using minihost::Value;

namespace {

using Bytes = std::vector<uint8_t>;

constexpr int32_t kBytes = 11;

// A member that changes units of `unit` bytes in a range of its block.
struct Member {
    const char* name;
    int32_t unit;
    bool begun_units;           // whether a unit counts when only its first byte lies within the length
    std::vector<Value> before;  // its arguments before the offset and the length,
    std::vector<Value> after;   // and after them
    Value result;
    std::function<void(uint8_t* unit, size_t index)> change;  // the unit that is the `index`th of the range
};

class NumericTest : public BundleTest {
 protected:
    void SetUp() override { start(); }

    void check(const Member& member) {
        Random random;
        for (const int32_t offset : extremes(kBytes)) {
            for (const int32_t length : extremes(kBytes)) {
                for (const int32_t reported : {kBytes, 0, -1}) {
                    SCOPED_TRACE(testing::Message()
                                 << member.name << " at " << offset << ", " << length << " of " << reported);
                    check(member, offset, length, reported, random);
                }
            }
        }
    }

 private:
    void check(const Member& member, int32_t offset, int32_t length, int32_t reported, Random& random) {
        int64_t end = length > 0 ? int64_t(offset) + length : std::max(reported, 0);
        if (member.begun_units && end > offset) end = offset + (end - offset + 3) / 4 * 4;
        // Where the size is unknown, a range that leaves the memory is the caller's fault.
        if (reported <= 0 && offset >= 0 && end > kBytes) return;
        GuardedBytes memory(kBytes, GuardedBytes::kEnd, random);
        Bytes expected = memory.copy();
        for (int64_t at = offset; at >= 0 && at + member.unit <= std::min<int64_t>(end, kBytes);
             at += member.unit) {
            member.change(expected.data() + at, size_t(at - offset) / size_t(member.unit));
        }
        std::vector<Value> arguments = member.before;
        arguments.insert(arguments.end(), {offset, length});
        arguments.insert(arguments.end(), member.after.begin(), member.after.end());
        const auto raised_by = [&](const ObjectRef& self) {
            return raised([&] { EXPECT_EQ(call(self, member.name, arguments), member.result); });
        };
        EXPECT_EQ(raised_by({}), kNilBlock);
        const char* expected_text = offset < 0 ? kNegativeOffset : "";
        EXPECT_EQ(raised_by(host().new_view(nullptr, reported)), expected_text);
        EXPECT_EQ(raised_by(view(memory, reported)), expected_text);
        EXPECT_TRUE(same_bytes(memory.bytes(), expected));
    }
};

template <class Number>
Number number_at(const uint8_t* bytes) {
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

// The inputs are no longer than the block: what is cut of the block is not read of them either.
template <class Integer>
Member chosen(const char* name, const GuardedBytes& first, const GuardedBytes& second, bool larger) {
    const std::vector<Value> arguments = {Pointer{const_cast<uint8_t*>(first.data())},
                                          Pointer{const_cast<uint8_t*>(second.data())},
                                          int32_t(8 * sizeof(Integer)), std::is_signed_v<Integer>};
    return {name,
            sizeof(Integer),
            false,
            arguments,
            {},
            true,
            [&first, &second, larger](uint8_t* unit, size_t index) {
                const uint8_t* a = first.data() + index * sizeof(Integer);
                const uint8_t* b = second.data() + index * sizeof(Integer);
                const bool less = number_at<Integer>(a) < number_at<Integer>(b);
                std::memcpy(unit, less == larger ? b : a, sizeof(Integer));
            }};
}

TEST_F(NumericTest, WholeUnitsInsideTheBlockAreChanged) {
    Random random;
    const GuardedBytes first(kBytes, GuardedBytes::kEnd, random);
    const GuardedBytes second(kBytes, GuardedBytes::kEnd, random);
    check(chosen<uint8_t>("MinZOR", first, second, false));
    check(chosen<int16_t>("MaxZOR", first, second, true));
    check(chosen<uint32_t>("MaxZOR", first, second, true));
    check(chosen<int64_t>("MinZOR", first, second, false));
    check({"MultiplyUInt8ZOR", 1, false, {1.5}, {}, {}, [](uint8_t* unit, size_t) {
               *unit = uint8_t(std::min(255, *unit * 3 / 2));
           }});
    check({"MultiplyUInt16ZOR", 2, false, {0.5}, {}, {}, [](uint8_t* unit, size_t) {
               unit[0] = uint8_t(unit[0] >> 1 | unit[1] << 7);
               unit[1] >>= 1;
           }});
    check({"_Calc2te", 4, true, {300}, {true}, {}, [](uint8_t* group, size_t) {
               group[3] = uint8_t(std::clamp(300 - group[0] - group[1] - group[2], 0, 255));
           }});
    // Every byte lies between 0 and 200 times 2.
    check({"_Calc3te",
           4,
           true,
           {200, 200, 200, 200, 256, -1, 3, 0x104, 1.0},
           {},
           {},
           [](uint8_t* group, size_t) { std::ranges::copy(hex("00 ff 03 04"), group); }});
}

TEST_F(NumericTest, Examples) {
    struct Example {
        const char* member;
        std::vector<Value> arguments;
        const char* before;
        const char* after;
    };
    const Example examples[] = {
        {"MultiplyUInt8ZOR", {0.5}, "ff 01 03 fe", "7f 00 01 7f"},
        {"MultiplyUInt8ZOR", {0.7}, "03 0a", "02 07"},  // 3 * 0.7 is a little less than 2.1, 10 * 0.7 is 7
        {"MultiplyUInt8ZOR", {1e12}, "00 01", "00 ff"},
        {"MultiplyUInt8ZOR", {-1.0}, "00 01 80 ff", "00 01 80 ff"},
        {"MultiplyUInt8ZOR", {HUGE_VAL}, "00 01", "00 ff"},
        {"MultiplyUInt16ZOR", {2.0}, "01 02 40 9c", "02 04 ff ff"},
        {"MultiplyUInt16ZOR", {0.5}, "ff ff", "ff 7f"},
        {"MultiplyUInt16ZOR", {2.0, 1}, "01 01 00 02 00", "01 02 00 04 00"},
        {"_Calc2te", {}, "0a 14 1e 63 64 64 64 63 00 00 00 63", "0a 14 1e c3 64 64 64 00 00 00 00 00"},
        {"_Calc2te", {255, 0, 0, false}, "00 00 00 63", "00 00 00 ff"},
        {"_Calc2te", {600}, "00 00 01 63", "00 00 01 ff"},
        {"_Calc2te", {INT32_MAX}, "ff ff ff 63 00 00 00 63", "ff ff ff ff 00 00 00 00"},
        {"_Calc3te",
         {200, 100, 50, 255, 0, 0, 0, 0, 0.1},
         "be 69 37 ff be 69 38 ff",
         "00 00 00 00 be 69 38 ff"},
        {"_Calc3te", {0, 0, 0, 0, 1, 2, 3, 4, 9.0}, "00 00 00 00 00 00 00 01", "01 02 03 04 00 00 00 01"},
        // An upper bound that does not fit 32 bits matches nothing; a lower one, beside an upper one that
        // fits, all.
        {"_Calc3te", {2, 2, 2, 2, 9, 9, 9, 9, 1e10}, "02 02 02 02", "02 02 02 02"},
        {"_Calc3te", {2, 2, 2, 2, 9, 9, 9, 9, NAN}, "02 02 02 02", "02 02 02 02"},
        {"_Calc3te", {-2, -2, -2, -2, 9, 9, 9, 9, -1073741824.0}, "02 00 ff 02", "09 09 09 09"},
    };
    for (const Example& example : examples) {
        const ObjectRef memory = block(hex(example.before));
        call(memory, example.member, example.arguments);
        EXPECT_TRUE(same_bytes(bytes(memory), hex(example.after)))
            << example.member << " on " << example.before;
    }
}

TEST_F(NumericTest, MinAndMaxChooseElementAfterElement) {
    const ObjectRef memory = block(hex("05 03 84 01 02"));
    auto* data = static_cast<uint8_t*>(host().block_data(memory.get()));
    const Value own = Pointer{data};
    for (const int32_t bits : {INT32_MIN, -8, 0, 7, 24, 128})
        EXPECT_FALSE(call_for<bool>(memory, "MinZOR", {own, own, bits}));
    // The result of an element is an input of the next one.
    EXPECT_TRUE(call_for<bool>(memory, "MaxZOR", {own, Pointer{data + 1}, 8, true, 1, 3}));
    EXPECT_EQ(bytes(memory), hex("05 05 05 05 02"));
    EXPECT_TRUE(call_for<bool>(memory, "MinZOR", {own, Pointer{data + 2}, 8, false, 2}));
    EXPECT_EQ(bytes(memory), hex("05 05 05 05 02"));
}

TEST_F(NumericTest, ChecksInOrder) {
    const ObjectRef memory = block(Bytes(16));
    const ObjectRef without_data = host().new_view(nullptr, 16);
    const Value some = Pointer{host().block_data(memory.get())};
    const Value nil = Pointer{};
    const auto text = [&](const ObjectRef& self, const char* member, const std::vector<Value>& arguments) {
        return raised([&] { call(self, member, arguments); });
    };
    for (const char* member : {"MinZOR", "MaxZOR"}) {
        EXPECT_EQ(text({}, member, {nil, nil, 7, false, -1}), kNilBlock);
        EXPECT_EQ(text(memory, member, {nil, some, 7, false, -1}), kNilPointer);
        EXPECT_EQ(text(memory, member, {some, nil, 7, false, -1}), kNilPointer);
        EXPECT_EQ(text(memory, member, {some, some, 7, false, -1}), kNegativeOffset);
    }
    for (const char* member : {"_ConvertPolarToCartesian", "_ConvertCartesianToPolar"}) {
        EXPECT_EQ(text({}, member, {-1, 0, ObjectRef()}), kNilBlock);
        EXPECT_EQ(text(memory, member, {-1, 0, ObjectRef()}), "");
        EXPECT_EQ(text(without_data, member, {-1, 1, memory}), kNegativeOffset);
        EXPECT_EQ(text(without_data, member, {0, 1, memory}), "");
        EXPECT_EQ(text(memory, member, {0, 1, without_data}), "");
    }
    EXPECT_EQ(text({}, "_CalcLogSweepTableZOR", {-1, 0, 0, 0, 0.0}), kNilBlock);
    EXPECT_EQ(text(without_data, "_CalcLogSweepTableZOR", {-1, 0, 0, 0, 0.0}), kNegativeOffset);
    EXPECT_EQ(text(without_data, "_CalcLogSweepTableZOR", {0, 1, 1, 8, 1.0}), "");
    EXPECT_EQ(bytes(memory), Bytes(16));
}

TEST_F(NumericTest, PairsAreCutToWholeOnesInsideTheBlocks) {
    // On the positive axis both forms of a pair are the same.
    constexpr float kAxis[] = {1, 0, 2, 0, 3, 0, 4, 0};
    const auto axis = [&](size_t size) {
        return Bytes(reinterpret_cast<const uint8_t*>(kAxis), reinterpret_cast<const uint8_t*>(kAxis) + size);
    };
    Bytes sweep(32);
    call(host().new_view(sweep.data(), 32), "_CalcLogSweepTableZOR", {0, 4, 1, 8, 64.0});
    EXPECT_EQ(number_at<float>(sweep.data() + 28), float(100.53096491488 * (3.0 / 64)));

    constexpr int32_t kSize = 29;
    for (const int32_t offset : extremes(24)) {
        for (const int32_t count : extremes(3)) {
            // 32 and 29 bytes that are there, and sizes that are unknown.
            for (const auto& [source_size, size] :
                 {std::pair(32, kSize), {16, kSize}, {7, kSize}, {32, 24}, {0, kSize}, {32, 0}, {-1, -1}}) {
                // Where the size is unknown, a range that leaves the memory is the caller's fault.
                if (offset >= 0 && ((size <= 0 && offset + 8 * int64_t(std::max(count, 0)) > kSize) ||
                                    (source_size <= 0 && count > 4)))
                    continue;
                SCOPED_TRACE(testing::Message() << count << " pairs of " << source_size << " bytes to "
                                                << offset << " of " << size);
                GuardedBytes memory(kSize);
                GuardedBytes source(axis(size_t(source_size > 0 ? source_size : 32)));
                const int64_t room = offset < 0 ? 0 : (size > 0 ? size : kSize) - offset;
                const auto check = [&](const Bytes& pairs, const char* member,
                                       const std::vector<Value>& arguments) {
                    Bytes expected(kSize);
                    for (size_t i = 0; int64_t(i) < count &&
                                       8 * int64_t(i + 1) <= std::min<int64_t>(room, std::ssize(pairs));
                         ++i) {
                        std::copy_n(pairs.begin() + ptrdiff_t(8 * i), 8,
                                    expected.begin() + offset + ptrdiff_t(8 * i));
                    }
                    std::ranges::fill(memory.bytes(), uint8_t(0));
                    EXPECT_EQ(raised([&] { call(view(memory, size), member, arguments); }),
                              offset < 0 ? kNegativeOffset : "");
                    EXPECT_TRUE(same_bytes(memory.bytes(), expected)) << member;
                };
                check(source.copy(), "_ConvertPolarToCartesian", {offset, count, view(source, source_size)});
                check(source.copy(), "_ConvertCartesianToPolar", {offset, count, view(source, source_size)});
                check(sweep, "_CalcLogSweepTableZOR", {offset, count, 1, 8, 64.0});
            }
        }
    }
}

// For the host's "memoryBlockGetPtr": notes how many references the block has while its bytes are asked for.
int32_t references_seen = 0;
void* noting_block_data(REALmemoryBlock block) {
    references_seen = Host::current().references(block);
    return Host::current().block_data(block);
}

TEST_F(NumericTest, BlocksAreHeldWhileTheirBytesAreUsed) {
    start(Options{.replace = {{"memoryBlockGetPtr", reinterpret_cast<void*>(noting_block_data)}}});
    const ObjectRef memory = block(Bytes(16));
    const Value input = Pointer{host().block_data(memory.get())};
    call(memory, "_CalcLogSweepTableZOR", {0, 1, 1, 8, 1.0});
    const int32_t not_held = references_seen;
    const std::pair<const char*, std::vector<Value>> calls[] = {{"MinZOR", {input, input, 7}},
                                                                {"MaxZOR", {input, input}},
                                                                {"MultiplyUInt8ZOR", {1.0, 99}},
                                                                {"MultiplyUInt16ZOR", {1.0}},
                                                                {"_Calc2te", {}},
                                                                {"_Calc3te", {0, 0, 0, 0, 0, 0, 0, 0, 0.0}}};
    for (const auto& [member, arguments] : calls) {
        call(memory, member, arguments);
        EXPECT_EQ(references_seen, not_held + 1) << member;
    }
}

// More pairs than 32 bits count bytes for: the block of known size still sets the limit.
TEST_F(NumericTest, PairsAreCountedIn64Bits) {
    Random random;
    GuardedBytes source(80, GuardedBytes::kEnd);
    for (size_t i = 0; i < 80; i += sizeof(float)) {
        const float number = std::uniform_real_distribution(-5.0F, 5.0F)(random);
        std::memcpy(source.data() + i, &number, sizeof number);
    }
    GuardedBytes expected(80, GuardedBytes::kEnd);
    call(view(expected), "_ConvertPolarToCartesian", {0, 10, view(source)});
    for (const int32_t pairs : {1 << 28, 1 << 29, (1 << 29) + 1, INT32_MAX}) {
        GuardedBytes converted(80, GuardedBytes::kEnd);
        call(view(converted, 0), "_ConvertPolarToCartesian", {0, pairs, view(source)});
        EXPECT_TRUE(same_bytes(converted.bytes(), expected.bytes())) << pairs << " pairs";
    }
}

}  // namespace
