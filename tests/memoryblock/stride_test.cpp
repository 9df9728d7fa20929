// Gathering and expanding: which arguments are accepted, and what then arrives where.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

#include "tests/support/bundle_test.h"

namespace {

using Numbers = std::vector<int32_t>;

// The models walk piece by piece and bit by bit, and give nothing as soon as one lies outside. Whoever takes
// a hundred pieces without leaving these small blocks takes the same empty one for ever.
constexpr int32_t kEnough = 100;

std::optional<Bytes> gathered_bytes(const Bytes& source, Bytes bytes, int64_t from, int64_t to, int64_t count,
                                    int64_t step, int32_t steps) {
    for (int32_t k = 0; k < std::min(steps, kEnough); ++k, from += step, to += count) {
        if (std::min({from, to, count}) < 0 || from + count > std::ssize(source) ||
            to + count > std::ssize(bytes))
            return {};
        std::copy_n(source.begin() + ptrdiff_t(from), count, bytes.begin() + ptrdiff_t(to));
    }
    return bytes;
}

std::optional<Bytes> gathered_bits(const Bytes& source, Bytes bytes, int64_t from, int64_t to, int64_t count,
                                   int64_t skip, int32_t steps) {
    const int64_t first = to;
    for (int32_t k = 0; k < std::min(steps, kEnough); ++k, from += std::max<int64_t>(skip, 0)) {
        for (int64_t i = 0; i < count; ++i, ++from, ++to) {
            if (std::min(from, to) < 0 || from / 8 >= std::ssize(source) || to / 8 >= std::ssize(bytes))
                return {};
            uint8_t& byte = bytes[size_t(to / 8)];
            if (to == first || to % 8 == 0) byte = 0;
            if (source[size_t(from / 8)] & 0x80 >> from % 8) byte |= uint8_t(0x80 >> to % 8);
        }
    }
    return bytes;
}

class StrideTest : public MemberTest {
 protected:
    // Calls a gathering member with every choice of numbers for its five arguments.
    template <class Model>
    void sweep(const char* member, Model model, const std::array<Numbers, 5>& numbers) {
        Random random;
        GuardedBytes source(9, GuardedBytes::kEnd, random);
        GuardedBytes destination(11, GuardedBytes::kEnd);
        const ObjectRef from = view(source);
        const ObjectRef to = view(destination);
        const Bytes before(11, 0xEE);
        size_t all = 1;
        for (const Numbers& choice : numbers) all *= choice.size();
        const size_t every = all / rounds(all);
        size_t accepted = 0;
        for (size_t round = 0; round < all; round += every) {
            int32_t n[5];
            size_t rest = round;
            for (size_t i = 0; i < 5; rest /= numbers[i++].size())
                n[i] = numbers[i][rest % numbers[i].size()];
            std::ranges::copy(before, destination.data());
            const auto expected = model(source.copy(), before, n[0], n[1], n[2], n[3], n[4]);
            const bool done = call_for<bool>(to, member, {from, n[0], n[1], n[2], n[3], n[4]});
            accepted += done;
            ASSERT_TRUE(done == expected.has_value() && destination.copy() == expected.value_or(before))
                << member << "(" << n[0] << ", " << n[1] << ", " << n[2] << ", " << n[3] << ", " << n[4]
                << ") gave " << done << ", "
                << same_bytes(destination.bytes(), expected.value_or(before)).message();
        }
        EXPECT_GT(accepted * every, 1000u);
    }
};

Numbers with(Numbers numbers, std::initializer_list<int32_t> more) {
    numbers.insert(numbers.end(), more);
    return numbers;
}

TEST_F(StrideTest, GatheringIsDoneAsAWholeOrNotAtAll) {
    sweep("CopyNthBytesZOR", gathered_bytes,
          {extremes(9), extremes(11), with(extremes(9), {2, 3}), with(extremes(9), {2, 4, -2, -4}),
           with(extremes(3), {4})});
    sweep("CopyNthBitsZOR", gathered_bits,
          {with(extremes(72), {5}), with(extremes(88), {13}), with(extremes(72), {3, 8}),
           with(extremes(72), {2, 7}), with(extremes(3), {4})});
}

TEST_F(StrideTest, GatheringPacksPieceAfterPiece) {
    struct Example {
        const char* member;
        const char* source;  // nil: the block itself
        const char* before;
        std::vector<Value> numbers;
        const char* after;
    };
    const Example examples[] = {
        {"CopyNthBytesZOR",
         "01 02 03 04 05 06 07 08 09 0a",
         "00 00 00 00 00 00 00",
         {0, 0, 2, 4, 3},
         "01 02 05 06 09 0a 00"},
        {"CopyNthBytesZOR",
         "01 02 03 04 05 06 07 08 09 0a 0b",
         "00 00 00 00 00 00 00",
         {1, 2, 1, 3, 4},
         "00 00 02 05 08 0b 00"},
        {"CopyNthBytesZOR",
         nullptr,
         "01 02 03 04 05 06 07 08 09",
         {2, 0, 1, 3, 3},
         "03 06 09 04 05 06 07 08 09"},
        {"CopyNthBytesZOR", nullptr, "01 02 03 04 05 06", {0, 2, 2, 2, 2}, "01 02 01 02 01 02"},
        {"CopyNthBitsZOR", "b3 5c", "ff ff", {0, 0, 1, 1, 8}, "d2 ff"},
        {"CopyNthBitsZOR", "b3 5c", "ff ff", {0, 0, 16, 0, 1}, "b3 5c"},
        {"CopyNthBitsZOR", "b3", "ff ff", {0, 4, 4, 0, 1}, "0b ff"},
        {"CopyNthBitsZOR", "b3", "ff ff", {0, 3, 2, 0, 1}, "10 ff"},
        {"CopyNthBitsZOR", nullptr, "b3 5c ff", {0, 0, 1, 1, 8}, "d2 5c ff"},
        {"CopyNthBitsZOR", nullptr, "c5 00 00 00", {0, 8, 24, 0, 1}, "c5 c5 c5 c5"},
    };
    for (const Example& example : examples) {
        const ObjectRef destination = block(hex(example.before));
        std::vector<Value> arguments = {example.source ? block(hex(example.source)) : destination};
        arguments.insert(arguments.end(), example.numbers.begin(), example.numbers.end());
        EXPECT_TRUE(call_for<bool>(destination, example.member, arguments));
        EXPECT_TRUE(same_bytes(bytes(destination), hex(example.after))) << example.member;
    }
}

TEST_F(StrideTest, GatheringChecksInOrder) {
    const ObjectRef memory = block(hex("01 02 03 04"));
    const ObjectRef without_data = host().new_view(nullptr, 4);
    for (const char* member : {"CopyNthBytesZOR", "CopyNthBitsZOR"}) {
        EXPECT_EQ(raised([&] { call(memory, member, {ObjectRef(), -1, -1, -1, 1, 0}); }), kNilBlock);
        EXPECT_EQ(raised([&] { call({}, member, {memory, -1, -1, -1, 1, 0}); }), kNilBlock);
        EXPECT_FALSE(call_for<bool>(without_data, member, {memory, 0, 0, 1, 1, 0}));
        EXPECT_FALSE(call_for<bool>(memory, member, {without_data, 0, 0, 1, 1, 0}));
        EXPECT_TRUE(call_for<bool>(memory, member, {memory, -1, 3, -1, 1, 0}));
        EXPECT_FALSE(call_for<bool>(memory, member, {memory, -1, 3, 1, 1, 1}));
        // A negative count of bytes is refused; one of bits is nothing to do.
        EXPECT_EQ(call_for<bool>(memory, member, {memory, 0, 3, -1, 1, 1}), member[8] == 'i') << member;
    }
    EXPECT_TRUE(same_bytes(bytes(memory), hex("01 02 03 04")));
}

TEST_F(StrideTest, AnUnknownSizeLimitsNothing) {
    for (const int32_t size : {0, -1, INT32_MIN}) {
        GuardedBytes source(hex("81 02 03 04 05 00 00 01"));
        GuardedBytes destination(64);
        const ObjectRef from = view(source, size);
        const ObjectRef to = view(destination, size);
        EXPECT_TRUE(call_for<bool>(to, "CopyNthBytesZOR", {from, 4, 1, 1, -2, 3}));
        EXPECT_TRUE(call_for<bool>(to, "CopyNthBitsZOR", {from, 0, 3, 1, 6, 2}));
        // What lies in front of the first byte is outside all the same.
        EXPECT_FALSE(call_for<bool>(to, "CopyNthBytesZOR", {from, 1, 0, 1, -1, 3}));
        EXPECT_FALSE(call_for<bool>(to, "CopyNthBitsZOR", {from, 0, -1, 1, 0, 1}));
        EXPECT_TRUE(same_bytes(destination.bytes().first(5), hex("18 05 03 81 00")));
        // Whole groups of four are read and written.
        EXPECT_TRUE(call_for<bool>(from, "ExpandBitsZOR", {to, 5}));
        EXPECT_TRUE(same_bytes(destination.bytes().last(9), hex("00 00 00 00 00 00 00 00 ff")));
    }
}

TEST_F(StrideTest, BitsAreCountedIn64Bits) {
    GuardedBytes source(hex("81 42 24"));
    GuardedBytes destination(3);
    const ObjectRef from = view(source, 0x20000001);
    const ObjectRef to = view(destination, 0x20000001);
    EXPECT_TRUE(call_for<bool>(to, "CopyNthBitsZOR", {from, 0, 0, 24, 0, 1}));
    EXPECT_TRUE(same_bytes(destination.bytes(), source.bytes()));
    EXPECT_FALSE(call_for<bool>(from, "ExpandBitsZOR", {view(destination), 0x20000000}));
}

TEST_F(StrideTest, ExpandBitsStaysInsideBothBlocks) {
    Random random;
    const ObjectRef without_data = host().new_view(nullptr, 80);
    for (int32_t source_size = 1; source_size <= 9; ++source_size) {
        for (int32_t size = 1; size <= 80; ++size) {
            for (const int32_t count : with(extremes(source_size), {5})) {
                GuardedBytes source(size_t(source_size), GuardedBytes::kEnd, random);
                GuardedBytes destination(size_t(size), GuardedBytes::kEnd, random);
                Bytes expected = destination.copy();
                const bool fits = count > 0 && count <= source_size && int64_t(count) * 8 <= size;
                for (int32_t i = 0; fits && i < std::min(size, (count + 3) / 4 * 32); ++i) {
                    const bool bit = i / 8 < source_size && source.data()[i / 8] & 0x80 >> i % 8;
                    expected[size_t(i)] = bit ? 0x49 : 0x30;
                }
                ASSERT_EQ(
                    call_for<bool>(view(source), "ExpandBitsZOR", {view(destination), count, -0xD0, 0x249}),
                    fits);
                ASSERT_TRUE(same_bytes(destination.bytes(), expected))
                    << count << " of " << source_size << " to " << size;
                for (const ObjectRef& none : {ObjectRef(), without_data}) {
                    ASSERT_FALSE(call_for<bool>(none, "ExpandBitsZOR", {view(destination), count}));
                    ASSERT_FALSE(call_for<bool>(view(source), "ExpandBitsZOR", {none, count}));
                }
            }
        }
    }
}

}  // namespace
