#include "kernels/stride.h"

#include <algorithm>

#include "tests/support/guarded.h"

namespace {

// Where a source of `source` bytes and a destination of `destination` bytes lie: each in memory of its own,
// or both in one, overlapping in any way.
class Places {
 public:
    Places(Random& random, size_t source, size_t destination, bool apart)
        : source_at_(apart ? 0 : between<size_t>(random, 0, source)),
          destination_at_(apart ? 0 : between<size_t>(random, 0, source)),
          memory_(source_at_ + source, GuardedBytes::kBothSides[random() % 2], random),
          other_(apart ? destination : 0, GuardedBytes::kBothSides[random() % 2], random),
          overlapping_(std::max(source_at_ + source, destination_at_ + destination),
                       GuardedBytes::kBothSides[random() % 2], random),
          apart_(apart) {}

    uint8_t* source() { return (apart_ ? memory_.data() : overlapping_.data()) + source_at_; }
    uint8_t* destination() { return (apart_ ? other_.data() : overlapping_.data()) + destination_at_; }

    // Applies both forms of a kernel, the plain one to copies.
    template <class Fast, class Plain>
    testing::AssertionResult same(Fast fast, Plain plain) {
        std::vector<uint8_t> from = apart_ ? memory_.copy() : overlapping_.copy();
        std::vector<uint8_t> to = other_.copy();
        plain((apart_ ? to : from).data() + destination_at_, from.data() + source_at_);
        fast(destination(), source());
        GuardedBytes& changed = apart_ ? other_ : overlapping_;
        if (testing::AssertionResult around = changed.untouched_around(); !around) return around;
        return same_bytes(changed.bytes(), apart_ ? to : from);
    }

 private:
    size_t source_at_;
    size_t destination_at_;
    GuardedBytes memory_;
    GuardedBytes other_;
    GuardedBytes overlapping_;
    bool apart_;
};

TEST(StrideKernels, GatherCopiesPieceAfterPiece) {
    Random random;
    for (int round = 0; round < 20000; ++round) {
        const auto piece = between<size_t>(random, 0, round % 8 == 0 ? 80 : 18);
        const auto pieces = between<size_t>(random, 0, round % 100 == 0 ? 2000 : 20);
        const auto step = round % 4 == 0 ? ptrdiff_t(piece) : between<ptrdiff_t>(random, -24, 24);
        const size_t way = pieces > 0 ? (pieces - 1) * size_t(std::abs(step)) : 0;
        Places places(random, way + piece, piece * pieces, round % 3 == 0);
        const size_t first = step < 0 ? way : 0;
        const auto run = [&](auto* gather) {
            return [=](uint8_t* to, uint8_t* from) { gather(to, from + first, piece, step, pieces); };
        };
        ASSERT_TRUE(places.same(run(kernels::gather), run(kernels::plain::gather)))
            << pieces << " pieces of " << piece << " bytes at a distance of " << step;
    }
}

TEST(StrideKernels, GatherBitsTakesAndStoresBitAfterBit) {
    Random random;
    for (int round = 0; round < 20000; ++round) {
        const auto bits = between<uint64_t>(random, 0, round % 4 == 0 ? 200 : 20);
        const auto step =
            bits + (round % 5 == 0 ? 0 : between<uint64_t>(random, 0, round % 3 == 0 ? 100 : 9));
        const auto groups = between<size_t>(random, 0, round % 100 == 0 ? 3000 : 40);
        const auto from_bit = between<uint64_t>(random, 0, 20);
        const auto to_bit = between<uint64_t>(random, 0, 20);
        const uint64_t way = groups > 0 ? (groups - 1) * step : 0;
        Places places(random, size_t(from_bit + way + bits + 7) / 8, size_t(to_bit + bits * groups + 7) / 8,
                      round % 2 == 0);
        const auto run = [&](auto* gather) {
            return
                [=](uint8_t* to, uint8_t* from) { gather(to, to_bit, from, from_bit, bits, step, groups); };
        };
        ASSERT_TRUE(places.same(run(kernels::gather_bits), run(kernels::plain::gather_bits)))
            << groups << " groups of " << bits << " bits at a distance of " << step << " from bit "
            << from_bit << " to bit " << to_bit;
    }
}

TEST(StrideKernels, ExpandBitsGivesAByteForEachBit) {
    Random random;
    for (int round = 0; round < 4000; ++round) {
        const auto source = between<size_t>(random, 0, round % 50 == 0 ? 2000 : 30);
        const auto destination = between<size_t>(random, 0, 8 * source + 40);
        const auto low = uint8_t(random());
        const auto high = uint8_t(random());
        Places places(random, source, destination, round % 2 == 0);
        const auto run = [&](auto* expand) {
            return [=](uint8_t* to, uint8_t* from) { expand(to, destination, from, source, low, high); };
        };
        ASSERT_TRUE(places.same(run(kernels::expand_bits), run(kernels::plain::expand_bits)))
            << source << " bytes to " << destination;
    }
}

}  // namespace
