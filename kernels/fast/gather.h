// Small pieces of bytes pass through registers: all of a piece is read before any of it is stored.

// Every second or fourth word of a source that lies apart from the destination, in vectors.
template <class Word, size_t kStep>
void gather_every(uint8_t* __restrict destination, const uint8_t* __restrict source, size_t pieces) {
    for (size_t i = 0; i < pieces; ++i) {
        store(destination + i * sizeof(Word), load<Word>(source + i * kStep * sizeof(Word)));
    }
}

// Pieces as long as a word. The source's position never leaves the pieces.
template <class Word>
void gather_words(uint8_t* destination, const uint8_t* source, ptrdiff_t step, size_t pieces) {
    constexpr ptrdiff_t kWord = sizeof(Word);
    const bool twice = step == 2 * kWord;
    if (twice || step == 4 * kWord) {
        // Of a distance and its negative, the one that does not wrap says how far apart the two begin.
        const uintptr_t distance = uintptr_t(destination) - uintptr_t(source);
        const bool apart = distance >= pieces * size_t(step) && -distance >= pieces * sizeof(Word);
        if (apart && twice) return gather_every<Word, 2>(destination, source, pieces);
        if (apart) return gather_every<Word, 4>(destination, source, pieces);
    }
    for (;; source += step, destination += kWord) {
        store(destination, load<Word>(source));
        if (--pieces == 0) return;
    }
}

// Pieces of one to two words, taken as two words that may overlap.
template <class Word>
void gather_word_pairs(uint8_t* destination, const uint8_t* source, size_t piece, ptrdiff_t step,
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

void gather_runs(uint8_t* destination, const uint8_t* source, size_t piece, ptrdiff_t step, size_t pieces) {
    for (;; source += step, destination += piece) {
        copy(destination, source, piece);
        if (--pieces == 0) return;
    }
}

void gather(uint8_t* destination, const uint8_t* source, size_t piece, ptrdiff_t step, size_t pieces) {
    if (piece == 0 || pieces == 0) return;
    if (step > 0 && size_t(step) == piece && uintptr_t(destination) <= uintptr_t(source)) {
        return copy(destination, source, piece * pieces);
    }
    if (piece == 1) return gather_words<uint8_t>(destination, source, step, pieces);
    if (piece == 2) return gather_words<uint16_t>(destination, source, step, pieces);
    if (piece == 4) return gather_words<uint32_t>(destination, source, step, pieces);
    if (piece == 8) return gather_words<uint64_t>(destination, source, step, pieces);
    if (piece < 4) return gather_word_pairs<uint16_t>(destination, source, piece, step, pieces);
    if (piece < 8) return gather_word_pairs<uint32_t>(destination, source, piece, step, pieces);
    if (piece <= 16) return gather_word_pairs<uint64_t>(destination, source, piece, step, pieces);
    gather_runs(destination, source, piece, step, pieces);
}
