struct Smaller {
    template <class Integer>
    static Integer choose(Integer a, Integer b) {
        return a <= b ? a : b;
    }
};
struct Larger {
    template <class Integer>
    static Integer choose(Integer a, Integer b) {
        return a >= b ? a : b;
    }
};

template <class Choice, class Integer>
void combine(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        const size_t at = i * sizeof(Integer);
        store(destination + at, Choice::choose(load<Integer>(first + at), load<Integer>(second + at)));
    }
}
