#include "benchmarks/rows/gather_passes.h"

#include <cstring>

#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace bench {

#ifdef __x86_64__

namespace {

[[gnu::target("avx512f,avx512bw,avx512vbmi")]] void gather_by_shuffles(uint8_t* destination,
                                                                       const uint8_t* source, size_t piece,
                                                                       size_t step, size_t pieces) {
    const size_t in_window = step < 128 ? (128 - piece) / step + 1 : 1;
    const size_t at_once = in_window < 64 / piece ? in_window : 64 / piece;
    alignas(64) uint8_t indices[64] = {};
    for (size_t i = 0; i < at_once * piece; ++i) indices[i] = uint8_t(i / piece * step + i % piece);
    const __m512i order = _mm512_load_si512(indices);
    for (size_t done = 0; done < pieces; done += at_once) {
        const __m512i low = _mm512_loadu_si512(source + done * step);
        const __m512i high = _mm512_loadu_si512(source + done * step + 64);
        _mm512_storeu_si512(destination + done * piece, _mm512_permutex2var_epi8(low, order, high));
    }
}

uint64_t big_endian(const uint8_t* bytes) {
    uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return __builtin_bswap64(word);
}

void store_big_endian(uint8_t* bytes, uint64_t word) {
    word = __builtin_bswap64(word);
    std::memcpy(bytes, &word, sizeof word);
}

[[gnu::target("bmi2")]] void gather_by_pext(uint8_t* destination, const uint8_t* source, size_t bits,
                                            size_t step, size_t groups) {
    const size_t at_once = (57 - bits) / step + 1;
    const uint64_t group = (UINT64_C(1) << bits) - 1;
    uint64_t mask = 0;
    for (size_t i = 0; i < at_once; ++i) mask |= group << (64 - bits - i * step);
    size_t taken = at_once * bits;
    uint64_t pending = 0;
    size_t count = 0;
    for (size_t done = 0; done < groups; done += at_once) {
        const size_t bit = done * step;
        uint64_t found = _pext_u64(big_endian(source + bit / 8) << bit % 8, mask);
        if (groups - done < at_once) {
            found >>= (at_once - (groups - done)) * bits;
            taken = (groups - done) * bits;
        }
        if (count + taken < 64) {
            pending = pending << taken | found;
            count += taken;
        } else {
            const size_t rest = count + taken - 64;
            store_big_endian(destination, pending << (taken - rest) | found >> rest);
            destination += 8;
            pending = found;
            count = rest;
        }
    }
    if (count > 0) store_big_endian(destination, pending << (64 - count));
}

}  // namespace

GatherPass* gather_pass() { return __builtin_cpu_supports("avx512vbmi") ? gather_by_shuffles : nullptr; }
GatherPass* pext_pass() { return __builtin_cpu_supports("bmi2") ? gather_by_pext : nullptr; }

#else

GatherPass* gather_pass() { return nullptr; }
GatherPass* pext_pass() { return nullptr; }

#endif

}  // namespace bench
