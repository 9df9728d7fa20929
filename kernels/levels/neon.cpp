// What every AArch64 processor has.
#include <arm_neon.h>
#include <math.h>

#include "kernels/table.h"
#include "kernels/words.h"

namespace kernels::neon {
namespace {

constexpr size_t kVectorBytes = 16;
using Mask = uint64_t;
constexpr size_t kMaskBits = 4;
#include "kernels/fast/vector.h"

inline Bytes in_register(Bytes v) {
    __asm__("" : "+w"(v));
    return v;
}
// Of each byte four bits, by a shift of pairs that drops every other half.
using Marks = Bytes;
inline Mask mask_of(Marks marks) {
    const uint8x8_t halves = vshrn_n_u16(uint16x8_t(marks), 4);
    return vget_lane_u64(vreinterpret_u64_u8(halves), 0);
}
inline Mask high_bits(Bytes v) { return mask_of(Marks(Vector<int8_t>(v) < 0)); }
inline Marks marked_equal(Bytes a, Bytes b) { return Marks(a == b); }
inline bool any(Bytes v) { return vmaxvq_u32(uint32x4_t(v)) != 0; }
inline Bytes part(const uint8_t* bytes, size_t n) { return part_by_words(bytes, n); }

inline Bytes swapped16(Bytes v) { return Bytes(vrev16q_u8(uint8x16_t(v))); }
inline Bytes swapped32(Bytes v) { return Bytes(vrev32q_u8(uint8x16_t(v))); }
inline Bytes reversed(Bytes v) {
    const uint8x16_t halves = vrev64q_u8(uint8x16_t(v));
    return Bytes(vextq_u8(halves, halves, 8));
}
inline Bytes bits_reversed(Bytes v) { return Bytes(vrbitq_u8(uint8x16_t(v))); }

inline Vector<int32_t> sums_of_three(Bytes v) {
    const Bytes three = v & Bytes(all<uint32_t>(0xFFFFFF));
    return Vector<int32_t>(vpaddlq_u16(vpaddlq_u8(uint8x16_t(three))));
}

inline Vector<int16_t> without_borrow(Vector<int32_t> a, Vector<int32_t> b) {
    return Vector<int16_t>(vqsubq_u16(uint16x8_t(a), uint16x8_t(b)));
}

inline Vector<uint16_t> high_products(Vector<uint16_t> a, Vector<uint16_t> b) {
    const uint32x4_t low = vmull_u16(vget_low_u16(uint16x8_t(a)), vget_low_u16(uint16x8_t(b)));
    const uint32x4_t high = vmull_high_u16(uint16x8_t(a), uint16x8_t(b));
    return Vector<uint16_t>(vuzp2q_u16(uint16x8_t(low), uint16x8_t(high)));
}
inline Vector<uint16_t> widened_low(Bytes v) {
    return Vector<uint16_t>(vmovl_u8(vget_low_u8(uint8x16_t(v))));
}
inline Vector<uint16_t> widened_high(Bytes v) { return Vector<uint16_t>(vmovl_high_u8(uint8x16_t(v))); }
inline Bytes narrowed(Vector<uint16_t> low, Vector<uint16_t> high) {
    return Bytes(vqmovn_high_u16(vqmovn_u16(uint16x8_t(low)), uint16x8_t(high)));
}

inline Bytes scaled16(Bytes v, Vector<double> factor, Vector<double> largest) {
    const auto two = [=](uint64x2_t numbers) {
        const Doubles products = Doubles(vcvtq_f64_u64(numbers)) * factor;
        return vcvtq_u64_f64(float64x2_t(smaller_lanes(products, largest)));
    };
    const auto four = [=](uint32x4_t numbers) {
        return vmovn_high_u64(vmovn_u64(two(vmovl_u32(vget_low_u32(numbers)))), two(vmovl_high_u32(numbers)));
    };
    const auto samples = uint16x8_t(v);
    return Bytes(
        vmovn_high_u32(vmovn_u32(four(vmovl_u16(vget_low_u16(samples)))), four(vmovl_high_u16(samples))));
}

using ByteTable = NotThere;
using Across = NotThere;

constexpr size_t kWindowBytes = 16;
constexpr size_t kMostWindows = 4;
inline Bytes load_windows(const uint8_t* data, size_t) { return load<Bytes>(data); }
inline void store_windows(uint8_t* data, size_t, Bytes v) { store(data, v); }
inline Bytes picked(Bytes v, Bytes from) { return Bytes(vqtbl1q_u8(uint8x16_t(v), uint8x16_t(from))); }

#include "kernels/fast/extract.h"

inline Bytes expanded(const uint8_t* bits, Bytes low, Bytes high) {
    const auto bit_of_each = Bytes(all(UINT64_C(0x0102040810204080)));
    const Bytes bytes =
        picked(Bytes(all(load<uint16_t>(bits))), Bytes{0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1});
    return Bytes(
        vbslq_u8(vtstq_u8(uint8x16_t(bytes), uint8x16_t(bit_of_each)), uint8x16_t(high), uint8x16_t(low)));
}

// Pairs of floats in the lanes of a word: the second ones as doubles; and doubles, rounded, as pairs.
inline Doubles second_of(Words pairs) {
    const auto floats = float32x4_t(pairs);
    return Doubles(vcvt_f64_f32(vget_low_f32(vuzp2q_f32(floats, floats))));
}
inline Words pairs_of(Doubles first, Doubles second) {
    const float32x2_t firsts = vcvt_f32_f64(float64x2_t(first));
    const float32x2_t seconds = vcvt_f32_f64(float64x2_t(second));
    return Words(vcombine_f32(vzip1_f32(firsts, seconds), vzip2_f32(firsts, seconds)));
}
inline Doubles rounded(Doubles v) { return Doubles(vcvt_f64_f32(vcvt_f32_f64(float64x2_t(v)))); }
inline Words low_products(Words a, Words b) {
    return Words(vmull_u32(vmovn_u64(uint64x2_t(a)), vmovn_u64(uint64x2_t(b))));
}
template <size_t kCount>
inline Words looked_up(const uint64_t* table, Words indices) {
    return looked_up_singly(table, indices);
}
inline Doubles truncated(Doubles v) { return Doubles(vrndq_f64(float64x2_t(v))); }
struct Fused {
    static Doubles multiply_add(Doubles a, Doubles b, Doubles c) {
        return Doubles(vfmaq_f64(float64x2_t(c), float64x2_t(a), float64x2_t(b)));
    }
};

#include "kernels/levels/operations.h"

}  // namespace

#include "kernels/levels/entries.h"

}  // namespace kernels::neon
