// Memory in which a byte read or written too far is a crash or a failed check.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <string_view>
#include <vector>

// Numbers from the seed of the run: --gtest_random_seed, or 1, so that runs without it are all the same. The
// first one that is made prints the seed.
struct Random : std::minstd_rand {
    Random();
};

// A number from `first` to `last`.
template <class Number>
Number between(Random& random, Number first, Number last) {
    return std::uniform_int_distribution<Number>(first, last)(random);
}

// Of so many rounds, those that are run: under something slow, every SWEEP_EVERY-th one, as the environment
// says.
size_t rounds(size_t all);

// Bytes between two inaccessible pages. They touch one of them; what remains of the pages in between on their
// other side holds a pattern, and under AddressSanitizer cannot be touched either, but for up to 7 bytes in
// front.
class GuardedBytes {
 public:
    enum Side {
        kStart,  // the byte in front of the first one cannot be touched
        kEnd,    // the byte after the last one cannot be touched
    };
    static constexpr Side kBothSides[] = {kStart, kEnd};

    explicit GuardedBytes(size_t size, Side side = kEnd);                        // all zero
    GuardedBytes(size_t size, Side side, Random& random);                        // any bytes
    explicit GuardedBytes(const std::vector<uint8_t>& bytes, Side side = kEnd);  // a copy
    ~GuardedBytes();
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;

    uint8_t* data() { return data_; }
    const uint8_t* data() const { return data_; }
    size_t size() const { return size_; }
    std::span<uint8_t> bytes() { return {data_, size_}; }
    std::vector<uint8_t> copy() const { return {data_, data_ + size_}; }

    // Whether the pattern around the bytes is as it was.
    testing::AssertionResult untouched_around() const;

 private:
    void set_touchable_around(bool touchable) const;
    testing::AssertionResult pattern_is_there() const;

    uint8_t* pages_;
    size_t accessible_;
    uint8_t* data_;
    size_t size_;
};

// Whether both hold the same bytes; says which differ.
testing::AssertionResult same_bytes(std::span<const uint8_t> actual, std::span<const uint8_t> expected);

// Bytes by their hexadecimal form: "01 f0 7f".
std::vector<uint8_t> hex(std::string_view text);
