#include "kernels/minmax.h"

#include <algorithm>

#include "kernels/words.h"

namespace kernels::plain {
namespace {

template <class Integer, class Choose>
bool combine(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t bytes, Choose choose) {
    for (size_t i = 0; i < bytes / sizeof(Integer); ++i) {
        const size_t at = i * sizeof(Integer);
        store(destination + at, choose(load<Integer>(first + at), load<Integer>(second + at)));
    }
    return true;
}

template <class Choose>
bool combine(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t bytes, int32_t bits,
             bool is_signed, Choose choose) {
    if (bits == 8 && is_signed) return combine<int8_t>(destination, first, second, bytes, choose);
    if (bits == 8) return combine<uint8_t>(destination, first, second, bytes, choose);
    if (bits == 16 && is_signed) return combine<int16_t>(destination, first, second, bytes, choose);
    if (bits == 16) return combine<uint16_t>(destination, first, second, bytes, choose);
    if (bits == 32 && is_signed) return combine<int32_t>(destination, first, second, bytes, choose);
    if (bits == 32) return combine<uint32_t>(destination, first, second, bytes, choose);
    if (bits == 64 && is_signed) return combine<int64_t>(destination, first, second, bytes, choose);
    if (bits == 64) return combine<uint64_t>(destination, first, second, bytes, choose);
    return false;
}

}  // namespace

bool minimum(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t bytes, int32_t bits,
             bool is_signed) {
    return combine(destination, first, second, bytes, bits, is_signed,
                   [](auto a, auto b) { return std::min(a, b); });
}

bool maximum(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t bytes, int32_t bits,
             bool is_signed) {
    return combine(destination, first, second, bytes, bits, is_signed,
                   [](auto a, auto b) { return std::max(a, b); });
}

}  // namespace kernels::plain
