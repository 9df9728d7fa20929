void expand_bits(uint8_t* destination, size_t destination_count, const uint8_t* source, size_t source_count,
                 uint8_t low, uint8_t high) {
    for (size_t group = 0; group < destination_count; group += 32) {
        uint8_t four[4] = {};
        for (size_t i = 0; i < 4; ++i) {
            if (group / 8 + i < source_count) four[i] = source[group / 8 + i];
        }
        for (size_t i = 0; i < 32 && group + i < destination_count; ++i) {
            destination[group + i] = bit_at(four, i) ? high : low;
        }
    }
}
