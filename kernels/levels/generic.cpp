// The compiler's own vectors: any processor.
#include <math.h>

#include "kernels/table.h"
#include "kernels/words.h"

namespace kernels::generic {
namespace {

constexpr size_t kVectorBytes = 16;
using Mask = uint32_t;
constexpr size_t kMaskBits = 1;
#include "kernels/fast/vector.h"

inline Mask high_bits(Bytes v) {
    Mask mask = 0;
    for (size_t i = 0; i < kVectorBytes; ++i) mask |= Mask(v[i] >> 7) << i;
    return mask;
}
inline Mask equal_bytes(Bytes a, Bytes b) { return high_bits(Bytes(a == b)); }
inline bool any(Bytes v) {
    const auto words = Vector<uint64_t>(v);
    return (words[0] | words[1]) != 0;
}

inline Bytes swapped16(Bytes v) {
    const auto units = Vector<uint16_t>(v);
    return Bytes(units << 8 | units >> 8);
}
inline Bytes swapped32(Bytes v) {
    const auto units = Vector<uint32_t>(swapped16(v));
    return Bytes(units << 16 | units >> 16);
}
inline Bytes reversed(Bytes v) {
    const auto words = Vector<uint64_t>(v);
    return Bytes(Vector<uint64_t>{bytes_reversed(words[1]), bytes_reversed(words[0])});
}
inline Bytes bits_reversed(Bytes v) { return bits_reversed_by_shifts(v); }

#include "kernels/levels/operations.h"

}  // namespace

#include "kernels/levels/entries.h"

}  // namespace kernels::generic
