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

template <class Choice, class Integer>
void combine(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t n) {
    const size_t bytes = n * sizeof(Integer);
    if (bytes < kVectorBytes || feeds(destination, first, bytes) || feeds(destination, second, bytes)) {
        for (size_t i = 0; i < bytes; i += sizeof(Integer)) {
            store(destination + i, chosen<Choice, Integer>(first + i, second + i));
        }
        return;
    }
    // The last vector overlaps the one before it: it is read before anything is stored.
    const size_t last = bytes - kVectorBytes;
    const auto at_last = chosen<Choice, Vector<Integer>>(first + last, second + last);
    for (size_t i = 0; i < last; i += kVectorBytes) {
        store(destination + i, chosen<Choice, Vector<Integer>>(first + i, second + i));
    }
    store(destination + last, at_last);
}
