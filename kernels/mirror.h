// Reversing the order of bytes and of bits, in place, at any alignment. Bit n of a run is the bit 0x80 >> (n
// mod 8) of its byte n div 8. An empty run may be nil.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kernels {

// Reverses the order of n bytes.
void reverse_bytes(uint8_t* data, size_t n);

// Reverses the order of the eight bits inside each of n bytes.
void reverse_bits_in_bytes(uint8_t* data, size_t n);

// Reverses the order of `count` bits from bit `first` on; `first` + `count` does not pass SIZE_MAX, nor
// `count` half of it. The other bits of the first and the last byte keep their values, and no other byte is
// touched.
void reverse_bits(uint8_t* data, size_t first, size_t count);

}  // namespace kernels
