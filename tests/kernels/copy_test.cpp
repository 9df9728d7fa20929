#include "kernels/copy.h"

#include "tests/kernels/level_test.h"

namespace {

LEVEL_TESTS(CopyKernel, fast_levels());

TEST_P(CopyKernel, IsTheByteByByteCopyForEveryOverlap) {
    Random random;
    for (size_t round = 0; round < rounds(4000); ++round) {
        const size_t size = between<size_t>(random, 0, round % 100 == 0 ? 20000 : 300);
        GuardedBytes memory(size, GuardedBytes::kBothSides[round % 2], random);
        const size_t count = between<size_t>(random, 0, size);
        const size_t from = between<size_t>(random, 0, size - count);
        const size_t to = between<size_t>(random, 0, size - count);
        std::vector<uint8_t> expected = memory.copy();
        plain().copy(expected.data() + to, expected.data() + from, count);
        fast().copy(memory.data() + to, memory.data() + from, count);
        ASSERT_TRUE(same_bytes(memory.bytes(), expected))
            << count << " bytes from " << from << " to " << to << " of " << size;
        ASSERT_TRUE(memory.untouched_around());
    }
}

}  // namespace
