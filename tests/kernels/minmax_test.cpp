#include "kernels/minmax.h"

#include "tests/support/guarded.h"

namespace {

using Kernel = decltype(kernels::minimum);

struct Case {
    const char* name;
    Kernel* fast;
    Kernel* plain;
};
constexpr Case kCases[] = {
    {"minimum", kernels::minimum, kernels::plain::minimum},
    {"maximum", kernels::maximum, kernels::plain::maximum},
};

// Numbers whose parts are often equal or extreme, so that every part of a comparison decides at times.
void fill_with_close_numbers(std::span<uint8_t> bytes, Random& random) {
    constexpr uint8_t kBytes[] = {0x00, 0x01, 0x7F, 0x80, 0xFF};
    for (uint8_t& byte : bytes) byte = kBytes[random() % 5];
}

TEST(MinMaxKernels, ChooseElementAfterElement) {
    Random random;
    for (int round = 0; round < 20000; ++round) {
        const Case& kernel = kCases[round % 2];
        const int32_t bits = 8 << round / 2 % 4;
        const bool is_signed = round / 8 % 2;
        const auto bytes = between<size_t>(random, 0, round % 100 == 0 ? 5000 : 150);
        SCOPED_TRACE(testing::Message() << kernel.name << " of " << bytes << " bytes of "
                                        << (is_signed ? "signed " : "unsigned ") << bits << " bits");
        const auto side = GuardedBytes::kBothSides[random() % 2];
        GuardedBytes first(bytes, side);
        GuardedBytes second(bytes, side);
        GuardedBytes destination(bytes, side, random);
        fill_with_close_numbers(first.bytes(), random);
        fill_with_close_numbers(second.bytes(), random);
        std::vector<uint8_t> expected = destination.copy();
        ASSERT_TRUE(kernel.plain(expected.data(), first.data(), second.data(), bytes, bits, is_signed));
        ASSERT_TRUE(kernel.fast(destination.data(), first.data(), second.data(), bytes, bits, is_signed));
        ASSERT_TRUE(same_bytes(destination.bytes(), expected));
        ASSERT_TRUE(destination.untouched_around());

        // The three in one memory, close to one another: a store can change what is read later.
        GuardedBytes memory(bytes + 40, side);
        fill_with_close_numbers(memory.bytes(), random);
        expected = memory.copy();
        const size_t at[] = {random() % 41, random() % 41, random() % 41};
        kernel.plain(expected.data() + at[0], expected.data() + at[1], expected.data() + at[2], bytes, bits,
                     is_signed);
        kernel.fast(memory.data() + at[0], memory.data() + at[1], memory.data() + at[2], bytes, bits,
                    is_signed);
        ASSERT_TRUE(same_bytes(memory.bytes(), expected)) << at[1] << " and " << at[2] << " to " << at[0];
    }
}

TEST(MinMaxKernels, RefuseOtherWidths) {
    const uint8_t input[32] = {1};
    for (const int32_t bits : {INT32_MIN, -8, 0, 1, 7, 9, 24, 63, 128, INT32_MAX}) {
        uint8_t destination[32] = {};
        for (const Case& kernel : kCases) {
            EXPECT_FALSE(kernel.fast(destination, input, input, sizeof input, bits, true)) << bits;
            EXPECT_FALSE(kernel.plain(destination, input, input, sizeof input, bits, false)) << bits;
        }
        EXPECT_EQ(destination[0], 0);
    }
}

}  // namespace
