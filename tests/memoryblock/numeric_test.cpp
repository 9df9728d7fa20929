// The members that take a block as an array of numbers: which part of it they change, and what they check
// first.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "tests/memoryblock/range_member.h"

namespace {

using NumericTest = RangeTest;

template <class Number>
Number number_at(const uint8_t* bytes) {
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

// The inputs are no longer than the block: what is cut of the block is not read of them either.
template <class Integer>
RangeMember chosen(const char* name, const GuardedBytes& first, const GuardedBytes& second, bool larger) {
    const auto choose = [&first, &second, larger](uint8_t* unit, size_t index) {
        const uint8_t* a = first.data() + index * sizeof(Integer);
        const uint8_t* b = second.data() + index * sizeof(Integer);
        const bool less = number_at<Integer>(a) < number_at<Integer>(b);
        std::memcpy(unit, less == larger ? b : a, sizeof(Integer));
    };
    return {
        .name = name,
        .before = {Pointer{const_cast<uint8_t*>(first.data())}, Pointer{const_cast<uint8_t*>(second.data())},
                   int32_t(8 * sizeof(Integer)), std::is_signed_v<Integer>},
        .change = each_unit(sizeof(Integer), choose),
        .result = true};
}

TEST_F(NumericTest, WholeUnitsInsideTheBlockAreChanged) {
    Random random;
    const GuardedBytes first(kBytes, GuardedBytes::kEnd, random);
    const GuardedBytes second(kBytes, GuardedBytes::kEnd, random);
    check(chosen<uint8_t>("MinZOR", first, second, false));
    check(chosen<int8_t>("MaxZOR", first, second, true));
    check(chosen<uint16_t>("MinZOR", first, second, false));
    check(chosen<int16_t>("MaxZOR", first, second, true));
    check(chosen<uint32_t>("MaxZOR", first, second, true));
    check(chosen<int32_t>("MinZOR", first, second, false));
    check(chosen<uint64_t>("MaxZOR", first, second, true));
    check(chosen<int64_t>("MinZOR", first, second, false));
    const auto half_more = [](uint8_t* unit, size_t) { *unit = uint8_t(std::min(255, *unit * 3 / 2)); };
    check({.name = "MultiplyUInt8ZOR", .before = {1.5}, .change = each_unit(1, half_more)});
    const auto halve = [](uint8_t* unit, size_t) {
        unit[0] = uint8_t(unit[0] >> 1 | unit[1] << 7);
        unit[1] >>= 1;
    };
    check({.name = "MultiplyUInt16ZOR", .before = {0.5}, .change = each_unit(2, halve)});
    const auto complete = [](uint8_t* group, size_t) {
        group[3] = uint8_t(std::clamp(300 - group[0] - group[1] - group[2], 0, 255));
    };
    check(
        {.name = "_Calc2te", .before = {300}, .after = {true}, .change = each_unit(4, complete), .group = 4});
    // Every byte lies between 0 and 200 times 2.
    const auto replace = [](uint8_t* group, size_t) { std::ranges::copy(hex("00 ff 03 04"), group); };
    check({.name = "_Calc3te",
           .before = {200, 200, 200, 200, 256, -1, 3, 0x104, 1.0},
           .change = each_unit(4, replace),
           .group = 4});
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
            for (const auto& sizes :
                 {std::pair(32, kSize), {16, kSize}, {7, kSize}, {32, 24}, {0, kSize}, {32, 0}, {-1, -1}}) {
                const int32_t source_size = sizes.first;
                const int32_t size = sizes.second;
                // Where the size is unknown, a range that leaves the memory is the caller's fault.
                if (offset >= 0 && ((size <= 0 && offset + 8 * int64_t(std::max(count, 0)) > kSize) ||
                                    (source_size <= 0 && count > 4)))
                    continue;
                SCOPED_TRACE(testing::Message() << count << " pairs of " << source_size << " bytes to "
                                                << offset << " of " << size);
                GuardedBytes memory(kSize);
                GuardedBytes source(axis(size_t(source_size > 0 ? source_size : 32)));
                const int64_t room = offset < 0 ? 0 : (size > 0 ? size : kSize) - offset;
                const auto check = [&, size = size](const Bytes& pairs, const char* member,
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

// For the host's "REALUnlockObject": notes a block's bytes at the moment it is given back.
Bytes given_back;
void noting_unlock(REALobject object) {
    if (Host::current().is_a(object, "MemoryBlock")) {
        const auto* data = static_cast<const uint8_t*>(Host::current().block_data(object));
        given_back.assign(data, data + Host::current().block_size(object));
    }
    minihost::release(object);
}

TEST_F(NumericTest, BlocksAreHeldUntilTheWorkIsDone) {
    start(Options{.replace = {{"REALUnlockObject", reinterpret_cast<void*>(noting_unlock)}}});
    Bytes zeros(16);
    const Value input = Pointer{zeros.data()};
    const std::pair<const char*, std::vector<Value>> calls[] = {{"MinZOR", {input, input}},
                                                                {"MaxZOR", {input, input}},
                                                                {"MultiplyUInt8ZOR", {2.0}},
                                                                {"MultiplyUInt16ZOR", {2.0}},
                                                                {"_Calc2te", {}},
                                                                {"_Calc3te", {5, 5, 5, 5, 9, 9, 9, 9, 0.0}}};
    for (const auto& [member, arguments] : calls) {
        const ObjectRef memory = block(Bytes(16, 5));
        given_back.clear();
        call(memory, member, arguments);
        EXPECT_NE(bytes(memory), Bytes(16, 5)) << member;
        EXPECT_EQ(given_back, bytes(memory)) << member;
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
