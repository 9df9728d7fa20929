// Gathering pieces that lie at regular distances, of bytes or of bits, and expanding bits to bytes. Bit n of
// a run is the bit 0x80 >> (n mod 8) of its byte n div 8.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kernels {

// Copies `pieces` pieces of `piece` bytes, which begin `step` bytes apart in the source (at 0 and negative
// distances too), side by side to the destination. `source` is where the first one begins. One piece after
// another, each as through a buffer of its own: any overlap gives what that gives.
void gather(uint8_t* destination, const uint8_t* source, size_t piece, ptrdiff_t step, size_t pieces);

// Copies `groups` groups of `bits` bits, which begin `step` (at least `bits`) bits apart in the source, side
// by side to the destination. Destination bytes are not read and are stored whole: bits before the first and
// after the last copied bit become 0. The bits are taken and stored in order, a byte being stored when its
// last bit is filled: any overlap gives what that gives. Without bits, no byte is stored.
void gather_bits(uint8_t* destination, uint64_t destination_bit, const uint8_t* source, uint64_t source_bit,
                 uint64_t bits, uint64_t step, size_t groups);

// Sets byte i of the destination, for i below `destination_count` (bytes), to `high` where bit i of the
// source is 1 and to `low` where it is 0. Bits after the `source_count` bytes of the source count as 0. Four
// bytes of the source after another, each four read before their 32 bytes are written: any overlap gives what
// that gives.
void expand_bits(uint8_t* destination, size_t destination_count, const uint8_t* source, size_t source_count,
                 uint8_t low, uint8_t high);

namespace plain {

void gather(uint8_t* destination, const uint8_t* source, size_t piece, ptrdiff_t step, size_t pieces);
void gather_bits(uint8_t* destination, uint64_t destination_bit, const uint8_t* source, uint64_t source_bit,
                 uint64_t bits, uint64_t step, size_t groups);
void expand_bits(uint8_t* destination, size_t destination_count, const uint8_t* source, size_t source_count,
                 uint8_t low, uint8_t high);

}  // namespace plain
}  // namespace kernels
