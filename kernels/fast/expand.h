// Source and destination may overlap only in the slow way: four bytes of the source are read before their 32
// are written.
void expand_bits(uint8_t* destination, size_t destination_count, const uint8_t* source, size_t source_count,
                 uint8_t low, uint8_t high) {
    if (!apart(destination, destination_count, source, source_count)) {
        return rule::expand_bits(destination, destination_count, source, source_count, low, high);
    }
    const Bytes lows = all(low);
    const Bytes highs = all(high);
    const size_t whole = smaller(destination_count, 8 * source_count) / kVectorBytes * kVectorBytes;
    each_vector(0, whole, [=, bits = source](size_t i) mutable {
        store(destination + i, expanded(bits, lows, highs));
        bits += kVectorBytes / 8;
    });
    if (whole == destination_count) return;
    rule::expand_bits(destination + whole, destination_count - whole, source + whole / 8,
                      source_count - smaller(source_count, whole / 8), low, high);
}
