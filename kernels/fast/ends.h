// Runs shorter than a vector as one vector: their first and their last bytes, in two pieces as large as can
// be, which overlap unless they are all of it. A rule that works unit by unit gives both pieces the same for
// the bytes that they share, so that the order of the stores does not matter.

using Lane64 = Vector<uint64_t>;

template <class Piece>
inline uint64_t load_pieces(const uint8_t* data, size_t n) {
    return load<Piece>(data) | uint64_t(load<Piece>(data + n - sizeof(Piece))) << 8 * sizeof(Piece);
}

template <class Piece>
inline void store_pieces(uint8_t* data, size_t n, uint64_t pieces) {
    store(data, Piece(pieces));
    store(data + n - sizeof(Piece), Piece(pieces >> 8 * sizeof(Piece)));
}

inline Bytes load_words_at_ends(const uint8_t* data, size_t n) {
    return Bytes(Lane64{load<uint64_t>(data), load<uint64_t>(data + n - kWord)});
}

// Pieces of kBytes bytes, 16 or more, side by side at the beginning of a vector.
template <size_t kBytes, size_t kAll = kVectorBytes>
inline Bytes load_long_pieces(const uint8_t* data, size_t n) {
    const auto front = load<Vector<uint64_t, kBytes>>(data);
    const auto back = load<Vector<uint64_t, kBytes>>(data + n - kBytes);
    if constexpr (kAll == 32) {
        return Bytes(__builtin_shufflevector(front, back, 0, 1, 2, 3));
    } else if constexpr (kBytes == 16) {
        const auto both = __builtin_shufflevector(front, back, 0, 1, 2, 3);
        return Bytes(__builtin_shufflevector(both, both, 0, 1, 2, 3, -1, -1, -1, -1));
    } else {
        return Bytes(__builtin_shufflevector(front, back, 0, 1, 2, 3, 4, 5, 6, 7));
    }
}

template <size_t kBytes, size_t kAll = kVectorBytes>
inline void store_long_pieces(uint8_t* data, size_t n, Bytes pieces) {
    const auto lanes = Vector<uint64_t, kAll>(pieces);
    if constexpr (kBytes == 16) {
        store(data, __builtin_shufflevector(lanes, lanes, 0, 1));
        store(data + n - kBytes, __builtin_shufflevector(lanes, lanes, 2, 3));
    } else {
        store(data, __builtin_shufflevector(lanes, lanes, 0, 1, 2, 3));
        store(data + n - kBytes, __builtin_shufflevector(lanes, lanes, 4, 5, 6, 7));
    }
}

// Applies a rule, which takes and gives a vector, to 0 to kVectorBytes - 1 bytes.
template <class Rule>
inline void change_ends(uint8_t* data, size_t n, Rule rule) {
    if constexpr (kVectorBytes == 64) {
        if (n >= 32) return store_long_pieces<32>(data, n, rule(load_long_pieces<32>(data, n)));
    }
    if constexpr (kVectorBytes > 16) {
        if (n >= 16) return store_long_pieces<16>(data, n, rule(load_long_pieces<16>(data, n)));
    }
    if (n >= 8) {
        const auto changed = Lane64(rule(load_words_at_ends(data, n)));
        store(data, uint64_t(changed[0]));
        store(data + n - kWord, uint64_t(changed[1]));
        return;
    }
    const auto changed = [&](uint64_t pieces) { return uint64_t(Lane64(rule(Bytes(Lane64{pieces})))[0]); };
    if (n >= 4) return store_pieces<uint32_t>(data, n, changed(load_pieces<uint32_t>(data, n)));
    if (n >= 2) return store_pieces<uint16_t>(data, n, changed(load_pieces<uint16_t>(data, n)));
    if (n == 1) data[0] = uint8_t(changed(data[0]));
}

// Applies a rule to all of n bytes, which are a multiple of `unit` (at most 8), the length of what the rule
// changes at a time. Whole vectors are aligned where units can be; the first and the last vector overlap
// their neighbours: they are read before and stored after all others.
template <class Rule>
inline void change_bytes(uint8_t* data, size_t n, size_t unit, Rule rule) {
    if (n < kVectorBytes) return change_ends(data, n, rule);
    const size_t at_end = n - kVectorBytes;
    const Bytes front = rule(load<Bytes>(data));
    const Bytes back = rule(load<Bytes>(data + at_end));
    const size_t to_alignment = -uintptr_t(data) % kVectorBytes;
    each_vector(to_alignment % unit == 0 ? to_alignment : kVectorBytes, at_end,
                [=](size_t i) { store(data + i, rule(in_register(load<Bytes>(data + i)))); });
    store(data + at_end, back);
    store(data, front);
}
