// Gathering pieces of bytes and of bits, and expanding bits. Sizes are those of what is stored.
#include <cstring>

#include "benchmarks/passes.h"
#include "benchmarks/rows/goals.h"

namespace bench {
namespace {

using Member = REALboolean(REALmemoryBlock, REALmemoryBlock, int32_t, int32_t, int32_t, int32_t, int32_t);

void gather_bytes(Case& c, size_t piece, size_t step) {
    const size_t pieces = c.size / piece;
    const size_t n = pieces * piece;
    const size_t span = (pieces - 1) * step + piece;
    uint8_t* const from = c.random(0, span);
    uint8_t* const to = c.region(1);
    const REALmemoryBlock block = c.block(to);
    const REALmemoryBlock source = c.block(from, span);
    c.bytes = n;
    c.rule({to, n}, [=] { return rules().gather(to, from, piece, ptrdiff_t(step), pieces), true; });
    c.member<Member>("CopyNthBytesZOR", [=](auto* member) {
        return member(block, source, 0, 0, int32_t(piece), int32_t(step), int32_t(pieces));
    });
    c.kernel(
        [=](const kernels::Kernels& k) { return k.gather(to, from, piece, ptrdiff_t(step), pieces), true; });
    c.peer("memcpy for each piece", [=] {
        for (size_t i = 0; i < pieces; ++i) std::memcpy(to + i * piece, from + i * step, piece);
        return true;
    });
    c.peer("AVX-512 pass", piece < 64 ? gather_pass() : nullptr,
           [=](auto* pass) { return pass(to, from, piece, step, pieces), true; });
    if (step <= 64) c.limit([=](const Limit& limit) { limit.transfer(to, n, from, span); });
}

struct BitOffsets {
    size_t from;
    size_t to;
};

// Groups of bits that follow one another without a gap.
void shift_bits(Case& c, BitOffsets offsets) {
    const size_t n = c.size;
    const size_t groups = n - 2;
    uint8_t* const from = c.random(0, n);
    uint8_t* const to = c.region(1);
    const REALmemoryBlock block = c.block(to);
    const REALmemoryBlock source = c.block(from);
    c.rule({to, n},
           [=] { return rules().gather_bits(to, offsets.to, from, offsets.from, 8, 8, groups), true; });
    c.member<Member>("CopyNthBitsZOR", [=](auto* member) {
        return member(block, source, int32_t(offsets.from), int32_t(offsets.to), 8, 0, int32_t(groups));
    });
    c.kernel([=](const kernels::Kernels& k) {
        return k.gather_bits(to, offsets.to, from, offsets.from, 8, 8, groups), true;
    });
    const bool plain_copy = offsets.from == 0 && offsets.to == 0;
    c.peer(
        "libc memcpy", std::memcpy, [=](auto* copy) { return copy(to, from, groups) == to; }, plain_copy);
    c.limit([=](const Limit& limit) { limit.transfer(to, n, from, n); });
}

void gather_bits(Case& c, size_t bits, size_t gap) {
    const size_t groups = 8 * c.size / bits;
    const size_t n = (groups * bits + 7) / 8;
    const size_t step = bits + gap;
    uint8_t* const from = c.random(0, (groups * step + 7) / 8);
    uint8_t* const to = c.region(1);
    const REALmemoryBlock block = c.block(to);
    const REALmemoryBlock source = c.block(from, (groups * step + 7) / 8);
    c.rule({to, n}, [=] { return rules().gather_bits(to, 0, from, 0, bits, step, groups), true; });
    c.member<Member>("CopyNthBitsZOR", [=](auto* member) {
        return member(block, source, 0, 0, int32_t(bits), int32_t(gap), int32_t(groups));
    });
    c.kernel(
        [=](const kernels::Kernels& k) { return k.gather_bits(to, 0, from, 0, bits, step, groups), true; });
    c.peer("loop over pext", pext_pass(),
           [=](auto* pass) { return pass(to, from, bits, step, groups), true; });
}

void expand(Case& c) {
    const size_t n = c.size;
    uint8_t* const from = c.random(0, n / 8);
    uint8_t* const to = c.region(1);
    const REALmemoryBlock block = c.block(from, n / 8);
    const REALmemoryBlock destination = c.block(to);
    c.rule({to, n}, [=] { return rules().expand_bits(to, n, from, n / 8, 3, 200), true; });
    c.member<REALboolean(REALmemoryBlock, REALmemoryBlock, int32_t, int32_t, int32_t)>(
        "ExpandBitsZOR", [=](auto* member) { return member(block, destination, int32_t(n / 8), 3, 200); });
    c.kernel([=](const kernels::Kernels& k) { return k.expand_bits(to, n, from, n / 8, 3, 200), true; });
    c.limit([=](const Limit& limit) { limit.transfer(to, n, from, n / 8); });
}

struct Steps {
    size_t piece;
    std::vector<size_t> steps;
};

}  // namespace

void add_gather_rows(Rows& rows) {
    const Goal of_pass = at_least(0.8, {"AVX-512 pass"});
    const Goal of_memcpy = at_least(1.5, {"memcpy for each piece"});
    const std::vector<size_t> sizes = {16, 4096, 256 << 10};
    const Steps all_steps[] = {
        {1, {2, 3, 4, 5, 8, 32}}, {2, {3, 4, 6, 8, 32}}, {3, {4, 5, 6, 8}}, {4, {5, 8, 12, 16, 100}},
        {8, {12, 16, 24, 32}},    {16, {20, 32, 48}},    {64, {80, 128}},   {256, {512}},
    };
    for (const Steps& group : all_steps) {
        for (const size_t step : group.steps) {
            const size_t piece = group.piece;
            const bool charted = step == 4 && piece != 2;
            rows.push_back({"gathering",
                            "CopyNthBytesZOR",
                            std::to_string(piece) + " of " + std::to_string(step) + " bytes",
                            [=](Case& c) { gather_bytes(c, piece, step); },
                            {piece < 64 ? of_pass : of_memcpy},
                            false,
                            charted,
                            piece <= 16 ? sizes : std::vector<size_t>{4096, 256 << 10},
                            64 << 20});
        }
    }
    for (const BitOffsets offsets : {BitOffsets{0, 0}, {3, 0}, {0, 5}, {3, 5}}) {
        const std::string title =
            "no gap, bit " + std::to_string(offsets.from) + " to bit " + std::to_string(offsets.to);
        rows.push_back({"gathering",
                        "CopyNthBitsZOR",
                        title,
                        [=](Case& c) { shift_bits(c, offsets); },
                        {at_least(0.6, {"libc memcpy"})},
                        false,
                        offsets.from == 3,
                        kUsualSizes,
                        64 << 20});
    }
    const size_t bits_and_gaps[][2] = {{1, 1}, {1, 7},  {2, 6},   {3, 5},  {4, 4},  {7, 1},
                                       {8, 8}, {12, 4}, {16, 16}, {24, 8}, {32, 1}, {32, 32}};
    const Goal small = {.instructions = 400, .from = 8, .to = 8};
    for (const auto& [bits, gap] : bits_and_gaps) {
        rows.push_back({"gathering",
                        "CopyNthBitsZOR",
                        std::to_string(bits) + " bits, gap " + std::to_string(gap),
                        [=, b = bits, g = gap](Case& c) { gather_bits(c, b, g); },
                        {at_least(1, {"loop over pext"}), small},
                        false,
                        false,
                        bits == 1 && gap == 1 ? std::vector<size_t>{8, 4096, 256 << 10}
                                              : std::vector<size_t>{4096, 256 << 10}});
    }
    rows.push_back({"gathering", "ExpandBitsZOR", "", expand, {of_limit(0.9)}, false, true});
}

}  // namespace bench
