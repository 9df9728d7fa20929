void gather_bits(uint8_t* destination, uint64_t destination_bit, const uint8_t* source, uint64_t source_bit,
                 uint64_t bits, uint64_t step, size_t groups) {
    uint64_t to = destination_bit;
    unsigned pending = 0;
    for (size_t group = 0; group < groups; ++group) {
        for (uint64_t i = 0; i < bits; ++i) {
            if (bit_at(source, source_bit + group * step + i)) pending |= 0x80U >> to % 8;
            const bool last = group == groups - 1 && i == bits - 1;
            if (to % 8 == 7 || last) {
                destination[to / 8] = uint8_t(pending);
                pending = 0;
            }
            ++to;
        }
    }
}
