// Walks away from the side on which the destination lies, so that no byte is overwritten before it was read.
void copy(uint8_t* destination, const uint8_t* source, size_t n) {
    if (uintptr_t(destination) <= uintptr_t(source)) {
        for (size_t i = 0; i < n; ++i) destination[i] = source[i];
    } else {
        for (size_t i = n; i > 0; --i) destination[i - 1] = source[i - 1];
    }
}
