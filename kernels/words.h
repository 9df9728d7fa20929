// Numbers at any address, and the bytes and bits inside a 64-bit word. The first byte in memory is the least
// significant one.
//
// All is `static`, so that every translation unit keeps a copy of its own, made with its own flags.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace kernels {

template <class Number>
static inline Number load(const uint8_t* bytes) {
    Number number;
    memcpy(&number, bytes, sizeof number);
    return number;
}

template <class Number>
static inline void store(uint8_t* bytes, Number number) {
    memcpy(bytes, &number, sizeof number);
}

template <class Number>
static constexpr Number smaller(Number a, Number b) {
    return b < a ? b : a;
}

template <class Number>
static constexpr Number larger(Number a, Number b) {
    return a < b ? b : a;
}

inline constexpr size_t kWord = sizeof(uint64_t);

// A word of eight equal bytes.
static inline uint64_t eight_of(uint8_t byte) { return byte * UINT64_C(0x0101010101010101); }

static inline uint64_t bytes_reversed(uint64_t word) { return __builtin_bswap64(word); }
static inline uint32_t bytes_reversed(uint32_t word) { return __builtin_bswap32(word); }
static inline uint16_t bytes_reversed(uint16_t word) { return __builtin_bswap16(word); }

// Each byte with its eight bits in reverse order: halves, then pairs, then neighbours change places.
static inline uint64_t bits_in_bytes_reversed(uint64_t word) {
    constexpr uint64_t kHalves = UINT64_C(0x0F0F0F0F0F0F0F0F);
    constexpr uint64_t kPairs = UINT64_C(0x3333333333333333);
    constexpr uint64_t kNeighbours = UINT64_C(0x5555555555555555);
    word = (word >> 4 & kHalves) | (word & kHalves) << 4;
    word = (word >> 2 & kPairs) | (word & kPairs) << 2;
    return (word >> 1 & kNeighbours) | (word & kNeighbours) << 1;
}

static inline uint8_t bits_in_byte_reversed(uint8_t byte) { return uint8_t(bits_in_bytes_reversed(byte)); }

}  // namespace kernels
