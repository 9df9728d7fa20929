// Searching and comparing runs of bytes. Nothing is written; runs may overlap; a run of 0 bytes may be nil.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kernels {

inline constexpr size_t kNotFound = SIZE_MAX;

// The index of the first of n bytes that is, or is not, `value`. What lies behind the page of that byte is
// not read.
size_t find_byte(const uint8_t* data, size_t n, uint8_t value);
size_t find_not_byte(const uint8_t* data, size_t n, uint8_t value);

// The index in the n bytes of `haystack` at which the m bytes of `needle`, at least one, first lie wholly
// inside. Time grows with n + m, whatever the bytes; no memory of its own. What lies behind the page in which
// the needle ends is not read.
size_t find(const uint8_t* haystack, size_t n, const uint8_t* needle, size_t m);

bool equal(const uint8_t* first, const uint8_t* second, size_t n);
bool all_zero(const uint8_t* data, size_t n);
bool all_ascii(const uint8_t* data, size_t n);  // below 0x80

}  // namespace kernels
