// Order is reversed by vectors from both ends towards the middle: both are read before either is written.

// Rules that reverse a piece: its bytes, or all of its bits.
struct ReverseBytes {
    Bytes operator()(Bytes bytes) const { return reversed(bytes); }
    uint64_t operator()(uint64_t word) const { return bytes_reversed(word); }
    uint32_t operator()(uint32_t word) const { return bytes_reversed(word); }
    uint16_t operator()(uint16_t word) const { return bytes_reversed(word); }
    uint8_t operator()(uint8_t byte) const { return byte; }
};
struct ReverseBits {
    Bytes operator()(Bytes bytes) const { return reversed(bits_reversed(bytes)); }
    template <class Word>
    Word operator()(Word word) const {
        return Word(bits_in_bytes_reversed(ReverseBytes()(word)));
    }
};

// Exchanges the first and the last piece of n bytes, each reversed. They may overlap: then both stores give
// the bytes that they share the same values.
template <class Piece, class Reverse>
inline void exchange_ends(uint8_t* data, size_t n, Reverse reverse) {
    uint8_t* const back = data + n - sizeof(Piece);
    const auto first_piece = load<Piece>(data);
    const auto last_piece = load<Piece>(back);
    store(data, reverse(last_piece));
    store(back, reverse(first_piece));
}

template <class Reverse>
inline void exchange_all(uint8_t* data, size_t n, Reverse reverse) {
    for (; n >= 2 * kVectorBytes; data += kVectorBytes, n -= 2 * kVectorBytes) {
        exchange_ends<Bytes>(data, n, reverse);
    }
    if (n >= kVectorBytes) return exchange_ends<Bytes>(data, n, reverse);
    for (; n >= 2 * kWord; data += kWord, n -= 2 * kWord) exchange_ends<uint64_t>(data, n, reverse);
    if (n >= 8) return exchange_ends<uint64_t>(data, n, reverse);
    if (n >= 4) return exchange_ends<uint32_t>(data, n, reverse);
    if (n >= 2) return exchange_ends<uint16_t>(data, n, reverse);
    if (n == 1) data[0] = reverse(data[0]);
}

void reverse_bytes(uint8_t* data, size_t n) { exchange_all(data, n, ReverseBytes()); }

void reverse_bits_in_bytes(uint8_t* data, size_t n) {
    change_bytes(data, n, 1, [](Bytes bytes) { return bits_reversed(bytes); });
}

// The bits that begin `shift` (0 to 7) bits into a run and fill a word, in reverse order. Reads the byte
// after the word's.
inline uint64_t reversed_bits(const uint8_t* run, unsigned shift, uint64_t) {
    const uint64_t bits = bytes_reversed(load<uint64_t>(run)) << shift | uint64_t(run[kWord]) >> (8 - shift);
    return bits_in_bytes_reversed(bits);
}

// The same for a vector of bytes, given with the vector of the bytes that follow each.
inline Bytes reversed_bits(Bytes bytes, Bytes next, unsigned shift) {
    const auto kept = Vector<uint64_t>(bytes) << shift & eight_of(uint8_t(0xFF << shift));
    const auto moved_in = Vector<uint64_t>(next) >> (8 - shift) & eight_of(uint8_t(0xFF >> (8 - shift)));
    return reversed(bits_reversed(Bytes(kept | moved_in)));
}
inline Bytes reversed_bits(const uint8_t* run, unsigned shift, Bytes) {
    return reversed_bits(load<Bytes>(run), load<Bytes>(run + 1), shift);
}

// Writes n bytes: those of a run of n bytes and one more, from bit `shift` on, in reverse order. The first
// and the last word may overlap.
template <class Word>
inline void store_reversed_bits(uint8_t* destination, const uint8_t* run, size_t n, unsigned shift) {
    for (size_t i = 0; i + sizeof(Word) < n; i += sizeof(Word)) {
        store(destination + i, reversed_bits(run + n - sizeof(Word) - i, shift, Word()));
    }
    store(destination + n - sizeof(Word), reversed_bits(run, shift, Word()));
}

// Less than two vectors of bytes, in place; `next` stands for the byte after them.
inline void reverse_few_bits(uint8_t* data, size_t n, unsigned shift, uint8_t next) {
    uint8_t copy_of_run[kWord + 2 * kVectorBytes] = {};
    uint8_t* run = copy_of_run + kWord;  // the word in front stands for what a short run lacks
    memcpy(run, data, n);
    run[n] = next;
    if (n >= kVectorBytes) return store_reversed_bits<Bytes>(data, run, n, shift);
    if (n >= kWord) return store_reversed_bits<uint64_t>(data, run, n, shift);
    const uint64_t word = reversed_bits(run + n - kWord, shift, uint64_t());
    for (size_t i = 0; i < n; ++i) data[i] = uint8_t(word >> 8 * i);
}

// Reverses the order of all bits of n bytes after moving them `shift` (0 to 7) places to the front; the first
// bits of `next` come in after the last byte.
inline void reverse_all_bits(uint8_t* data, size_t n, unsigned shift, uint8_t next) {
    if (n >= 2 * kVectorBytes) {
        // The bytes after those at the back are read one round ahead: a store changes the last of them.
        uint8_t last_bytes[kVectorBytes + 1];
        store(last_bytes, load<Bytes>(data + n - kVectorBytes));
        last_bytes[kVectorBytes] = next;
        auto after_back = load<Bytes>(last_bytes + 1);
        for (; n >= 2 * kVectorBytes; data += kVectorBytes, n -= 2 * kVectorBytes) {
            uint8_t* const back = data + n - kVectorBytes;
            const Bytes to_front = reversed_bits(load<Bytes>(back), after_back, shift);
            const Bytes to_back = reversed_bits(data, shift, Bytes());
            next = back[0];
            after_back = load<Bytes>(back - kVectorBytes + 1);
            store(data, to_front);
            store(back, to_back);
        }
    }
    reverse_few_bits(data, n, shift, next);
}

inline uint8_t merge(uint8_t changed, uint8_t kept, unsigned kept_bits) {
    return uint8_t((changed & ~kept_bits) | (kept & kept_bits));
}

// All bits of the bytes that the range touches are reversed and moved to where the range was; then its
// neighbours in the first and the last byte are put back:
//
//     before      hhhhabcd efghijkl mnoptttt
//     after       hhhhponm lkjihgfe dcbatttt
//
// With as many bits in front (h, `lead`) as behind (t, `trail`) nothing moves. With d more in front all bits
// move d places to the front before they are reversed. With d more behind they move 8 - d places to the
// front, into a run that ends a byte earlier, and the last byte gets bits of the first one.
void reverse_bits(uint8_t* data, size_t first_bit, size_t count) {
    if (count < 2) return;
    data += first_bit / 8;
    const auto lead = unsigned(first_bit % 8);
    const size_t n = (lead + count + 7) / 8;
    const auto trail = unsigned(8 * n - lead - count);
    const uint8_t head = data[0];
    const uint8_t tail = data[n - 1];
    if (lead == trail) {
        exchange_all(data, n, ReverseBits());
    } else if (lead > trail) {
        reverse_all_bits(data, n, lead - trail, 0);
    } else {
        reverse_all_bits(data, n - 1, 8 + lead - trail, tail);
        data[n - 1] = uint8_t(bits_in_byte_reversed(head) << (trail - lead));
    }
    data[0] = merge(data[0], head, 0xFF00U >> lead);
    data[n - 1] = merge(data[n - 1], tail, (1U << trail) - 1);
}
