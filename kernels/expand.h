// Expanding bits to bytes. Bit n of a run is the bit 0x80 >> (n mod 8) of its byte n div 8.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kernels {

// Sets byte i of the destination, for i below `destination_count` (bytes), to `high` where bit i of the
// source is 1 and to `low` where it is 0. Bits after the `source_count` bytes of the source count as 0. Four
// bytes of the source after another, each four read before their 32 bytes are written: any overlap gives what
// that gives.
void expand_bits(uint8_t* destination, size_t destination_count, const uint8_t* source, size_t source_count,
                 uint8_t low, uint8_t high);

}  // namespace kernels
