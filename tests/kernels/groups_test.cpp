#include "kernels/groups.h"

#include <algorithm>
#include <limits>

#include "tests/kernels/level_test.h"

namespace {

LEVEL_TESTS(GroupsKernels, fast_levels());

TEST_P(GroupsKernels, CompleteEverySum) {
    Random random;
    constexpr int32_t kLimits[] = {INT32_MIN, -1, 0, 1, 255, 256, 765, 766, 1019, 1020, 1021, INT32_MAX};
    for (size_t round = 0; round < rounds(6000); ++round) {
        const auto groups = between<size_t>(random, 0, round % 100 == 0 ? 2000 : 40);
        const int32_t limit = round % 2 ? kLimits[random() % std::size(kLimits)] : between(random, 0, 800);
        const bool zero_stays = random() % 2;
        GuardedBytes memory(4 * groups, GuardedBytes::kBothSides[random() % 2], random);
        for (size_t i = 0; i < groups; i += 3) std::fill_n(memory.data() + 4 * i, 3, uint8_t(0));
        std::vector<uint8_t> expected = memory.copy();
        plain().complete_sum(expected.data(), groups, limit, zero_stays);
        fast().complete_sum(memory.data(), groups, limit, zero_stays);
        ASSERT_TRUE(same_bytes(memory.bytes(), expected))
            << "limit " << limit << ", zero stays: " << zero_stays;
        ASSERT_TRUE(memory.untouched_around());
    }
}

TEST_P(GroupsKernels, ReplaceWhatIsSimilar) {
    Random random;
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr double kTolerances[] = {0,
                                      0.1,
                                      1,
                                      2,
                                      -0.1,
                                      -1,
                                      -2,
                                      1e9,
                                      -1e9,
                                      1e300,
                                      kInfinity,
                                      -kInfinity,
                                      std::numeric_limits<double>::quiet_NaN()};
    constexpr int32_t kReferences[] = {INT32_MIN, -200, -1, 0, 1, 255, 256, 300, INT32_MAX};
    size_t replaced = 0;
    for (size_t round = 0; round < rounds(20000); ++round) {
        const auto groups = between<size_t>(random, 0, round % 100 == 0 ? 2000 : 40);
        const double tolerance = round % 2 ? kTolerances[random() % std::size(kTolerances)]
                                           : std::uniform_real_distribution(0.0, 1.2)(random);
        int32_t reference[4];
        int32_t replacement[4];
        for (int32_t& number : reference)
            number = random() % 8 ? between(random, 0, 255) : kReferences[random() % std::size(kReferences)];
        for (int32_t& number : replacement) number = between(random, -1000, 1000);
        // Bytes that are the references or their bounds, so that many groups match and many just fail.
        GuardedBytes memory(4 * groups, GuardedBytes::kBothSides[random() % 2], random);
        for (size_t i = 0; i < memory.size(); ++i) {
            const double byte = reference[i % 4] * (random() % 2   ? 1.0
                                                    : random() % 2 ? 1.0 + tolerance
                                                                   : 1.0 - tolerance);
            if (byte >= 0 && byte < 255) memory.data()[i] = uint8_t(byte + double(random() % 16 == 0));
        }
        std::vector<uint8_t> expected = memory.copy();
        plain().replace_similar(expected.data(), groups, reference, replacement, tolerance);
        replaced += expected != memory.copy();
        fast().replace_similar(memory.data(), groups, reference, replacement, tolerance);
        ASSERT_TRUE(same_bytes(memory.bytes(), expected)) << "tolerance " << tolerance;
        ASSERT_TRUE(memory.untouched_around());
    }
    EXPECT_GT(replaced, rounds(1000));
}

}  // namespace
