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

inline Mask equal_bytes(Bytes a, Bytes b) { return Mask(_mm_movemask_epi8(__m128i(a == b))); }
inline Mask high_bits(Bytes v) { return Mask(_mm_movemask_epi8(__m128i(v))); }
inline bool any(Bytes v) { return !_mm_testz_si128(__m128i(v), __m128i(v)); }

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

#include "kernels/levels/operations.h"

}  // namespace

#include "kernels/levels/entries.h"

}  // namespace kernels::sse4
