bool bit(const uint8_t* data, size_t n) { return (data[n / 8] & 0x80 >> n % 8) != 0; }

void set_bit(uint8_t* data, size_t n, bool value) {
    const auto mask = uint8_t(0x80 >> n % 8);
    data[n / 8] = uint8_t(value ? data[n / 8] | mask : data[n / 8] & ~mask);
}

void reverse_bytes(uint8_t* data, size_t n) {
    for (size_t i = 0; i < n / 2; ++i) std::swap(data[i], data[n - 1 - i]);
}

void reverse_bits(uint8_t* data, size_t first, size_t count) {
    for (size_t i = 0; i < count / 2; ++i) {
        const size_t low = first + i;
        const size_t high = first + count - 1 - i;
        const bool value = bit(data, low);
        set_bit(data, low, bit(data, high));
        set_bit(data, high, value);
    }
}

void reverse_bits_in_bytes(uint8_t* data, size_t n) {
    for (size_t i = 0; i < n; ++i) reverse_bits(data + i, 0, 8);
}
