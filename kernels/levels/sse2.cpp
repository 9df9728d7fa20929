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

inline Mask equal_bytes(Bytes a, Bytes b) { return Mask(_mm_movemask_epi8(__m128i(a == b))); }
inline Mask high_bits(Bytes v) { return Mask(_mm_movemask_epi8(__m128i(v))); }
inline bool any(Bytes v) { return equal_bytes(v, Bytes{}) != 0xFFFF; }

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

#include "kernels/levels/operations.h"

}  // namespace

#include "kernels/levels/entries.h"

}  // namespace kernels::sse2
