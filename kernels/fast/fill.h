void fill(uint8_t* data, size_t n, uint8_t value) {
    if (n > 0) memset(data, value, n);
}

void invert(uint8_t* data, size_t n) {
    change_bytes(data, n, 1, [](Bytes bytes) { return ~bytes; });
}

void swap_units16(uint8_t* data, size_t n) {
    change_bytes(data, n / 2 * 2, 2, [](Bytes bytes) { return swapped16(bytes); });
}

void swap_units32(uint8_t* data, size_t n) {
    change_bytes(data, n / 4 * 4, 4, [](Bytes bytes) { return swapped32(bytes); });
}
