// Filling, inverting and byte order: which bytes each member changes.
#include "tests/memoryblock/range_member.h"

namespace {

template <uint8_t Value>
void fill(std::span<uint8_t> bytes, size_t first, size_t count) {
    std::ranges::fill(bytes.subspan(first, count), Value);
}

template <size_t Unit>
void swap(std::span<uint8_t> bytes, size_t first, size_t count) {
    for (; count >= Unit; first += Unit, count -= Unit) std::ranges::reverse(bytes.subspan(first, Unit));
}

void swap_all(std::span<uint8_t> bytes, size_t first, size_t count) {
    std::ranges::reverse(bytes.subspan(first, count));
}

using FillTest = RangeTest;

TEST_F(FillTest, MembersChangeThePartOfTheirRangeInsideTheBlock) {
    check({.name = "FillBytesZOR", .after = {65}, .change = fill<65>, .negative = ""});
    check({.name = "FillBytesZOR", .after = {256}, .change = fill<0>, .negative = ""});
    check({.name = "FillBytesZOR", .after = {-1}, .change = fill<0xFF>, .negative = ""});
    const auto quiet = [&](const char* name, auto change) {
        check({.name = name, .change = change, .rest = kNoLength, .nil = "", .negative = ""});
    };
    quiet("InvertBytesZOR", each_unit(1, [](uint8_t* byte, size_t) { *byte = uint8_t(~*byte); }));
    quiet("SwapBytesZOR", swap_all);
    quiet("SwapBytes16ZOR", swap<2>);
    quiet("SwapBytes32ZOR", swap<4>);
}

}  // namespace
