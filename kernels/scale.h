// Multiplying unsigned samples by a factor, in place, with saturation.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kernels {

// Replaces each sample x by min(trunc(x * factor), largest), the product formed in double precision and
// `largest` being 255 or 65535; 0 stays 0 whatever the factor. A factor below 0 or not a number changes
// nothing.
void scale_uint8(uint8_t* samples, size_t n, double factor);
// `n` counts samples, at any alignment.
void scale_uint16(uint8_t* samples, size_t n, double factor);

}  // namespace kernels
