// Passes written for one machine, as rivals of the gathering members. Nil where the machine lacks their
// instructions.
#pragma once

#include <cstddef>
#include <cstdint>

namespace bench {

// Distances of `step` bytes, or bits, from one piece to the next; both read and store up to 128 bytes behind
// what they are asked for.
using GatherPass = void(uint8_t* destination, const uint8_t* source, size_t piece, size_t step,
                        size_t pieces);

// Pieces of up to 64 bytes: a shuffle of 128 bytes at a time (AVX-512 VBMI).
GatherPass* gather_pass();

// Groups of up to 57 bits: pext takes them out of 57 bits at a time (BMI2).
GatherPass* pext_pass();

}  // namespace bench
