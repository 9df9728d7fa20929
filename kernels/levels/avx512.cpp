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

inline Mask equal_bytes(Bytes a, Bytes b) { return _mm512_cmpeq_epi8_mask(__m512i(a), __m512i(b)); }
inline Mask high_bits(Bytes v) { return _mm512_movepi8_mask(__m512i(v)); }
inline bool any(Bytes v) { return _mm512_test_epi8_mask(__m512i(v), __m512i(v)) != 0; }

// Shuffles within each quarter.
inline Bytes shuffled(Bytes v, Bytes from) { return Bytes(_mm512_shuffle_epi8(__m512i(v), __m512i(from))); }
// Takes bytes from anywhere.
inline Bytes permuted(Bytes v, Bytes from) {
    return Bytes(_mm512_permutexvar_epi8(__m512i(from), __m512i(v)));
}

// The masked form: that of all lanes has GCC 12 warn of a variable that is not set.
inline Bytes all_quarters(__m128i quarter) { return Bytes(_mm512_maskz_broadcast_i32x4(0xFFFF, quarter)); }

inline Bytes swapped16(Bytes v) {
    return shuffled(v, all_quarters(_mm_setr_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14)));
}
inline Bytes swapped32(Bytes v) {
    return shuffled(v, all_quarters(_mm_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12)));
}
inline Bytes reversed(Bytes v) {
    Bytes from;
    for (size_t i = 0; i < kVectorBytes; ++i) from[i] = uint8_t(kVectorBytes - 1 - i);
    return permuted(v, from);
}
inline Bytes bits_reversed(Bytes v) {
    const __m512i matrix = _mm512_set1_epi64(int64_t(0x8040201008040201));
    return Bytes(_mm512_gf2p8affine_epi64_epi8(__m512i(v), matrix, 0));
}

#include "kernels/levels/operations.h"

}  // namespace

#include "kernels/levels/entries.h"

}  // namespace kernels::avx512
