// Where the C library has a fast routine, it is used; the others go over words, four at a time, and look at
// single bytes only inside the word that matters and after the last whole one.

constexpr size_t kGroup = 4 * kWord;

size_t find_byte(const uint8_t* data, size_t n, uint8_t value) {
    const void* found = n > 0 ? memchr(data, value, n) : nullptr;
    return found ? size_t(static_cast<const uint8_t*>(found) - data) : kNotFound;
}

size_t find_not_byte(const uint8_t* data, size_t n, uint8_t value) {
    const uint64_t same = eight_of(value);
    const auto differences = [&](size_t i) { return load<uint64_t>(data + i) ^ same; };
    // Whole groups are aligned: none reaches into a page behind that of the byte that decides.
    const size_t head = smaller(n, size_t(-uintptr_t(data) % kGroup));
    size_t i = 0;
    while (i < head && data[i] == value) ++i;
    if (i < head) return i;
    while (n - i >= kGroup && (differences(i) | differences(i + kWord) | differences(i + 2 * kWord) |
                               differences(i + 3 * kWord)) == 0) {
        i += kGroup;
    }
    while (n - i >= kWord && differences(i) == 0) i += kWord;
    while (i < n && data[i] == value) ++i;
    return i < n ? i : kNotFound;
}

// The needle's last byte is compared before the rest: repetitive data then seldom costs a whole comparison.
size_t find(const uint8_t* haystack, size_t n, const uint8_t* needle, size_t m) {
    if (m > n) return kNotFound;
    const uint8_t* const end = haystack + (n - m) + 1;
    for (const uint8_t* at = haystack;; ++at) {
        at = static_cast<const uint8_t*>(memchr(at, needle[0], size_t(end - at)));
        if (!at) return kNotFound;
        if (at[m - 1] == needle[m - 1] && memcmp(at, needle, m) == 0) return size_t(at - haystack);
    }
}

bool equal(const uint8_t* first, const uint8_t* second, size_t n) {
    return n == 0 || memcmp(first, second, n) == 0;
}

bool all_zero(const uint8_t* data, size_t n) { return find_not_byte(data, n, 0) == kNotFound; }

bool all_ascii(const uint8_t* data, size_t n) {
    const uint64_t high_bits = eight_of(0x80);
    size_t i = 0;
    for (; n - i >= kGroup; i += kGroup) {
        const uint64_t bits = load<uint64_t>(data + i) | load<uint64_t>(data + i + kWord) |
                              load<uint64_t>(data + i + 2 * kWord) | load<uint64_t>(data + i + 3 * kWord);
        if ((bits & high_bits) != 0) return false;
    }
    for (; n - i >= kWord; i += kWord) {
        if ((load<uint64_t>(data + i) & high_bits) != 0) return false;
    }
    for (; i < n; ++i) {
        if (data[i] >= 0x80) return false;
    }
    return true;
}
