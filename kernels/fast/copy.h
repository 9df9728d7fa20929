void copy(uint8_t* destination, const uint8_t* source, size_t n) { memmove(destination, source, n); }
