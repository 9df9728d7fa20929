// Changing bytes one by one or in units of 2 and 4, in place, at any alignment. Lengths count bytes; a run of
// 0 bytes may be nil.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kernels {

void fill(uint8_t* data, size_t n, uint8_t value);

// Complements every bit.
void invert(uint8_t* data, size_t n);

// Reverses the bytes of each whole unit of 2, or of 4, bytes. Up to 1, or 3, bytes after the last one stay as
// they are.
void swap_units16(uint8_t* data, size_t n);
void swap_units32(uint8_t* data, size_t n);

}  // namespace kernels
