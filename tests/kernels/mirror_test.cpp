#include "kernels/mirror.h"

#include "tests/kernels/in_place.h"

namespace {

LEVEL_TESTS(MirrorKernels, fast_levels());

TEST_P(MirrorKernels, ChangeTheirRangeAsThePlainOnes) {
    const InPlace kernels[] = {
        {"reverse_bytes", fast().reverse_bytes, plain().reverse_bytes},
        {"reverse_bits_in_bytes", fast().reverse_bits_in_bytes, plain().reverse_bits_in_bytes},
    };
    check_in_place(kernels);
}

// Every way in which a range can lie in its first and its last byte, on memory that ends with the latter.
TEST_P(MirrorKernels, ReverseEveryBitRange) {
    Random random;
    for (const auto side : GuardedBytes::kBothSides) {
        for (size_t end = 0; end <= 8 * 56; ++end) {
            GuardedBytes memory((end + 7) / 8, side, random);
            for (size_t first = 0; first <= end; first += first < 24 ? 1 : 5) {
                std::vector<uint8_t> expected = memory.copy();
                plain().reverse_bits(expected.data(), first, end - first);
                fast().reverse_bits(memory.data(), first, end - first);
                ASSERT_TRUE(same_bytes(memory.bytes(), expected)) << "bits " << first << " to " << end;
            }
            ASSERT_TRUE(memory.untouched_around());
        }
    }
}

}  // namespace
