// Order is reversed by words from both ends towards the middle: both are read before either is written. What
// remains in the middle is less than two words.


// Exchanges and reverses the first and the last word of the n bytes, which may overlap: then both stores give
// the bytes that they share the same values.
template <class Word>
void exchange_ends(uint8_t* data, size_t n) {
    uint8_t* last = data + n - sizeof(Word);
    const auto front = load<Word>(data);
    const auto back = load<Word>(last);
    store(data, bytes_reversed(back));
    store(last, bytes_reversed(front));
}

// Eight bytes whose bits are those of `word` and, after its last byte, of `next`, from bit `shift` (0 to 7)
// on in reverse order.
uint64_t bits_reversed_from(unsigned shift, uint64_t word, uint8_t next) {
    const uint64_t bits = bytes_reversed(word) << shift | uint64_t(next) >> (8 - shift);
    return bits_in_bytes_reversed(bits);
}

uint8_t bits_reversed_from(unsigned shift, uint8_t byte, uint8_t next) {
    return bits_in_byte_reversed(uint8_t(byte << shift | next >> (8 - shift)));
}

// Reverses the order of all bits of the n bytes after moving them `shift` (0 to 7) places to the front,
// whereby the first bits of `next` come after the last byte.
void reverse_all_bits(uint8_t* data, size_t n, unsigned shift, uint8_t next) {
    for (; n >= 2 * kWord; data += kWord, n -= 2 * kWord) {
        uint8_t* last = data + n - kWord;
        const auto front = load<uint64_t>(data);
        const auto back = load<uint64_t>(last);
        const uint8_t after_front = data[kWord];
        store(data, bits_reversed_from(shift, back, next));
        store(last, bits_reversed_from(shift, front, after_front));
        next = uint8_t(back);
    }
    uint8_t middle[2 * kWord];
    memcpy(middle, data, n);
    middle[n] = next;
    for (size_t i = 0; i < n; ++i) data[i] = bits_reversed_from(shift, middle[n - 1 - i], middle[n - i]);
}

uint8_t merge(uint8_t changed, uint8_t kept, unsigned kept_bits) {
    return uint8_t((changed & ~kept_bits) | (kept & kept_bits));
}

void reverse_bytes(uint8_t* data, size_t n) {
    for (; n >= 2 * kWord; data += kWord, n -= 2 * kWord) exchange_ends<uint64_t>(data, n);
    if (n >= 8) return exchange_ends<uint64_t>(data, n);
    if (n >= 4) return exchange_ends<uint32_t>(data, n);
    if (n >= 2) return exchange_ends<uint16_t>(data, n);
}

void reverse_bits_in_bytes(uint8_t* data, size_t n) {
    const size_t words = n / kWord;
    for (size_t i = 0; i < words; ++i) {
        uint8_t* word = data + i * kWord;
        store(word, bits_in_bytes_reversed(load<uint64_t>(word)));
    }
    for (size_t i = words * kWord; i < n; ++i) data[i] = bits_in_byte_reversed(data[i]);
}

// All bits of the bytes that the range touches are reversed and moved to where the range was; then its
// neighbours in the first and the last byte are put back. A move to the back by d places is one to the front
// by 8 - d into a run that ends a byte earlier; then the last byte has bits of the first one only.
void reverse_bits(uint8_t* data, size_t first, size_t count) {
    if (count < 2) return;
    data += first / 8;
    const auto lead = unsigned(first % 8);
    const size_t n = (lead + count + 7) / 8;
    const auto trail = unsigned(8 * n - lead - count);
    const uint8_t head = data[0];
    const uint8_t tail = data[n - 1];
    if (lead >= trail) {
        reverse_all_bits(data, n, lead - trail, 0);
    } else {
        reverse_all_bits(data, n - 1, 8 + lead - trail, tail);
        data[n - 1] = uint8_t(bits_in_byte_reversed(head) << (trail - lead));
    }
    data[0] = merge(data[0], head, 0xFF00U >> lead);
    data[n - 1] = merge(data[n - 1], tail, (1U << trail) - 1);
}
