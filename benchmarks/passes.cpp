#include "benchmarks/passes.h"

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

[[gnu::target("avx2")]] void scale16_in_256_bits(uint8_t* samples, size_t n, double factor) {
    const __m256d factors = _mm256_set1_pd(factor);
    const __m256d most = _mm256_set1_pd(65535);
    for (size_t i = 0; i + 8 <= n; i += 8) {
        auto* const at = reinterpret_cast<__m128i*>(samples + 2 * i);
        const __m256i wide = _mm256_cvtepu16_epi32(_mm_loadu_si128(at));
        const __m256d low = _mm256_cvtepi32_pd(_mm256_castsi256_si128(wide));
        const __m256d high = _mm256_cvtepi32_pd(_mm256_extracti128_si256(wide, 1));
        _mm_storeu_si128(
            at, _mm_packus_epi32(_mm256_cvttpd_epi32(_mm256_min_pd(_mm256_mul_pd(low, factors), most)),
                                 _mm256_cvttpd_epi32(_mm256_min_pd(_mm256_mul_pd(high, factors), most))));
    }
}

[[gnu::target("avx512f")]] void scale16_in_512_bits(uint8_t* samples, size_t n, double factor) {
    const __m512d factors = _mm512_set1_pd(factor);
    const __m512d most = _mm512_set1_pd(65535);
    for (size_t i = 0; i + 8 <= n; i += 8) {
        auto* const at = reinterpret_cast<__m128i*>(samples + 2 * i);
        const __m512d eight = _mm512_cvtepi32_pd(_mm256_cvtepu16_epi32(_mm_loadu_si128(at)));
        const __m256i scaled = _mm512_cvttpd_epi32(_mm512_min_pd(_mm512_mul_pd(eight, factors), most));
        _mm_storeu_si128(
            at, _mm_packus_epi32(_mm256_castsi256_si128(scaled), _mm256_extracti128_si256(scaled, 1)));
    }
}

}  // namespace

GatherPass* gather_pass() { return __builtin_cpu_supports("avx512vbmi") ? gather_by_shuffles : nullptr; }
GatherPass* pext_pass() { return __builtin_cpu_supports("bmi2") ? gather_by_pext : nullptr; }
ScalePass* scale16_pass() {
    if (__builtin_cpu_supports("avx512f")) return scale16_in_512_bits;
    return __builtin_cpu_supports("avx2") ? scale16_in_256_bits : nullptr;
}

#else

GatherPass* gather_pass() { return nullptr; }
GatherPass* pext_pass() { return nullptr; }
ScalePass* scale16_pass() { return nullptr; }

#endif

}  // namespace bench
