// Libraries that do what members do. Each is optional: what was not found when this was built is nil.
#pragma once

#include <cstddef>
#include <cstdint>

namespace bench::peers {

// Indices, SIZE_MAX for none.
using FindByte = size_t(const uint8_t* data, size_t n, uint8_t value);
using Find = size_t(const uint8_t* haystack, size_t n, const uint8_t* needle, size_t m);
using Update = void(uint8_t* data, size_t n);
using Combine = void(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t n);

// StringZilla
extern FindByte* const stringzilla_find_byte;
extern Find* const stringzilla_find;
extern bool (*const stringzilla_equal)(const uint8_t* first, const uint8_t* second, size_t n);
extern void (*const stringzilla_copy)(uint8_t* destination, const uint8_t* source, size_t n);
extern void (*const stringzilla_move)(uint8_t* destination, const uint8_t* source, size_t n);
extern void (*const stringzilla_fill)(uint8_t* data, size_t n, uint8_t value);
extern void (*const stringzilla_lookup)(uint8_t* data, size_t n, const uint8_t (&table)[256]);

// The crate memchr
extern FindByte* const memchr_crate_find_byte;
extern Find* const memchr_crate_find;

// ISA-L
extern bool (*const isal_all_zero)(const uint8_t* data, size_t n);

// VOLK
extern Update* const volk_swap16;
extern Update* const volk_swap32;

// OpenCV
extern Update* const opencv_invert;
extern Update* const opencv_reverse;
extern Combine* const opencv_minimum[8];  // by kernels::Element; nil where there is none
extern Combine* const opencv_maximum[8];
extern void (*const opencv_scale8)(uint8_t* samples, size_t bytes, double factor);  // rounds to nearest
extern void (*const opencv_scale16)(uint8_t* samples, size_t bytes, double factor);

// SLEEF, to 3.5 units in the last place; whole eights of pairs
using Pairs = void(uint8_t* destination, const uint8_t* source, size_t pairs);
extern Pairs* const sleef_polar_to_cartesian;
extern Pairs* const sleef_cartesian_to_polar;

}  // namespace bench::peers
