// SSE4.2 and all before it.
#include <math.h>
#include <nmmintrin.h>

#include "kernels/table.h"
#include "kernels/words.h"

namespace kernels::sse4 {
namespace {

constexpr size_t kVectorBytes = 16;
using Mask = uint32_t;
constexpr size_t kMaskBits = 1;
#include "kernels/fast/vector.h"

inline Bytes in_register(Bytes v) {
    __asm__("" : "+x"(v));
    return v;
}
inline Mask high_bits(Bytes v) { return Mask(_mm_movemask_epi8(__m128i(v))); }
using Marks = Bytes;
inline Marks marked_equal(Bytes a, Bytes b) { return Marks(a == b); }
inline Mask mask_of(Marks marks) { return high_bits(marks); }
inline bool any(Bytes v) { return !_mm_testz_si128(__m128i(v), __m128i(v)); }
inline Bytes part(const uint8_t* bytes, size_t n) { return part_by_words(bytes, n); }

inline Bytes shuffled(Bytes v, Bytes from) { return Bytes(_mm_shuffle_epi8(__m128i(v), __m128i(from))); }

inline Bytes swapped16(Bytes v) {
    return shuffled(v, Bytes{1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14});
}
inline Bytes swapped32(Bytes v) {
    return shuffled(v, Bytes{3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12});
}
inline Bytes reversed(Bytes v) {
    return shuffled(v, Bytes{15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0});
}
inline Bytes bits_reversed(Bytes v) {
    constexpr Bytes kHigh = {0x00, 0x80, 0x40, 0xC0, 0x20, 0xA0, 0x60, 0xE0,
                             0x10, 0x90, 0x50, 0xD0, 0x30, 0xB0, 0x70, 0xF0};
    const Bytes low_half = v & 0x0F;
    const Bytes high_half = Bytes(Vector<uint16_t>(v) >> 4) & 0x0F;
    return shuffled(kHigh, low_half) | shuffled(kHigh >> 4, high_half);
}

inline Vector<int32_t> sums_of_three(Bytes v) {
    const auto pairs = _mm_maddubs_epi16(__m128i(v), _mm_set1_epi32(0x00010101));
    return Vector<int32_t>(_mm_madd_epi16(pairs, _mm_set1_epi16(1)));
}

inline Vector<int16_t> without_borrow(Vector<int32_t> a, Vector<int32_t> b) {
    return Vector<int16_t>(_mm_subs_epu16(__m128i(a), __m128i(b)));
}

inline Vector<uint16_t> high_products(Vector<uint16_t> a, Vector<uint16_t> b) {
    return Vector<uint16_t>(_mm_mulhi_epu16(__m128i(a), __m128i(b)));
}
inline Vector<uint16_t> widened_low(Bytes v) {
    return Vector<uint16_t>(_mm_unpacklo_epi8(__m128i(v), _mm_setzero_si128()));
}
inline Vector<uint16_t> widened_high(Bytes v) {
    return Vector<uint16_t>(_mm_unpackhi_epi8(__m128i(v), _mm_setzero_si128()));
}
inline Bytes narrowed(Vector<uint16_t> low, Vector<uint16_t> high) {
    return Bytes(_mm_packus_epi16(__m128i(low), __m128i(high)));
}

inline Bytes scaled16(Bytes v, Vector<double> factor, Vector<double> largest) {
    const auto two = [=](__m128i numbers) {
        const __m128d products = _mm_mul_pd(_mm_cvtepi32_pd(numbers), __m128d(factor));
        return _mm_cvttpd_epi32(_mm_min_pd(products, __m128d(largest)));
    };
    const auto four = [=](__m128i numbers) {
        return _mm_unpacklo_epi64(two(numbers), two(_mm_unpackhi_epi64(numbers, numbers)));
    };
    const __m128i zero = _mm_setzero_si128();
    const __m128i low = four(_mm_unpacklo_epi16(__m128i(v), zero));
    const __m128i high = four(_mm_unpackhi_epi16(__m128i(v), zero));
    return Bytes(_mm_packus_epi32(low, high));
}

using ByteTable = NotThere;
using Across = NotThere;

constexpr size_t kWindowBytes = 16;
constexpr size_t kMostWindows = 4;
inline Bytes load_windows(const uint8_t* data, size_t) { return load<Bytes>(data); }
inline void store_windows(uint8_t* data, size_t, Bytes v) { store(data, v); }
inline Bytes picked(Bytes v, Bytes from) { return shuffled(v, from); }

#include "kernels/fast/extract.h"

inline Bytes expanded(const uint8_t* bits, Bytes low, Bytes high) {
    const auto bit_of_each = Bytes(all(UINT64_C(0x0102040810204080)));
    const Bytes bytes =
        shuffled(Bytes(all(load<uint16_t>(bits))), Bytes{0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1});
    return (bytes & bit_of_each) == bit_of_each ? high : low;
}

// Pairs of floats in the lanes of a word: the second ones as doubles; and doubles, rounded, as pairs.
inline Doubles second_of(Words pairs) {
    return Doubles(_mm_cvtps_pd(_mm_shuffle_ps(__m128(pairs), __m128(pairs), 0b00'00'11'01)));
}
inline Words pairs_of(Doubles first, Doubles second) {
    return Words(_mm_unpacklo_ps(_mm_cvtpd_ps(__m128d(first)), _mm_cvtpd_ps(__m128d(second))));
}
inline Doubles rounded(Doubles v) { return Doubles(_mm_cvtps_pd(_mm_cvtpd_ps(__m128d(v)))); }
inline Words low_products(Words a, Words b) { return Words(_mm_mul_epu32(__m128i(a), __m128i(b))); }
template <size_t kCount>
inline Words looked_up(const uint64_t* table, Words indices) {
    return looked_up_singly(table, indices);
}
inline Doubles truncated(Doubles v) {
    return Doubles(_mm_round_pd(__m128d(v), _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC));
}
struct Separate;
using Fused = Separate;

#include "kernels/levels/operations.h"

}  // namespace

#include "kernels/levels/entries.h"

}  // namespace kernels::sse4
