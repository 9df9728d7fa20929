// One loop for every kind of element and both directions, in vectors as long as no store can reach an input
// element that is still to be read.

// Each is for numbers and, lane by lane, for vectors of them.
struct Smaller {
    template <class Operand>
    static Operand choose(Operand a, Operand b) {
        return a < b ? a : b;
    }
};
struct Larger {
    template <class Operand>
    static Operand choose(Operand a, Operand b) {
        return a > b ? a : b;
    }
};

template <class Choice, class Operand>
inline Operand chosen(const uint8_t* first, const uint8_t* second) {
    return Choice::choose(load<Operand>(first), load<Operand>(second));
}

// Whether an element stored at the destination would be read later as a part of the input.
inline bool feeds(const uint8_t* destination, const uint8_t* input, size_t bytes) {
    const uintptr_t distance = uintptr_t(destination) - uintptr_t(input);
    return distance > 0 && distance < bytes;
}

// The elements of two pieces of a run that is at least as long as one: they may overlap, so both are read
// before either is stored.
template <class Choice, class Piece>
inline void combine_ends(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t bytes) {
    const size_t at_end = bytes - sizeof(Piece);
    const auto front = chosen<Choice, Piece>(first, second);
    const auto back = chosen<Choice, Piece>(first + at_end, second + at_end);
    store(destination, front);
    store(destination + at_end, back);
}

template <class Choice, class Integer>
void combine(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t n) {
    const size_t bytes = n * sizeof(Integer);
    if (bytes < 8 || feeds(destination, first, bytes) || feeds(destination, second, bytes)) {
        for (size_t i = 0; i < bytes; i += sizeof(Integer)) {
            store(destination + i, chosen<Choice, Integer>(first + i, second + i));
        }
        return;
    }
    if (bytes < 16) return combine_ends<Choice, Vector<Integer, 8>>(destination, first, second, bytes);
    if (bytes < 32) return combine_ends<Choice, Vector<Integer, 16>>(destination, first, second, bytes);
    if constexpr (kVectorBytes == 64) {
        if (bytes < 64) return combine_ends<Choice, Vector<Integer, 32>>(destination, first, second, bytes);
    }
    // The last vector overlaps the one before it: it is read before anything is stored.
    const size_t at_end = bytes - kVectorBytes;
    const auto back = chosen<Choice, Vector<Integer>>(first + at_end, second + at_end);
    each_vector(0, at_end, [=](size_t i) {
        store(destination + i, chosen<Choice, Vector<Integer>>(first + i, second + i));
    });
    store(destination + at_end, back);
}
