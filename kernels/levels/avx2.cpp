// AVX2, with FMA, BMI, BMI2 and LZCNT.
#include <immintrin.h>
#include <math.h>

#include "kernels/table.h"
#include "kernels/words.h"

namespace kernels::avx2 {
namespace {

constexpr size_t kVectorBytes = 32;
using Mask = uint32_t;
constexpr size_t kMaskBits = 1;
#include "kernels/fast/vector.h"

inline Bytes in_register(Bytes v) {
    __asm__("" : "+x"(v));
    return v;
}
inline Mask high_bits(Bytes v) { return Mask(_mm256_movemask_epi8(__m256i(v))); }
using Marks = Bytes;
inline Marks marked_equal(Bytes a, Bytes b) { return Marks(a == b); }
inline Mask mask_of(Marks marks) { return high_bits(marks); }
inline bool any(Bytes v) { return !_mm256_testz_si256(__m256i(v), __m256i(v)); }
inline Bytes part(const uint8_t* bytes, size_t n) { return part_by_words(bytes, n); }

// Shuffles within each half.
inline Bytes shuffled(Bytes v, Bytes from) { return Bytes(_mm256_shuffle_epi8(__m256i(v), __m256i(from))); }

inline Bytes both_halves(__m128i half) { return Bytes(_mm256_broadcastsi128_si256(half)); }

inline Bytes swapped16(Bytes v) {
    return shuffled(v, both_halves(_mm_setr_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14)));
}
inline Bytes swapped32(Bytes v) {
    return shuffled(v, both_halves(_mm_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12)));
}
inline Bytes reversed(Bytes v) {
    const Bytes halves = both_halves(_mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
    const auto turned = __m256i(shuffled(v, halves));
    return Bytes(_mm256_permute2x128_si256(turned, turned, 1));
}
inline Bytes bits_reversed(Bytes v) {
    const Bytes high = both_halves(
        _mm_setr_epi8(0, -128, 0x40, -64, 0x20, -96, 0x60, -32, 0x10, -112, 0x50, -48, 0x30, -80, 0x70, -16));
    const Bytes low_half = v & 0x0F;
    const Bytes high_half = Bytes(Vector<uint16_t>(v) >> 4) & 0x0F;
    return shuffled(high, low_half) | shuffled(high >> 4, high_half);
}

inline Vector<int32_t> sums_of_three(Bytes v) {
    const auto pairs = _mm256_maddubs_epi16(__m256i(v), _mm256_set1_epi32(0x00010101));
    return Vector<int32_t>(_mm256_madd_epi16(pairs, _mm256_set1_epi16(1)));
}

inline Vector<int16_t> without_borrow(Vector<int32_t> a, Vector<int32_t> b) {
    return Vector<int16_t>(_mm256_subs_epu16(__m256i(a), __m256i(b)));
}

inline Vector<uint16_t> high_products(Vector<uint16_t> a, Vector<uint16_t> b) {
    return Vector<uint16_t>(_mm256_mulhi_epu16(__m256i(a), __m256i(b)));
}
inline Vector<uint16_t> widened_low(Bytes v) {
    return Vector<uint16_t>(_mm256_unpacklo_epi8(__m256i(v), _mm256_setzero_si256()));
}
inline Vector<uint16_t> widened_high(Bytes v) {
    return Vector<uint16_t>(_mm256_unpackhi_epi8(__m256i(v), _mm256_setzero_si256()));
}
inline Bytes narrowed(Vector<uint16_t> low, Vector<uint16_t> high) {
    return Bytes(_mm256_packus_epi16(__m256i(low), __m256i(high)));
}

inline Bytes scaled16(Bytes v, Vector<double> factor, Vector<double> largest) {
    const auto four = [=](__m128i numbers) {
        const __m256d products = _mm256_mul_pd(_mm256_cvtepi32_pd(numbers), __m256d(factor));
        return _mm256_cvttpd_epi32(_mm256_min_pd(products, __m256d(largest)));
    };
    const auto halves = [=](__m256i numbers) {
        return _mm256_set_m128i(four(_mm256_extracti128_si256(numbers, 1)),
                                four(_mm256_castsi256_si128(numbers)));
    };
    const __m256i zero = _mm256_setzero_si256();
    return Bytes(_mm256_packus_epi32(halves(_mm256_unpacklo_epi16(__m256i(v), zero)),
                                     halves(_mm256_unpackhi_epi16(__m256i(v), zero))));
}

using ByteTable = NotThere;
using Across = NotThere;

constexpr size_t kWindowBytes = 16;
constexpr size_t kMostWindows = 4;
inline Bytes load_windows(const uint8_t* data, size_t distance) {
    return Bytes(_mm256_set_m128i(load<__m128i>(data + distance), load<__m128i>(data)));
}
inline void store_windows(uint8_t* data, size_t distance, Bytes v) {
    store(data, _mm256_castsi256_si128(__m256i(v)));
    store(data + distance, _mm256_extracti128_si256(__m256i(v), 1));
}
inline Bytes picked(Bytes v, Bytes from) { return shuffled(v, from); }

#include "kernels/fast/extract.h"

inline Bytes expanded(const uint8_t* bits, Bytes low, Bytes high) {
    const auto bit_of_each = Bytes(all(UINT64_C(0x0102040810204080)));
    const auto byte_of_each =
        Bytes(_mm256_setr_epi64x(0, 0x0101010101010101, 0x0202020202020202, 0x0303030303030303));
    const Bytes bytes = shuffled(Bytes(all(load<uint32_t>(bits))), byte_of_each);
    return (bytes & bit_of_each) == bit_of_each ? high : low;
}

inline Doubles second_of(Words pairs) {
    const auto floats = __m256(pairs);
    const auto second =
        _mm_shuffle_ps(_mm256_castps256_ps128(floats), _mm256_extractf128_ps(floats, 1), 0b11'01'11'01);
    return Doubles(_mm256_cvtps_pd(second));
}
inline Words pairs_of(Doubles first, Doubles second) {
    const __m128 a = _mm256_cvtpd_ps(__m256d(first));
    const __m128 b = _mm256_cvtpd_ps(__m256d(second));
    return Words(_mm256_setr_m128(_mm_unpacklo_ps(a, b), _mm_unpackhi_ps(a, b)));
}
inline Doubles rounded(Doubles v) { return Doubles(_mm256_cvtps_pd(_mm256_cvtpd_ps(__m256d(v)))); }
inline Words low_products(Words a, Words b) { return Words(_mm256_mul_epu32(__m256i(a), __m256i(b))); }
template <size_t kCount>
inline Words looked_up(const uint64_t* table, Words indices) {
    return looked_up_singly(table, indices);
}
inline Doubles truncated(Doubles v) {
    return Doubles(_mm256_round_pd(__m256d(v), _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC));
}
struct Fused {
    static Doubles multiply_add(Doubles a, Doubles b, Doubles c) {
        return Doubles(_mm256_fmadd_pd(__m256d(a), __m256d(b), __m256d(c)));
    }
};

#include "kernels/levels/operations.h"

}  // namespace

#include "kernels/levels/entries.h"

}  // namespace kernels::avx2
