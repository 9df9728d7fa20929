// Whether a run of n bytes and one of m bytes have no byte in common. Of a distance and its negative, the one
// that does not wrap says how far apart the two begin.
inline bool apart(const uint8_t* first_run, size_t n, const uint8_t* second_run, size_t m) {
    const uintptr_t distance = uintptr_t(second_run) - uintptr_t(first_run);
    return distance >= n && -distance >= m;
}
