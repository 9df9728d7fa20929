// Gathering pieces that lie at regular distances, of bytes or of bits. Bit n of a run is the bit 0x80 >> (n
// mod 8) of its byte n div 8.
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

}  // namespace kernels
