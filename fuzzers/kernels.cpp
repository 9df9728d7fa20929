// Kernels: each operation of each instruction-set level that runs here, on arbitrary bytes, lengths,
// alignments and overlaps, held against the plain rule: its result and every byte of memory, with nothing
// touched around it.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "fuzzers/world.h"
#include "kernels/levels.h"

namespace {

using kernels::Kernels;

// Three numbers that an operation takes as it likes, and two runs of bytes that may overlap.
struct Operands {
    uint8_t* to;
    const uint8_t* from;
    const uint8_t* second;
    size_t n;  // bytes of each
    uint32_t a, b, c;
    double factor;
};

using Operation = uint64_t (*)(const Kernels&, const Operands&);

template <auto Kernel>
uint64_t in_place(const Kernels& kernels, const Operands& o) {
    return (kernels.*Kernel)(o.to, o.n), 0;
}
template <auto Kernel>
uint64_t find_value(const Kernels& kernels, const Operands& o) {
    return (kernels.*Kernel)(o.from, o.n, uint8_t(o.a));
}
template <auto Kernel>
uint64_t test(const Kernels& kernels, const Operands& o) {
    return (kernels.*Kernel)(o.from, o.n);
}
template <auto Kernel>
uint64_t combine(const Kernels& kernels, const Operands& o) {
    const size_t kind = o.a % kernels::kElements;
    return (kernels.*Kernel)[kind](o.to, o.from, o.second, o.n >> kind / 2), 0;
}
template <auto Kernel, size_t Sample>
uint64_t scale(const Kernels& kernels, const Operands& o) {
    return (kernels.*Kernel)(o.to, o.n / Sample, o.factor), 0;
}
template <auto Kernel>
uint64_t convert(const Kernels& kernels, const Operands& o) {
    return (kernels.*Kernel)(o.to, o.from, o.n / 8), 0;
}

constexpr Operation kOperations[] = {
    [](const Kernels& kernels, const Operands& o) -> uint64_t { return kernels.copy(o.to, o.from, o.n), 0; },
    [](const Kernels& kernels, const Operands& o) -> uint64_t {
        return kernels.fill(o.to, o.n, uint8_t(o.a)), 0;
    },
    in_place<&Kernels::invert>,
    in_place<&Kernels::swap_units16>,
    in_place<&Kernels::swap_units32>,
    in_place<&Kernels::reverse_bytes>,
    in_place<&Kernels::reverse_bits_in_bytes>,
    [](const Kernels& kernels, const Operands& o) -> uint64_t {
        const size_t first = o.a % (8 * o.n + 1);
        return kernels.reverse_bits(o.to, first, o.b % (8 * o.n - first + 1)), 0;
    },
    find_value<&Kernels::find_byte>,
    find_value<&Kernels::find_not_byte>,
    [](const Kernels& kernels, const Operands& o) -> uint64_t {
        return kernels.find(o.from, o.n, o.second, 1 + o.a % (o.n + 1));
    },
    [](const Kernels& kernels, const Operands& o) -> uint64_t {
        return kernels.equal(o.from, o.second, o.n);
    },
    test<&Kernels::all_zero>,
    test<&Kernels::all_ascii>,
    [](const Kernels& kernels, const Operands& o) -> uint64_t {
        const size_t piece = o.a % (o.n + 1);
        const size_t step = o.b % 40;
        const size_t room = o.n - piece;
        size_t pieces = 1 + (step > 0 ? room / step : o.c % 64);
        if (piece > 0) pieces = std::min(pieces, o.n / piece);
        const bool backwards = o.c % 2 != 0;
        const size_t way = backwards && pieces > 0 ? (pieces - 1) * step : 0;
        return kernels.gather(o.to, o.from + way, piece, backwards ? -ptrdiff_t(step) : ptrdiff_t(step),
                              pieces),
               0;
    },
    [](const Kernels& kernels, const Operands& o) -> uint64_t {
        if (o.n < 8) return 0;
        const uint64_t bits = 1 + o.a % (o.a % 3 == 0 ? 8 * o.n - 40 : 20);
        const uint64_t step = bits + o.b % 30;
        const uint64_t from_bit = o.c % 20;
        const uint64_t to_bit = o.c / 20 % 20;
        const uint64_t room = 8 * o.n - 20;
        const size_t groups = size_t(std::min(1 + (room - bits) / step, room / bits));
        return kernels.gather_bits(o.to, to_bit, o.from, from_bit, bits, step, groups), 0;
    },
    [](const Kernels& kernels, const Operands& o) -> uint64_t {
        kernels.expand_bits(o.to, o.n, o.from, o.a % (o.n + 1), uint8_t(o.b), uint8_t(o.c));
        return 0;
    },
    combine<&Kernels::minimum>,
    combine<&Kernels::maximum>,
    scale<&Kernels::scale_uint8, 1>,
    scale<&Kernels::scale_uint16, 2>,
    [](const Kernels& kernels, const Operands& o) -> uint64_t {
        return kernels.complete_sum(o.to, o.n / 4, int32_t(o.a) % 1100, o.b % 2 != 0), 0;
    },
    [](const Kernels& kernels, const Operands& o) -> uint64_t {
        const auto part = [&](uint32_t word, int i) { return int32_t(word >> 8 * i & 0xFF); };
        kernels.replace_similar(o.to, o.n / 4, {part(o.a, 0), part(o.a, 1), part(o.a, 2), part(o.a, 3)},
                                {part(o.b, 0), part(o.b, 1), part(o.b, 2), part(o.b, 3)}, o.factor);
        return 0;
    },
    [](const Kernels& kernels, const Operands& o) -> uint64_t {
        return kernels.log_sweep(o.to, o.n / 8, int32_t(o.a), int32_t(o.b), o.factor), 0;
    },
    convert<&Kernels::polar_to_cartesian>,
    convert<&Kernels::cartesian_to_polar>,
};
constexpr size_t kFloats = 3;  // of the operations, the last ones write floats

struct Head {
    uint8_t operation;
    uint8_t flags;
    uint8_t to, from, second;  // offsets of the runs in the memory
    uint32_t a, b, c;
    double factor;
} __attribute__((packed));

fuzz::Slot& memory() {
    static fuzz::Slot slot;
    return slot;
}

// Read across two floats, a NaN shows which one it is, and nobody says which that is.
bool tells_nans_apart(const Operands& operands, size_t operation) {
    const bool floats = operation + kFloats >= std::size(kOperations);
    return floats && (operands.to - operands.from) % 4 != 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Head head;
    if (size < sizeof head) return 0;
    std::memcpy(&head, data, sizeof head);
    const size_t repeats = 1 + (head.flags >> 4);
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i < repeats; ++i) bytes.insert(bytes.end(), data + sizeof head, data + size);
    bytes.resize(std::min(bytes.size(), fuzz::Slot::kLargest));
    memory().fill(bytes, head.flags % 2 != 0);
    memory().keep();

    const size_t operation = head.operation % std::size(kOperations);
    const size_t last = std::max({head.to, head.from, head.second});
    if (last > bytes.size()) return 0;
    const auto operands = [&](uint8_t* start) {
        return Operands{
            start + head.to, start + head.from, start + head.second, bytes.size() - last, head.a, head.b,
            head.c,          head.factor};
    };
    const fuzz::Place place = memory().place();
    if (tells_nans_apart(operands(place.copy), operation)) return 0;
    const uint64_t expected = kOperations[operation](*kernels::levels().back().kernels, operands(place.copy));
    const bool floats = operation + kFloats >= std::size(kOperations);
    for (const kernels::Level& level : kernels::levels()) {
        static const std::vector<bool> runs = [] {
            std::vector<bool> all;
            for (const kernels::Level& each : kernels::levels()) all.push_back(each.runs_here());
            return all;
        }();
        if (!runs[size_t(&level - kernels::levels().data())]) continue;
        memory().restore();
        const uint64_t found = kOperations[operation](*level.kernels, operands(place.real));
        const bool same = memory().same(floats ? operands(place.copy).to : nullptr);
        if (found == expected && same) continue;
        std::fprintf(stderr, "operation %zu at level %s on %zu bytes: gives %llu, should be %llu; %s\n",
                     operation, level.name, bytes.size(), static_cast<unsigned long long>(found),
                     static_cast<unsigned long long>(expected), memory().difference().c_str());
        std::abort();
    }
    return 0;
}
