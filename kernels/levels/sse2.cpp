// What every x86 processor with 64 bits runs.
#include <emmintrin.h>
#include <math.h>

#include "kernels/table.h"
#include "kernels/words.h"

namespace kernels::sse2 {
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
inline bool any(Bytes v) { return high_bits(Bytes(v == Bytes{})) != 0xFFFF; }
inline Bytes part(const uint8_t* bytes, size_t n) { return part_by_words(bytes, n); }

inline Bytes swapped16(Bytes v) {
    const auto units = Vector<uint16_t>(v);
    return Bytes(units << 8 | units >> 8);
}
inline Bytes swapped32(Bytes v) {
    constexpr int kNeighbours = 0b10'11'00'01;
    const auto halves = _mm_shufflehi_epi16(_mm_shufflelo_epi16(__m128i(v), kNeighbours), kNeighbours);
    return swapped16(Bytes(halves));
}
inline Bytes reversed(Bytes v) {
    constexpr int kBackwards = 0b00'01'10'11;
    return swapped32(Bytes(_mm_shuffle_epi32(__m128i(v), kBackwards)));
}
inline Bytes bits_reversed(Bytes v) { return bits_reversed_by_shifts(v); }

inline Vector<int32_t> sums_of_three(Bytes v) {
    const auto units = Vector<int32_t>(v);
    return (units & 0xFF) + (units >> 8 & 0xFF) + (units >> 16 & 0xFF);
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
    // Packing saturates at signed limits: it takes the numbers less 32768.
    const __m128i bias = _mm_set1_epi32(32768);
    const __m128i packed = _mm_packs_epi32(_mm_sub_epi32(low, bias), _mm_sub_epi32(high, bias));
    return Bytes(_mm_xor_si128(packed, _mm_set1_epi16(-32768)));
}

using ByteTable = NotThere;
using Across = NotThere;

// No instruction picks bytes.
constexpr size_t kWindowBytes = kVectorBytes;
constexpr size_t kMostWindows = 0;
inline Bytes load_windows(const uint8_t* data, size_t) { return load<Bytes>(data); }
inline void store_windows(uint8_t* data, size_t, Bytes v) { store(data, v); }

#include "kernels/fast/extract.h"

inline Bytes expanded(const uint8_t* bits, Bytes low, Bytes high) {
    const Vector<uint64_t> bytes = {eight_of(bits[0]), eight_of(bits[1])};
    const auto bit_of_each = Bytes(all(UINT64_C(0x0102040810204080)));
    return (Bytes(bytes) & bit_of_each) == bit_of_each ? high : low;
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
inline Doubles truncated(Doubles v) { return Doubles(_mm_cvtepi32_pd(_mm_cvttpd_epi32(__m128d(v)))); }
struct Separate;
using Fused = Separate;

#include "kernels/levels/operations.h"

}  // namespace

#include "kernels/levels/entries.h"

}  // namespace kernels::sse2
