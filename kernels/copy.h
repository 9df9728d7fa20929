// Copying runs of bytes.
//
// Every operation of a kernel header stands twice: in `kernels`, as fast as it gets, for the members; and in
// `kernels::plain`, as the rule itself, byte by byte, against which the fast form is held.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kernels {

// Copies n bytes as through an intermediate buffer: source and destination may overlap in either direction.
void copy(uint8_t* destination, const uint8_t* source, size_t n);

}  // namespace kernels
