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

inline Bytes in_register(Bytes v) { return v; }
inline Mask high_bits(Bytes v) {
    Mask mask = 0;
    for (size_t i = 0; i < kVectorBytes; ++i) mask |= Mask(v[i] >> 7) << i;
    return mask;
}
using Marks = Bytes;
inline Marks marked_equal(Bytes a, Bytes b) { return Marks(a == b); }
inline Mask mask_of(Marks marks) { return high_bits(marks); }
inline bool any(Bytes v) {
    const auto words = Vector<uint64_t>(v);
    return (words[0] | words[1]) != 0;
}
inline Bytes part(const uint8_t* bytes, size_t n) { return part_by_words(bytes, n); }

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

inline Vector<int32_t> sums_of_three(Bytes v) {
    const auto units = Vector<int32_t>(v);
    return (units & 0xFF) + (units >> 8 & 0xFF) + (units >> 16 & 0xFF);
}

inline Vector<int16_t> without_borrow(Vector<int32_t> a, Vector<int32_t> b) {
    const auto less = Vector<uint16_t>(a);
    const auto from = Vector<uint16_t>(b);
    return Vector<int16_t>(less > from ? less - from : Vector<uint16_t>{});
}

inline Vector<uint16_t> high_products(Vector<uint16_t> a, Vector<uint16_t> b) {
    Vector<uint16_t> high;
    for (size_t i = 0; i < kVectorBytes / 2; ++i) high[i] = uint16_t(uint32_t(a[i]) * b[i] >> 16);
    return high;
}
// The even bytes, and the odd ones.
inline Vector<uint16_t> widened_low(Bytes v) { return Vector<uint16_t>(v) & 0xFF; }
inline Vector<uint16_t> widened_high(Bytes v) { return Vector<uint16_t>(v) >> 8; }
inline Bytes narrowed(Vector<uint16_t> low, Vector<uint16_t> high) {
    low = smaller_lanes(low, all<uint16_t>(255));
    high = smaller_lanes(high, all<uint16_t>(255));
    return Bytes(low | high << 8);
}

inline Bytes scaled16(Bytes v, Vector<double> factor, Vector<double> largest) {
    auto samples = Vector<uint16_t>(v);
    for (size_t i = 0; i < kVectorBytes / 2; ++i) {
        samples[i] = uint16_t(smaller(double(samples[i]) * factor[0], double(largest[0])));
    }
    return Bytes(samples);
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

inline Doubles second_of(Words pairs) {
    const auto floats = Floats(pairs);
    return Doubles{double(floats[1]), double(floats[3])};
}
inline Words pairs_of(Doubles first, Doubles second) {
    return Words(Floats{float(first[0]), float(second[0]), float(first[1]), float(second[1])});
}
inline Doubles rounded(Doubles v) { return Doubles{double(float(v[0])), double(float(v[1]))}; }
inline Words low_products(Words a, Words b) { return (a & 0xFFFFFFFF) * (b & 0xFFFFFFFF); }
template <size_t kCount>
inline Words looked_up(const uint64_t* table, Words indices) {
    return looked_up_singly(table, indices);
}
inline Doubles truncated(Doubles v) { return Doubles{double(int64_t(v[0])), double(int64_t(v[1]))}; }
struct Separate;
using Fused = Separate;

#include "kernels/levels/operations.h"

}  // namespace

#include "kernels/levels/entries.h"

}  // namespace kernels::generic
