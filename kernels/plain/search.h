size_t find_byte(const uint8_t* data, size_t n, uint8_t value) {
    for (size_t i = 0; i < n; ++i) {
        if (data[i] == value) return i;
    }
    return kNotFound;
}

size_t find_not_byte(const uint8_t* data, size_t n, uint8_t value) {
    for (size_t i = 0; i < n; ++i) {
        if (data[i] != value) return i;
    }
    return kNotFound;
}

bool equal(const uint8_t* first, const uint8_t* second, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        if (first[i] != second[i]) return false;
    }
    return true;
}

size_t find(const uint8_t* haystack, size_t n, const uint8_t* needle, size_t m) {
    for (size_t start = 0; start < n && m <= n - start; ++start) {
        if (equal(haystack + start, needle, m)) return start;
    }
    return kNotFound;
}

bool all_zero(const uint8_t* data, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        if (data[i] != 0) return false;
    }
    return true;
}

bool all_ascii(const uint8_t* data, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        if (data[i] >= 0x80) return false;
    }
    return true;
}
