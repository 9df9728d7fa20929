// The loops are such that the compiler turns them into vector operations.

template <class Unit>
void swap_units(uint8_t* data, size_t n) {
    for (size_t i = 0; i < n / sizeof(Unit); ++i) {
        uint8_t* unit = data + i * sizeof(Unit);
        store(unit, bytes_reversed(load<Unit>(unit)));
    }
}

void fill(uint8_t* data, size_t n, uint8_t value) {
    if (n > 0) memset(data, value, n);
}

void invert(uint8_t* data, size_t n) {
    for (size_t i = 0; i < n; ++i) data[i] = data[i] ^ 0xFF;
}

void swap_units16(uint8_t* data, size_t n) { swap_units<uint16_t>(data, n); }
void swap_units32(uint8_t* data, size_t n) { swap_units<uint32_t>(data, n); }
