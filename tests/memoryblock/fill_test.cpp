// Filling, inverting and byte order: which bytes each member changes.
#include "tests/memoryblock/in_place.h"

namespace {

template <uint8_t Value>
void fill(std::span<uint8_t> bytes, size_t first, size_t count) {
    std::ranges::fill(bytes.subspan(first, count), Value);
}

void invert(std::span<uint8_t> bytes, size_t first, size_t count) {
    for (uint8_t& byte : bytes.subspan(first, count)) byte = uint8_t(~byte);
}

template <size_t Unit>
void swap(std::span<uint8_t> bytes, size_t first, size_t count) {
    for (; count >= Unit; first += Unit, count -= Unit) std::ranges::reverse(bytes.subspan(first, Unit));
}

void swap_all(std::span<uint8_t> bytes, size_t first, size_t count) {
    std::ranges::reverse(bytes.subspan(first, count));
}

using FillTest = InPlaceTest;

TEST_F(FillTest, MembersChangeThePartOfTheirRangeInsideTheBlock) {
    check({"FillBytesZOR", {65}, 0, kNilBlock, 1, fill<65>});
    check({"FillBytesZOR", {256}, 0, kNilBlock, 1, fill<0>});
    check({"FillBytesZOR", {-1}, 0, kNilBlock, 1, fill<0xFF>});
    check({"InvertBytesZOR", {}, kNoLength, "", 1, invert});
    check({"SwapBytesZOR", {}, kNoLength, "", 1, swap_all});
    check({"SwapBytes16ZOR", {}, kNoLength, "", 1, swap<2>});
    check({"SwapBytes32ZOR", {}, kNoLength, "", 1, swap<4>});
}

}  // namespace
