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

inline Mask equal_bytes(Bytes a, Bytes b) { return Mask(_mm256_movemask_epi8(__m256i(a == b))); }
inline Mask high_bits(Bytes v) { return Mask(_mm256_movemask_epi8(__m256i(v))); }
inline bool any(Bytes v) { return !_mm256_testz_si256(__m256i(v), __m256i(v)); }

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
    return Bytes(_mm256_permute4x64_epi64(__m256i(shuffled(v, halves)), 0b01'00'11'10));
}
inline Bytes bits_reversed(Bytes v) {
    const Bytes high = both_halves(
        _mm_setr_epi8(0, -128, 0x40, -64, 0x20, -96, 0x60, -32, 0x10, -112, 0x50, -48, 0x30, -80, 0x70, -16));
    const Bytes low_half = v & 0x0F;
    const Bytes high_half = Bytes(Vector<uint16_t>(v) >> 4) & 0x0F;
    return shuffled(high, low_half) | shuffled(high >> 4, high_half);
}

#include "kernels/levels/operations.h"

}  // namespace

#include "kernels/levels/entries.h"

}  // namespace kernels::avx2
