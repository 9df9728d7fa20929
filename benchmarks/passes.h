// Passes written by hand for one instruction set, as rivals of members that no library has a peer for. Nil
// where the machine lacks the instructions.
#pragma once

#include <cstddef>
#include <cstdint>

namespace bench {

// `step` bytes, or bits, from one piece to the next. Both read and store up to 128 bytes behind
// what they are asked for.
using GatherPass = void(uint8_t* destination, const uint8_t* source, size_t piece, size_t step,
                        size_t pieces);

// Pieces of up to 64 bytes: a shuffle of 128 bytes at a time (AVX-512 VBMI).
GatherPass* gather_pass();

// Groups of up to 57 bits: pext takes them out of 57 bits at a time (BMI2).
GatherPass* pext_pass();

// Multiplies `n` samples of 16 bits in place, truncated and saturated, in doubles (AVX-512 or AVX2).
using ScalePass = void(uint8_t* samples, size_t n, double factor);
ScalePass* scale16_pass();

}  // namespace bench
