// The smaller, or the larger, of two arrays of integers, element by element.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kernels {

enum class Element { kUint8, kInt8, kUint16, kInt16, kUint32, kInt32, kUint64, kInt64 };
inline constexpr size_t kElements = 8;

// Stores the smaller (the larger) of `first` and `second` for each of n elements, at any alignment. One
// element is stored before the next is read: any overlap gives what that gives.
using CombineElements = void(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t n);
void minimum(Element element, uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t n);
void maximum(Element element, uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t n);

}  // namespace kernels
