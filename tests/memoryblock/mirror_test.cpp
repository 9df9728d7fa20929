// Mirroring: which bytes and bits each member changes.
#include "tests/memoryblock/range_member.h"

namespace {

void mirror_bytes(std::span<uint8_t> bytes, size_t first, size_t count) {
    std::ranges::reverse(bytes.subspan(first, count));
}

// The range as a list of bits, and back.
void mirror_bits(std::span<uint8_t> bytes, size_t first, size_t count) {
    std::vector<bool> bits;
    for (size_t n = first; n < first + count; ++n) bits.push_back((bytes[n / 8] & 0x80 >> n % 8) != 0);
    for (size_t n = first; n < first + count; ++n) {
        const auto mask = uint8_t(0x80 >> n % 8);
        bytes[n / 8] = uint8_t(bits.back() ? bytes[n / 8] | mask : bytes[n / 8] & ~mask);
        bits.pop_back();
    }
}

void mirror_bits_in_bytes(std::span<uint8_t> bytes, size_t first, size_t count) {
    for (size_t i = first; i < first + count; ++i) mirror_bits(bytes, 8 * i, 8);
}

using MirrorTest = RangeTest;

TEST_F(MirrorTest, MembersChangeThePartOfTheirRangeInsideTheBlock) {
    check(
        {.name = "MirrorBitsInBytesZOR", .change = mirror_bits_in_bytes, .rest = kNoLength, .negative = ""});
    check({.name = "MirrorBytesZOR", .change = mirror_bytes, .rest = -1, .negative = ""});
    check({.name = "MirrorBitsZOR", .change = mirror_bits, .rest = kNoLength, .units = 8, .negative = ""});
}

// The numbering of bits, by hand: neither the model nor the bundle counts them here.
TEST_F(MirrorTest, BitsAreCountedFromTheMostSignificantOne) {
    const auto mirrored = [&](const char* before, int32_t first, int32_t count) {
        const ObjectRef memory = block(hex(before));
        call(memory, "MirrorBitsZOR", {first, count});
        return bytes(memory);
    };
    EXPECT_EQ(mirrored("01 80", 4, 8), hex("01 80"));
    EXPECT_EQ(mirrored("08 00", 4, 8), hex("00 10"));
    EXPECT_EQ(mirrored("10", 3, 3), hex("04"));
    const ObjectRef memory = block(hex("01 f0 12"));
    call(memory, "MirrorBitsInBytesZOR", {1, 2});
    EXPECT_EQ(bytes(memory), hex("01 0f 48"));
    call(memory, "MirrorBytesZOR");
    EXPECT_EQ(bytes(memory), hex("48 0f 01"));
}

TEST_F(MirrorTest, BitsAreCountedIn64Bits) {
    GuardedBytes memory(hex("01 80 c0"));
    call(view(memory, 0x20000001), "MirrorBitsZOR", {0, 24});
    EXPECT_TRUE(same_bytes(memory.bytes(), hex("03 01 80")));
}

}  // namespace
