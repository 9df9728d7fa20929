// The smaller, or the larger, of two arrays of integers, element by element.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kernels {

// Stores the smaller (the larger) of `first` and `second` for each whole element of `bytes` bytes; bytes
// after the last one stay as they are. An element has `bits` bits: 8, 16, 32 or 64; false, and nothing is
// stored, for any other number. Any alignment. One element is stored before the next is read: any overlap
// gives what that gives.
bool minimum(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t bytes, int32_t bits,
             bool is_signed);
bool maximum(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t bytes, int32_t bits,
             bool is_signed);

namespace plain {

bool minimum(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t bytes, int32_t bits,
             bool is_signed);
bool maximum(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t bytes, int32_t bits,
             bool is_signed);

}  // namespace plain
}  // namespace kernels
