#include "kernels/search.h"

#include <algorithm>

#include "tests/kernels/level_test.h"

namespace {

LEVEL_TESTS(SearchKernel, fast_levels());

// Sizes of everyday ranges, and now and then a large one.
size_t any_size(Random& random, size_t round) {
    return between<size_t>(random, 0, round % 100 == 0 ? 20000 : 300);
}

// Runs of one value, in which the first other byte lies anywhere or nowhere, behind every number of whole
// words.
TEST_P(SearchKernel, FindsTheFirstByteThatIsOrIsNot) {
    Random random;
    for (size_t round = 0; round < rounds(4000); ++round) {
        const size_t size = any_size(random, round);
        GuardedBytes memory(size, GuardedBytes::kBothSides[round % 2]);
        const uint16_t value = round % 3 == 0 ? 0 : between<uint16_t>(random, 0, 255);
        std::ranges::fill(memory.bytes(), uint8_t(value));
        const int others = size > 0 ? between(random, 0, 2) : 0;
        const auto other = uint8_t(value ^ 1U << between(random, 0, 7));
        for (int i = 0; i < others; ++i) memory.data()[between<size_t>(random, 0, size - 1)] = other;

        const size_t start = between<size_t>(random, 0, size);
        const uint8_t* data = memory.data() + start;
        const size_t n = size - start;
        SCOPED_TRACE(testing::Message() << n << " bytes from " << start);
        for (const uint8_t byte : {uint8_t(value), other, uint8_t(0)}) {
            ASSERT_EQ(fast().find_byte(data, n, byte), plain().find_byte(data, n, byte));
            ASSERT_EQ(fast().find_not_byte(data, n, byte), plain().find_not_byte(data, n, byte));
        }
        ASSERT_EQ(fast().all_zero(data, n), plain().all_zero(data, n));
        ASSERT_EQ(fast().all_ascii(data, n), plain().all_ascii(data, n));
    }
}

// Places that differ in one byte only, which is no byte that a search would begin with.
TEST_P(SearchKernel, EveryByteOfANeedleCounts) {
    GuardedBytes memory(3000);
    for (size_t m = 2; m <= 40; ++m) {
        for (size_t different = 0; different < m; ++different) {
            std::vector<uint8_t> needle(m);
            for (size_t i = 0; i < m; ++i) needle[i] = uint8_t(0xA0 + i);
            needle[different] = ' ';
            std::ranges::fill(memory.bytes(), uint8_t('x'));
            const size_t at = memory.size() - m - 100;
            std::ranges::copy(needle, memory.data() + at);
            for (size_t place = different; place + m < at; place += 61) {
                std::ranges::copy(needle, memory.data() + place);
                memory.data()[place + different] = 'e';
            }
            ASSERT_EQ(fast().find(memory.data(), memory.size(), needle.data(), m), at)
                << m << " bytes, the difference in byte " << different;
        }
    }
}

// Ranges that begin before the boundary of two pages and end behind it; what is looked for stands outside of
// them as well, and a needle across both of their ends.
TEST_P(SearchKernel, LooksOnlyInsideItsRangeWherePagesMeet) {
    Random random;
    GuardedBytes memory(2 * 4096);
    for (size_t round = 0; round < rounds(6000); ++round) {
        uint8_t* data = memory.data() + 4096 - between<size_t>(random, 2, 300);
        const auto n = size_t(memory.data() + 4096 - data) + between<size_t>(random, 0, 300);
        std::vector<uint8_t> needle(between<size_t>(random, 2, std::min<size_t>(n, random() % 2 ? 17 : 60)));
        for (uint8_t& byte : needle) byte = uint8_t(0x80 + random() % 2);
        const size_t cut_off = between<size_t>(random, 1, needle.size() - 1);
        const size_t at = between<size_t>(random, 0, n - needle.size());
        std::vector<uint8_t*> places = {data - cut_off, data + n - cut_off};
        if (round % 2) places.push_back(data + at);
        std::ranges::fill(memory.bytes(), uint8_t(0));
        for (uint8_t* place : places) std::ranges::copy(needle, place);
        ASSERT_EQ(fast().find(data, n, needle.data(), needle.size()),
                  plain().find(data, n, needle.data(), needle.size()))
            << needle.size() << " bytes in " << n;

        std::ranges::fill(memory.bytes(), uint8_t(0));
        data[-1] = data[n] = 0x80;
        if (round % 3) data[at] = 0x80;
        const size_t expected = round % 3 ? at : kernels::kNotFound;
        ASSERT_EQ(fast().find_byte(data, n, 0x80), expected) << n;
        ASSERT_EQ(fast().find_not_byte(data, n, 0), expected) << n;
        ASSERT_EQ(fast().all_zero(data, n), expected == kernels::kNotFound);
        ASSERT_EQ(fast().all_ascii(data, n), expected == kernels::kNotFound);
    }
}

// Few different values, so that beginnings of the pattern are everywhere; patterns cut from the data, and
// others.
TEST_P(SearchKernel, FindsTheFirstWholePattern) {
    Random random;
    size_t found = 0;
    for (size_t round = 0; round < rounds(8000); ++round) {
        const size_t size = any_size(random, round);
        const size_t length = between<size_t>(random, 1, round % 3 == 0 ? 90 : 5);
        const auto values = between<uint16_t>(random, 0, 2);
        GuardedBytes memory(size, GuardedBytes::kBothSides[round % 2]);
        GuardedBytes pattern(length, GuardedBytes::kBothSides[round / 2 % 2]);
        for (uint8_t& byte : memory.bytes()) byte = uint8_t(between<uint16_t>(random, 0, values));
        for (uint8_t& byte : pattern.bytes()) byte = uint8_t(between<uint16_t>(random, 0, values));
        if (round % 2 == 0 && size >= length) {
            std::copy_n(memory.data() + between<size_t>(random, 0, size - length), length, pattern.data());
        }
        const size_t expected = plain().find(memory.data(), size, pattern.data(), length);
        ASSERT_EQ(fast().find(memory.data(), size, pattern.data(), length), expected)
            << length << " bytes in " << size;
        found += expected != kernels::kNotFound;
    }
    EXPECT_GT(found, rounds(3000));
}

// Words repeated, with a few bytes changed, and needles of such words: many places agree with nearly all of
// the needle, wherever one looks.
TEST_P(SearchKernel, FindsPatternsInRepetitiveData) {
    Random random;
    const std::string_view words[] = {
        "a", "ab", "abc", "aab", "abaababa", "abbabaabbaababba", "aaaaaaaaaaaab"};
    const auto repeated = [&](std::string_view word, size_t size, int changes) {
        std::vector<uint8_t> bytes(size);
        for (size_t i = 0; i < size; ++i) bytes[i] = uint8_t(word[i % word.size()]);
        for (int i = 0; i < changes; ++i) bytes[between<size_t>(random, 0, size - 1)] = 'b';
        return bytes;
    };
    size_t found = 0;
    for (size_t round = 0; round < rounds(1500); ++round) {
        const std::string_view word = words[between<size_t>(random, 0, std::size(words) - 1)];
        const size_t size = between<size_t>(random, 600, 9000);
        const size_t length = between<size_t>(random, 2, round % 2 == 0 ? 70 : 600);
        const GuardedBytes memory(repeated(word, size, between(random, 0, 60)));
        std::vector<uint8_t> needle = repeated(word, length, between(random, 0, 2));
        if (round % 3 == 0) std::copy_n(memory.data() + size - length, length, needle.begin());
        const GuardedBytes pattern(needle, GuardedBytes::kBothSides[round % 2]);
        const size_t expected = plain().find(memory.data(), size, pattern.data(), length);
        ASSERT_EQ(fast().find(memory.data(), size, pattern.data(), length), expected)
            << length << " bytes in " << size;
        found += expected != kernels::kNotFound;
    }
    EXPECT_GT(found, rounds(500));
    EXPECT_LT(found, rounds(1400));
}

// The range is said to be longer than the memory, which ends with the needle.
TEST_P(SearchKernel, ReadsNothingBehindThePageInWhichTheFirstMatchEnds) {
    Random random;
    for (size_t round = 0; round < rounds(3000); ++round) {
        const size_t size = between<size_t>(random, 1, round % 20 == 0 ? 9000 : 400);
        const size_t length = between<size_t>(random, 1, std::min<size_t>(size, round % 2 == 0 ? 20 : 300));
        GuardedBytes memory(size, GuardedBytes::kEnd);
        for (uint8_t& byte : memory.bytes()) byte = uint8_t('a' + between<size_t>(random, 0, round % 3));
        memory.data()[size - 1] = 'z';
        const std::vector<uint8_t> needle(memory.data() + size - length, memory.data() + size);
        const size_t said = size + between<size_t>(random, 1, 10000);
        ASSERT_EQ(fast().find(memory.data(), said, needle.data(), length), size - length)
            << length << " bytes in " << size;
        ASSERT_EQ(fast().find_byte(memory.data(), said, 'z'), size - 1);
        std::fill_n(memory.data(), size - 1, uint8_t('a'));
        ASSERT_EQ(fast().find_not_byte(memory.data(), said, 'a'), size - 1);
        ASSERT_FALSE(fast().all_zero(memory.data(), said));
    }
}

TEST_P(SearchKernel, ComparesAllBytesOfRangesThatMayOverlap) {
    Random random;
    for (size_t round = 0; round < rounds(4000); ++round) {
        GuardedBytes first(any_size(random, round) + 1, GuardedBytes::kEnd, random);
        GuardedBytes second(first.copy(), GuardedBytes::kBothSides[round % 2]);
        const size_t size = first.size();
        const size_t at = between<size_t>(random, 0, size - 1);
        ASSERT_TRUE(fast().equal(first.data(), second.data(), size));
        second.data()[at] ^= uint8_t(1U << between(random, 0, 7));
        ASSERT_FALSE(fast().equal(first.data(), second.data(), size)) << "offset " << at << " of " << size;
        ASSERT_TRUE(fast().equal(first.data(), second.data(), at));
        ASSERT_EQ(fast().equal(first.data(), first.data() + 1, size - 1),
                  plain().equal(first.data(), first.data() + 1, size - 1));
    }
}

}  // namespace
