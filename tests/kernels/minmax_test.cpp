#include "kernels/minmax.h"

#include <algorithm>
#include <array>

#include "tests/kernels/level_test.h"

namespace {

LEVEL_TESTS(MinMaxKernels, fast_levels());

TEST_P(MinMaxKernels, ChooseElementAfterElement) {
    Random random;
    for (size_t round = 0; round < rounds(20000); ++round) {
        const auto element = size_t(round) % kernels::kElements;
        const size_t width = size_t(1) << element / 2;
        const bool larger = round / 8 % 2;
        const auto bytes = between<size_t>(random, 0, round % 100 == 0 ? 5000 : 150);
        // The three arrays lie apart, overlap, or are the same: a store can change what is read later.
        size_t at[3];
        for (size_t& each : at)
            each = random() % 4 == 0 ? 0 : between<size_t>(random, 0, random() % 2 ? 20 : 2 * bytes);
        GuardedBytes memory(*std::ranges::max_element(at) + bytes, GuardedBytes::kBothSides[random() % 2]);
        // Numbers whose parts are often equal or extreme, so that every part of a comparison decides at
        // times.
        for (uint8_t& byte : memory.bytes())
            byte = std::array<uint8_t, 5>{0x00, 0x01, 0x7F, 0x80, 0xFF}[random() % 5];
        std::vector<uint8_t> expected = memory.copy();
        const auto run = [&](const kernels::Kernels& level, uint8_t* data) {
            const auto& kernels = larger ? level.maximum : level.minimum;
            kernels[element](data + at[0], data + at[1], data + at[2], bytes / width);
        };
        run(plain(), expected.data());
        run(fast(), memory.data());
        ASSERT_TRUE(same_bytes(memory.bytes(), expected) && memory.untouched_around())
            << same_bytes(memory.bytes(), expected).message() << (larger ? "\nmaximum of " : "\nminimum of ")
            << bytes << " bytes at " << at[1] << " and " << at[2] << " to " << at[0] << ", kind of element "
            << element;
    }
}

}  // namespace
