#include "kernels/gather.h"

#include <algorithm>

#include "tests/kernels/level_test.h"

namespace {

LEVEL_TESTS(GatherKernels, fast_levels());

// Whether both forms of a kernel do the same where the two runs lie apart or overlap in any way.
template <class Fast, class Plain, class... Arguments>
testing::AssertionResult same(Random& random, size_t source, size_t destination, Fast fast, Plain plain,
                              size_t first, Arguments... arguments) {
    size_t from = 0;
    size_t to = 0;
    (random() % 2 ? from : to) = between<size_t>(random, 0, source + destination);
    GuardedBytes memory(std::max(from + source, to + destination), GuardedBytes::kBothSides[random() % 2],
                        random);
    std::vector<uint8_t> expected = memory.copy();
    plain(expected.data() + to, expected.data() + from + first, arguments...);
    fast(memory.data() + to, memory.data() + from + first, arguments...);
    if (testing::AssertionResult around = memory.untouched_around(); !around) return around;
    return same_bytes(memory.bytes(), expected) << "\nfrom " << from << " to " << to;
}

TEST_P(GatherKernels, GatherCopiesPieceAfterPiece) {
    Random random;
    for (size_t round = 0; round < rounds(20000); ++round) {
        const auto piece = round % 100 == 1 ? between<size_t>(random, 200, 2000)
                           : random() % 2   ? size_t(1) << random() % 4
                                            : between<size_t>(random, 0, round % 8 == 0 ? 200 : 18);
        const auto pieces = between<size_t>(random, 0, round % 8 == 0 ? 400 : round % 4 == 0 ? 100 : 20);
        const auto step =
            random() % 2 ? ptrdiff_t(piece << random() % 3) : between<ptrdiff_t>(random, -24, 40);
        const size_t way = pieces > 0 ? (pieces - 1) * size_t(std::abs(step)) : 0;
        ASSERT_TRUE(same(random, way + piece, piece * pieces, fast().gather, plain().gather,
                         step < 0 ? way : 0, piece, step, pieces))
            << pieces << " pieces of " << piece << " bytes at a distance of " << step;
    }
}

TEST_P(GatherKernels, GatherBitsTakesAndStoresBitAfterBit) {
    Random random;
    const auto gather = [](auto* kernel) {
        return [=](uint8_t* to, const uint8_t* from, auto to_bit, auto... rest) {
            kernel(to, to_bit, from, rest...);
        };
    };
    for (size_t round = 0; round < rounds(20000); ++round) {
        const uint64_t unit = round % 10 == 1 ? 8 : 1;  // whole bytes now and then
        const auto bits = unit * between<uint64_t>(random, 0, round % 4 == 0 ? 200 : 20);
        const auto step =
            bits + unit * (round % 5 == 0 ? 0 : between<uint64_t>(random, 0, round % 3 == 0 ? 100 : 9));
        const auto groups = between<size_t>(random, 0, round % 100 == 0 ? 3000 : 40);
        const auto from_bit = unit * between<uint64_t>(random, 0, 130);
        const auto to_bit = unit * between<uint64_t>(random, 0, 130);
        const uint64_t end = from_bit + (groups > 0 ? (groups - 1) * step : 0) + bits;
        ASSERT_TRUE(same(random, size_t(end + 7) / 8, size_t(to_bit + bits * groups + 7) / 8,
                         gather(fast().gather_bits), gather(plain().gather_bits), 0, to_bit, from_bit, bits,
                         step, groups))
            << groups << " groups of " << bits << " bits at a distance of " << step << " from bit "
            << from_bit << " to bit " << to_bit;
    }
}

TEST_P(GatherKernels, ExpandBitsGivesAByteForEachBit) {
    Random random;
    const auto expand = [](auto* kernel) {
        return [=](uint8_t* to, const uint8_t* from, size_t to_count, auto... rest) {
            kernel(to, to_count, from, rest...);
        };
    };
    for (size_t round = 0; round < rounds(4000); ++round) {
        const auto source = between<size_t>(random, 0, round % 50 == 0 ? 2000 : 30);
        const auto destination = between<size_t>(random, 0, 8 * source + 40);
        ASSERT_TRUE(same(random, source, destination, expand(fast().expand_bits), expand(plain().expand_bits),
                         0, destination, source, uint8_t(random()), uint8_t(random())))
            << source << " bytes to " << destination;
    }
}

}  // namespace
