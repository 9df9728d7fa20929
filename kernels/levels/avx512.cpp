// AVX-512 (F, BW, VL, DQ, VBMI) with GFNI.
#include <immintrin.h>
#include <math.h>

#include "kernels/table.h"
#include "kernels/words.h"

namespace kernels::avx512 {
namespace {

constexpr size_t kVectorBytes = 64;
using Mask = uint64_t;
constexpr size_t kMaskBits = 1;
#include "kernels/fast/vector.h"

inline Bytes in_register(Bytes v) {
    __asm__("" : "+v"(v));
    return v;
}
inline Mask high_bits(Bytes v) { return _mm512_movepi8_mask(__m512i(v)); }
// A byte of 0 is a mark: differences are joined in vectors, several to an instruction, where comparisons
// would give masks, which processors join one at a time.
struct Marks {
    Bytes differences;
    friend Marks operator&(Marks a, Marks b) { return {a.differences | b.differences}; }
    friend Marks operator|(Marks a, Marks b) {
        return {Bytes(_mm512_min_epu8(__m512i(a.differences), __m512i(b.differences)))};
    }
    Marks& operator&=(Marks other) { return *this = *this & other; }
};
inline Marks marked_equal(Bytes a, Bytes b) { return {a ^ b}; }
inline Mask mask_of(Marks marks) {
    return _mm512_testn_epi8_mask(__m512i(marks.differences), __m512i(marks.differences));
}
inline bool any(Marks marks) { return mask_of(marks) != 0; }
inline bool any(Bytes v) { return _mm512_test_epi8_mask(__m512i(v), __m512i(v)) != 0; }
inline Bytes part(const uint8_t* bytes, size_t n) {
    return Bytes(_mm512_maskz_loadu_epi8(first_bytes(n), bytes));
}

// Shuffles within each quarter.
inline Bytes shuffled(Bytes v, Bytes from) { return Bytes(_mm512_shuffle_epi8(__m512i(v), __m512i(from))); }
// Takes bytes from anywhere.
inline Bytes permuted(Bytes v, Bytes from) {
    return Bytes(_mm512_permutexvar_epi8(__m512i(from), __m512i(v)));
}

struct Across {
    static constexpr bool kThere = true;
    Across() = default;
    explicit Across(size_t begin) : from(counting<uint8_t>() + uint8_t(begin)) {}
    Bytes from;
    Bytes taken(Bytes first, Bytes second) const {
        return Bytes(_mm512_permutex2var_epi8(__m512i(first), __m512i(from), __m512i(second)));
    }
};

inline Bytes all_quarters(__m128i quarter) { return Bytes(_mm512_broadcast_i32x4(quarter)); }

inline Bytes swapped16(Bytes v) {
    return shuffled(v, all_quarters(_mm_setr_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14)));
}
inline Bytes swapped32(Bytes v) {
    return shuffled(v, all_quarters(_mm_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12)));
}
inline Bytes reversed(Bytes v) { return permuted(v, uint8_t(kVectorBytes - 1) - counting<uint8_t>()); }
inline Bytes bits_reversed(Bytes v) {
    const __m512i matrix = _mm512_set1_epi64(int64_t(0x8040201008040201));
    return Bytes(_mm512_gf2p8affine_epi64_epi8(__m512i(v), matrix, 0));
}

inline Vector<int32_t> sums_of_three(Bytes v) {
    const auto pairs = _mm512_maddubs_epi16(__m512i(v), _mm512_set1_epi32(0x00010101));
    return Vector<int32_t>(_mm512_madd_epi16(pairs, _mm512_set1_epi16(1)));
}

inline Vector<int16_t> without_borrow(Vector<int32_t> a, Vector<int32_t> b) {
    return Vector<int16_t>(_mm512_subs_epu16(__m512i(a), __m512i(b)));
}

inline Vector<uint16_t> high_products(Vector<uint16_t> a, Vector<uint16_t> b) {
    return Vector<uint16_t>(_mm512_mulhi_epu16(__m512i(a), __m512i(b)));
}
inline Vector<uint16_t> widened_low(Bytes v) {
    return Vector<uint16_t>(_mm512_unpacklo_epi8(__m512i(v), _mm512_setzero_si512()));
}
inline Vector<uint16_t> widened_high(Bytes v) {
    return Vector<uint16_t>(_mm512_unpackhi_epi8(__m512i(v), _mm512_setzero_si512()));
}
inline Bytes narrowed(Vector<uint16_t> low, Vector<uint16_t> high) {
    return Bytes(_mm512_packus_epi16(__m512i(low), __m512i(high)));
}

inline Bytes scaled16(Bytes v, Vector<double> factor, Vector<double> largest) {
    const auto eight = [=](__m256i numbers) {
        const __m512d products = _mm512_mul_pd(_mm512_cvtepi32_pd(numbers), __m512d(factor));
        return _mm512_cvttpd_epi32(_mm512_min_pd(products, __m512d(largest)));
    };
    const auto halves = [=](__m512i numbers) {
        return _mm512_inserti64x4(_mm512_castsi256_si512(eight(_mm512_castsi512_si256(numbers))),
                                  eight(_mm512_extracti64x4_epi64(numbers, 1)), 1);
    };
    const __m512i zero = _mm512_setzero_si512();
    return Bytes(_mm512_packus_epi32(halves(_mm512_unpacklo_epi16(__m512i(v), zero)),
                                     halves(_mm512_unpackhi_epi16(__m512i(v), zero))));
}

struct ByteTable {
    static constexpr bool kThere = true;
    explicit ByteTable(const uint8_t* bytes) {
        for (size_t i = 0; i < 4; ++i) quarters[i] = _mm512_loadu_si512(bytes + i * kVectorBytes);
    }
    __m512i quarters[4];
    Bytes operator()(Bytes v) const {
        const auto indices = __m512i(v);
        return Bytes(_mm512_mask_blend_epi8(_mm512_movepi8_mask(indices),
                                            _mm512_permutex2var_epi8(quarters[0], indices, quarters[1]),
                                            _mm512_permutex2var_epi8(quarters[2], indices, quarters[3])));
    }
};

constexpr size_t kWindowBytes = 64;
constexpr size_t kMostWindows = 2;
inline Bytes load_windows(const uint8_t* data, size_t) { return load<Bytes>(data); }
inline void store_windows(uint8_t* data, size_t, Bytes v) { store(data, v); }
inline Bytes picked(Bytes v, Bytes from) {
    const __mmask64 wanted = ~_mm512_movepi8_mask(__m512i(from));
    return Bytes(_mm512_maskz_permutexvar_epi8(wanted, __m512i(from), __m512i(v)));
}

#include "kernels/fast/extract.h"

inline Bytes expanded(const uint8_t* bits, Bytes low, Bytes high) {
    const __m512i bit_of_each = _mm512_set1_epi64(0x0102040810204080);
    const __m512i byte_of_each =
        _mm512_setr_epi64(0, 0x0101010101010101, 0x0202020202020202, 0x0303030303030303, 0x0404040404040404,
                          0x0505050505050505, 0x0606060606060606, 0x0707070707070707);
    const __m512i bytes = _mm512_shuffle_epi8(__m512i(all(load<uint64_t>(bits))), byte_of_each);
    return Bytes(
        _mm512_mask_blend_epi8(_mm512_test_epi8_mask(bytes, bit_of_each), __m512i(low), __m512i(high)));
}

inline Doubles second_of(Words pairs) {
    const __m256i second = _mm512_cvtepi64_epi32(__m512i(pairs >> 32));
    return Doubles(_mm512_cvtps_pd(__m256(second)));
}
inline Words pairs_of(Doubles first, Doubles second) {
    const __m256 a = _mm512_cvtpd_ps(__m512d(first));
    const __m256 b = _mm512_cvtpd_ps(__m512d(second));
    return Words(_mm512_cvtepu32_epi64(__m256i(a))) | Words(_mm512_cvtepu32_epi64(__m256i(b))) << 32;
}
inline Doubles rounded(Doubles v) { return Doubles(_mm512_cvtps_pd(_mm512_cvtpd_ps(__m512d(v)))); }
inline Words low_products(Words a, Words b) { return Words(_mm512_mul_epu32(__m512i(a), __m512i(b))); }
// Tables in registers: an instruction that loads a word for each index takes several times as long.
template <size_t kCount>
inline Words looked_up(const uint64_t* table, Words indices) {
    const auto half = [=](const uint64_t* words) {
        return _mm512_permutex2var_epi64(_mm512_loadu_si512(words), __m512i(indices),
                                         _mm512_loadu_si512(words + 8));
    };
    if constexpr (kCount == 16) return Words(half(table));
    const __mmask8 in_second = _mm512_test_epi64_mask(__m512i(indices), _mm512_set1_epi64(16));
    return Words(_mm512_mask_blend_epi64(in_second, half(table), half(table + 16)));
}
inline Doubles truncated(Doubles v) {
    return Doubles(_mm512_roundscale_pd(__m512d(v), _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC));
}
struct Fused {
    static Doubles multiply_add(Doubles a, Doubles b, Doubles c) {
        return Doubles(_mm512_fmadd_pd(__m512d(a), __m512d(b), __m512d(c)));
    }
};

#include "kernels/levels/operations.h"

}  // namespace

#include "kernels/levels/entries.h"

}  // namespace kernels::avx512
