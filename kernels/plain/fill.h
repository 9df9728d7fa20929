void fill(uint8_t* data, size_t n, uint8_t value) {
    for (size_t i = 0; i < n; ++i) data[i] = value;
}

void invert(uint8_t* data, size_t n) {
    for (size_t i = 0; i < n; ++i) data[i] = data[i] ^ 0xFF;
}

void swap_units16(uint8_t* data, size_t n) {
    for (size_t i = 0; n - i >= 2; i += 2) std::swap(data[i], data[i + 1]);
}

void swap_units32(uint8_t* data, size_t n) {
    for (size_t i = 0; n - i >= 4; i += 4) {
        std::swap(data[i], data[i + 3]);
        std::swap(data[i + 1], data[i + 2]);
    }
}
