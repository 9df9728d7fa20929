// Arrays of pairs of 32-bit floats, 8 bytes for each pair, at any alignment. `pairs` counts pairs.
//
// Everything is computed in the order of operations that is written here: each function of the mathematical
// library is called by itself, and each product and each sum is rounded by itself (no fused operations, no
// excess precision). So results are bit for bit those of the library's single-precision functions.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kernels {

// A logarithmic sine sweep (also: exponential sweep), which goes from `first_frequency` to `last_frequency`
// cycles for each `duration` pairs while i goes from 0 to `duration`. With L = log(last / first),
// u = i / duration, K = first * 2 pi / L and p = K * (exp(L * u) - 1), pair i is
//     0.944 * sin(p), 16 * 2 pi * u
// where 2 pi is 6.28318530718. u, L, K and the products with them are doubles; exp and sin are expf and sinf
// of what is rounded to float. Arguments without a sweep (equal frequencies, one that is 0, a duration of 0)
// give infinities and NaNs. (A. Farina, "Simultaneous measurement of impulse response and distortion with a
// swept-sine technique", 108th AES Convention, 2000, has the formula with time for u.)
void log_sweep(uint8_t* destination, size_t pairs, int32_t first_frequency, int32_t last_frequency,
               double duration);

// (magnitude, angle in radians) to (x, y): cosf(angle) * magnitude, magnitude * sinf(angle). The arrays may
// overlap: pairs are converted in order, each read whole before it is stored.
void polar_to_cartesian(uint8_t* destination, const uint8_t* source, size_t pairs);

// (x, y) to (magnitude, angle): sqrtf(y * y + x * x), atan2f(y, x). Overlap as above.
void cartesian_to_polar(uint8_t* destination, const uint8_t* source, size_t pairs);

}  // namespace kernels
