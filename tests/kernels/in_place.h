// Holds kernels that change a run of bytes in place against their plain forms.
#pragma once

#include <algorithm>
#include <span>

#include "tests/kernels/level_test.h"

struct InPlace {
    const char* name;
    void (*fast)(uint8_t* data, size_t n);
    void (*plain)(uint8_t* data, size_t n);
};

// Runs at every alignment, that fill their memory or lie inside it.
inline void check_in_place(std::span<const InPlace> kernels) {
    Random random;
    for (size_t round = 0; round < rounds(4000); ++round) {
        const size_t size = between<size_t>(random, 0, round % 100 == 0 ? 20000 : 200);
        const size_t start = round % 4 == 0 ? 0 : between<size_t>(random, 0, std::min<size_t>(size, 20));
        const size_t count = round % 3 == 0 ? size - start : between<size_t>(random, 0, size - start);
        for (const InPlace& kernel : kernels) {
            GuardedBytes memory(size, GuardedBytes::kBothSides[round % 2], random);
            std::vector<uint8_t> expected = memory.copy();
            kernel.plain(expected.data() + start, count);
            kernel.fast(memory.data() + start, count);
            ASSERT_TRUE(same_bytes(memory.bytes(), expected))
                << kernel.name << ", " << count << " bytes from " << start << " of " << size;
            ASSERT_TRUE(memory.untouched_around()) << kernel.name;
        }
    }
}
