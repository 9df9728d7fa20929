// Copying runs of bytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kernels {

// Copies n bytes as through an intermediate buffer: source and destination may overlap in either direction.
void copy(uint8_t* destination, const uint8_t* source, size_t n);

namespace plain {

void copy(uint8_t* destination, const uint8_t* source, size_t n);

}  // namespace plain
}  // namespace kernels
