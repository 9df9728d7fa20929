// Compiled once for each vector width: LIMIT is the name of its passes, LANES the bytes of a vector.
//
// All passes have one shape: vectors at aligned addresses of what is stored (or, if nothing is, loaded), four
// a round, and one at each end that may overlap them. Ranges below one vector are not measured in bytes per
// second; they are one or two vectors of 16 bytes.
#include "benchmarks/limit.h"

#include <cstring>

namespace bench {
namespace {

#if defined(__x86_64__) || defined(__i386__)
#define IN_VECTOR_REGISTER "+v"
#else
#define IN_VECTOR_REGISTER "+w"
#endif

template <size_t Lanes>
using Vector [[gnu::vector_size(Lanes)]] = uint8_t;

// Loads and stores that the compiler can neither drop nor join.
template <size_t Lanes>
struct Access {
    using Lane = Vector<Lanes>;
    static Lane load(const uint8_t* at) {
        Lane lanes;
        std::memcpy(&lanes, at, Lanes);
        asm volatile("" : IN_VECTOR_REGISTER(lanes));
        return lanes;
    }
    static void store(uint8_t* at, Lane lanes) { std::memcpy(at, &lanes, Lanes); }
};

// Calls vector(i, Lanes) for offsets i of vectors that cover n bytes, as said above; `base` is the address
// whose vectors are to be aligned.
template <size_t Lanes, class Visit>
void cover(uintptr_t base, size_t n, Visit visit) {
    if (n < Lanes) {
        if constexpr (Lanes > 16) cover<Lanes / 2>(base, n, visit);
        return;
    }
    constexpr Access<Lanes> kWide = {};
    visit(kWide, 0);
    size_t i = Lanes - base % Lanes;
    for (; n - i >= 4 * Lanes; i += 4 * Lanes) {
        visit(kWide, i);
        visit(kWide, i + Lanes);
        visit(kWide, i + 2 * Lanes);
        visit(kWide, i + 3 * Lanes);
    }
    for (; n - i >= Lanes; i += Lanes) visit(kWide, i);
    if (i < n) visit(kWide, n - Lanes);
}

void read(const uint8_t* data, size_t n) {
    cover<LANES>(uintptr_t(data), n, [=](auto access, size_t i) { access.load(data + i); });
}

void read_two(const uint8_t* first, const uint8_t* second, size_t n) {
    cover<LANES>(uintptr_t(first), n, [=](auto access, size_t i) {
        access.load(first + i);
        access.load(second + i);
    });
}

void write(uint8_t* data, size_t n) {
    cover<LANES>(uintptr_t(data), n, [=](auto access, size_t i) {
        constexpr typename decltype(access)::Lane kZeros = {};
        access.store(data + i, kZeros);
    });
}

void update(uint8_t* data, size_t n) {
    cover<LANES>(uintptr_t(data), n,
                 [=](auto access, size_t i) { access.store(data + i, access.load(data + i)); });
}

void update_mirrored(uint8_t* data, size_t n) {
    uint8_t* const end = data + n;
    cover<LANES>(uintptr_t(data), n / 2, [=](auto access, size_t i) {
        uint8_t* const low = data + i;
        uint8_t* const high = end - i - sizeof(access.load(low));
        const auto lanes = access.load(low);
        access.store(low, access.load(high));
        access.store(high, lanes);
    });
}

void combine(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t n) {
    cover<LANES>(uintptr_t(destination), n, [=](auto access, size_t i) {
        access.store(destination + i, access.load(first + i) ^ access.load(second + i));
    });
}

void copy(uint8_t* destination, const uint8_t* source, size_t n) {
    cover<LANES>(uintptr_t(destination), n,
                 [=](auto access, size_t i) { access.store(destination + i, access.load(source + i)); });
}

void transfer_little(uint8_t* destination, size_t stored, const uint8_t* source, size_t loaded) {
    read(source, loaded);
    write(destination, stored);
}

// Eight vectors stored a round, and between them as many loaded as it takes to reach the end of both
// together.
void transfer(uint8_t* destination, size_t stored, const uint8_t* source, size_t loaded) {
    using Wide = Access<LANES>;
    constexpr size_t kRound = 8 * LANES;
    if (loaded == stored) return copy(destination, source, stored);
    if (stored < kRound) return transfer_little(destination, stored, source, loaded);
    const size_t loads = (8 * loaded + stored / 2) / stored;
    const uint8_t* const last = source + loaded - LANES;
    for (size_t i = 0; i + kRound <= stored; i += kRound) {
        Wide::Lane lanes = {};
        for (size_t k = 0; k < loads && source <= last; ++k, source += LANES) lanes = Wide::load(source);
        for (size_t k = 0; k < 8; ++k) Wide::store(destination + i + k * LANES, lanes);
    }
    Wide::store(destination + stored - LANES, Wide::load(last));
}

bool runs_here() {
#if defined(__AVX512BW__)
    return __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vl") != 0;
#elif defined(__AVX2__)
    return __builtin_cpu_supports("avx2") != 0;
#else
    return true;
#endif
}

}  // namespace

extern const Limit LIMIT;
const Limit LIMIT = {
    .name = LANES == 64   ? "limit, 64-byte vectors"
            : LANES == 32 ? "limit, 32-byte vectors"
                          : "limit, 16-byte vectors",
    .runs_here = runs_here,
    .read = read,
    .read_two = read_two,
    .write = write,
    .update = update,
    .update_mirrored = update_mirrored,
    .combine = combine,
    .transfer = transfer,
};

}  // namespace bench
