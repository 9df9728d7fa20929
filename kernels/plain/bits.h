// Bit n of a run is the bit 0x80 >> (n mod 8) of its byte n div 8.
bool bit_at(const uint8_t* run, uint64_t bit) { return run[bit / 8] & 0x80 >> bit % 8; }
