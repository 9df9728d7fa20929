#include "kernels/mirror.h"

#include "tests/kernels/in_place.h"

namespace {

TEST(MirrorKernels, ChangeTheirRangeAsThePlainOnes) {
    const InPlace kernels[] = {
        {"reverse_bytes", kernels::reverse_bytes, kernels::plain::reverse_bytes},
        {"reverse_bits_in_bytes", kernels::reverse_bits_in_bytes, kernels::plain::reverse_bits_in_bytes},
    };
    check_in_place(kernels);
}

// A failure names the bits.
void check_bits(GuardedBytes& memory, size_t first, size_t count) {
    std::vector<uint8_t> expected = memory.copy();
    kernels::plain::reverse_bits(expected.data(), first, count);
    kernels::reverse_bits(memory.data(), first, count);
    ASSERT_TRUE(same_bytes(memory.bytes(), expected))
        << count << " bits from " << first << " of " << memory.size() << " bytes";
}

// Every way in which a range can lie in its first and its last byte, on memory that ends with the latter.
TEST(MirrorKernels, ReverseEveryShortBitRange) {
    Random random;
    for (const auto side : GuardedBytes::kBothSides) {
        for (size_t end = 0; end <= 8 * 40; ++end) {
            GuardedBytes memory((end + 7) / 8, side, random);
            for (size_t first = 0; first <= end; first += first < 24 ? 1 : 5) {
                ASSERT_NO_FATAL_FAILURE(check_bits(memory, first, end - first));
            }
            ASSERT_TRUE(memory.untouched_around());
        }
    }
}

TEST(MirrorKernels, ReverseLongBitRanges) {
    Random random;
    for (int round = 0; round < 300; ++round) {
        const size_t size = between<size_t>(random, 1, 5000);
        GuardedBytes memory(size, GuardedBytes::kBothSides[round % 2], random);
        const size_t first = between<size_t>(random, 0, std::min<size_t>(8 * size, 200));
        ASSERT_NO_FATAL_FAILURE(check_bits(memory, first, between<size_t>(random, 0, 8 * size - first)));
        ASSERT_TRUE(memory.untouched_around());
    }
}

}  // namespace
