// Pieces of a source that lies apart from the destination are picked out of whole vectors of it where several
// of them fit into one, and go through registers otherwise.

using Half = Vector<uint64_t, 16>;

// Every second or fourth word, as the compiler does it in vectors.
template <class Word, size_t kStep>
inline void gather_every(uint8_t* __restrict destination, const uint8_t* __restrict source, size_t pieces) {
    for (size_t i = 0; i < pieces; ++i) {
        store(destination + i * sizeof(Word), load<Word>(source + i * kStep * sizeof(Word)));
    }
}

// Pieces as long as a word. The source's position never leaves the pieces.
template <class Word>
inline void gather_words(uint8_t* destination, const uint8_t* source, ptrdiff_t step, size_t pieces,
                         bool forward_and_apart) {
    constexpr ptrdiff_t kWordBytes = sizeof(Word);
    if (forward_and_apart && step == 2 * kWordBytes)
        return gather_every<Word, 2>(destination, source, pieces);
    if (forward_and_apart && step == 4 * kWordBytes)
        return gather_every<Word, 4>(destination, source, pieces);
    for (;; source += step, destination += kWordBytes) {
        store(destination, load<Word>(source));
        if (--pieces == 0) return;
    }
}

// Pieces of one to two words, taken as two words that may overlap: both are read before either is stored.
template <class Word>
inline void gather_word_pairs(uint8_t* destination, const uint8_t* source, size_t piece, ptrdiff_t step,
                              size_t pieces) {
    const size_t second = piece - sizeof(Word);
    for (;; source += step, destination += piece) {
        const auto front = load<Word>(source);
        const auto back = load<Word>(source + second);
        store(destination, front);
        store(destination + second, back);
        if (--pieces == 0) return;
    }
}

// Pieces longer than two vectors' halves; they lie apart from the destination.
inline void gather_long_pieces(uint8_t* destination, const uint8_t* source, size_t piece, ptrdiff_t step,
                               size_t pieces) {
    const size_t at_end = piece - kVectorBytes;
    for (;; source += step, destination += piece) {
        each_vector(0, at_end, [=](size_t i) { store(destination + i, load<Bytes>(source + i)); });
        store(destination + at_end, load<Bytes>(source + at_end));
        if (--pieces == 0) return;
    }
}

inline void gather_runs(uint8_t* destination, const uint8_t* source, size_t piece, ptrdiff_t step,
                        size_t pieces) {
    for (;; source += step, destination += piece) {
        copy(destination, source, piece);
        if (--pieces == 0) return;
    }
}

// How `pieces` pieces side by side come out of up to kMost windows of a source: which byte of it each byte
// is.
template <size_t kMost>
struct Picks {
    size_t pieces;
    size_t windows;
    Bytes from[kMost];

    Picks(size_t piece, size_t step) {
        pieces = smaller(kWindowBytes / piece, (kMost * kWindowBytes - piece) / step + 1);
        windows = ((pieces - 1) * step + piece + kWindowBytes - 1) / kWindowBytes;
        uint8_t positions[kVectorBytes];
        memset(positions, 0xFF, sizeof positions);
        for (size_t nth = 0; nth < pieces; ++nth) {
            for (size_t k = 0; k < piece; ++k) {
                for (size_t at = nth * piece + k; at < kVectorBytes; at += kWindowBytes) {
                    positions[at] = uint8_t(nth * step + k);
                }
            }
        }
        for (size_t i = 0; i < windows; ++i) {
            const Bytes in_window = load<Bytes>(positions) - uint8_t(i * kWindowBytes);
            from[i] = in_window < uint8_t(kWindowBytes) ? in_window : all<uint8_t>(0x80);
        }
    }
};

// Gathers as many pieces as whole vectors of source and destination can be used for; returns their number.
template <size_t kWindows, size_t kMost>
inline size_t gather_by_windows(uint8_t* destination, const uint8_t* source, size_t piece, size_t step,
                                size_t pieces, const Picks<kMost>& picks) {
    constexpr size_t kLanes = kVectorBytes / kWindowBytes;
    const size_t step_source = picks.pieces * step;
    const size_t step_destination = picks.pieces * piece;
    const size_t read = (kLanes - 1) * step_source + kWindows * kWindowBytes;
    const size_t written = (kLanes - 1) * step_destination + kWindowBytes;
    size_t source_left = (pieces - 1) * step + piece;
    size_t destination_left = pieces * piece;
    size_t gathered = 0;
    while (source_left >= read && destination_left >= written) {
        Bytes picked_bytes = picked(load_windows(source, step_source), picks.from[0]);
        for (size_t i = 1; i < kWindows; ++i) {
            picked_bytes |= picked(load_windows(source + i * kWindowBytes, step_source), picks.from[i]);
        }
        store_windows(destination, step_destination, picked_bytes);
        source += kLanes * step_source;
        destination += kLanes * step_destination;
        source_left -= kLanes * step_source;
        destination_left -= kLanes * step_destination;
        gathered += kLanes * picks.pieces;
    }
    return gathered;
}

// The same for any step at which picking is worth it; 0 where it is not.
template <size_t kMost>
inline size_t gather_in_vectors(uint8_t* destination, const uint8_t* source, size_t piece, size_t step,
                                size_t pieces) {
    if constexpr (kMost == 0) {
        return 0;
    } else {
        constexpr size_t kLanes = kVectorBytes / kWindowBytes;
        if (pieces * piece < 4 * kVectorBytes || kMost * kWindowBytes < step + piece) return 0;
        const Picks<kMost> picks(piece, step);
        // A round costs about what reading and storing a piece for each window and one more does.
        if (kLanes * picks.pieces <= picks.windows + 1) return 0;
        if (picks.windows == 1) return gather_by_windows<1>(destination, source, piece, step, pieces, picks);
        if (picks.windows == 2) return gather_by_windows<2>(destination, source, piece, step, pieces, picks);
        if constexpr (kMost > 2) {
            if (picks.windows == 3) {
                return gather_by_windows<3>(destination, source, piece, step, pieces, picks);
            }
            return gather_by_windows<4>(destination, source, piece, step, pieces, picks);
        }
        return 0;
    }
}

void gather(uint8_t* destination, const uint8_t* source, size_t piece, ptrdiff_t step, size_t pieces) {
    if (piece == 0 || pieces == 0) return;
    if (step > 0 && size_t(step) == piece && uintptr_t(destination) <= uintptr_t(source)) {
        return copy(destination, source, piece * pieces);
    }
    const bool forward_and_apart =
        step > 0 && apart(destination, piece * pieces, source, (pieces - 1) * size_t(step) + piece);
    if (forward_and_apart && piece <= 16) {
        const size_t gathered =
            gather_in_vectors<kMostWindows>(destination, source, piece, size_t(step), pieces);
        if (gathered == pieces) return;
        destination += gathered * piece;
        source += gathered * size_t(step);
        pieces -= gathered;
    }
    if (piece == 1) return gather_words<uint8_t>(destination, source, step, pieces, forward_and_apart);
    if (piece == 2) return gather_words<uint16_t>(destination, source, step, pieces, forward_and_apart);
    if (piece == 4) return gather_words<uint32_t>(destination, source, step, pieces, forward_and_apart);
    if (piece == 8) return gather_words<uint64_t>(destination, source, step, pieces, forward_and_apart);
    if (piece == 16) return gather_words<Half>(destination, source, step, pieces, false);
    if (piece < 4) return gather_word_pairs<uint16_t>(destination, source, piece, step, pieces);
    if (piece < 8) return gather_word_pairs<uint32_t>(destination, source, piece, step, pieces);
    if (piece < 16) return gather_word_pairs<uint64_t>(destination, source, piece, step, pieces);
    if (piece <= 32) return gather_word_pairs<Half>(destination, source, piece, step, pieces);
    if (piece >= kVectorBytes && piece <= 2 * kVectorBytes) {
        return gather_word_pairs<Bytes>(destination, source, piece, step, pieces);
    }
    constexpr size_t kLong = 1024;  // from here on a call for each piece costs little
    if (forward_and_apart && piece >= kVectorBytes && piece < kLong) {
        return gather_long_pieces(destination, source, piece, step, pieces);
    }
    gather_runs(destination, source, piece, step, pieces);
}
