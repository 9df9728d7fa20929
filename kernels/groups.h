// Changing groups of four bytes in place. `groups` counts groups.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kernels {

// Sets the fourth byte of each group to `limit` minus the sum of the other three, or to the nearest of 0 and
// 255 when that does not fit a byte; where the sum is 0 and `zero_stays`, to 0.
void complete_sum(uint8_t* data, size_t groups, int32_t limit, bool zero_stays);

// Replaces each group whose four bytes match by the low 8 bits of the four numbers of `replacement`. Byte k
// matches when it is at least reference[k] * (1 - tolerance) and at most reference[k] * (1 + tolerance), in
// double precision, truncated to 32-bit integers; a bound that does not fit, or is not a number, is the most
// negative one.
void replace_similar(uint8_t* data, size_t groups, const int32_t (&reference)[4],
                     const int32_t (&replacement)[4], double tolerance);

}  // namespace kernels
