// One piece after another, each as through a buffer of its own.
void gather(uint8_t* destination, const uint8_t* source, size_t piece, ptrdiff_t step, size_t pieces) {
    for (size_t i = 0; i < pieces; ++i) {
        copy(destination + i * piece, source + ptrdiff_t(i) * step, piece);
    }
}
