// The eight bytes for the bits of one byte, its most significant bit first in memory.
uint64_t expand_byte(uint8_t byte, uint64_t low, uint64_t low_to_high) {
    constexpr uint64_t kBitOfEach = UINT64_C(0x0102040810204080);
    // A byte that keeps its one bit reaches 0x80 when 0x7F is added to it.
    const uint64_t chosen = eight_of(byte) & kBitOfEach;
    const uint64_t ones = (chosen + eight_of(0x7F)) >> 7 & eight_of(1);
    return low ^ (ones * 0xFF & low_to_high);
}

void expand_four(uint8_t* destination, const uint8_t* source, uint64_t low, uint64_t low_to_high) {
    uint8_t four[4];
    memcpy(four, source, sizeof four);
    for (size_t i = 0; i < 4; ++i) store(destination + 8 * i, expand_byte(four[i], low, low_to_high));
}

void expand_bits(uint8_t* destination, size_t destination_count, const uint8_t* source, size_t source_count,
                 uint8_t low, uint8_t high) {
    const uint64_t lows = eight_of(low);
    const uint64_t low_to_high = lows ^ eight_of(high);
    for (; source_count >= 4 && destination_count >= 32; source += 4, destination += 32) {
        expand_four(destination, source, lows, low_to_high);
        source_count -= 4;
        destination_count -= 32;
    }
    while (destination_count > 0) {
        uint8_t four[4] = {};
        uint8_t expanded[32];
        const size_t taken = smaller<size_t>(4, source_count);
        const size_t stored = smaller<size_t>(32, destination_count);
        memcpy(four, source, taken);
        expand_four(expanded, four, lows, low_to_high);
        memcpy(destination, expanded, stored);
        source += taken;
        source_count -= taken;
        destination += stored;
        destination_count -= stored;
    }
}
