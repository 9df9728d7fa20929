// Moves the bits of a word that a mask selects to its low end, in their order.
#if defined(__BMI2__) && defined(__x86_64__)

class Extractor {
 public:
    explicit Extractor(uint64_t mask) : mask_(mask) {}
    uint64_t operator()(uint64_t word) const { return _pext_u64(word, mask_); }

 private:
    uint64_t mask_;
};

#else

// Without an instruction for it. (H. S. Warren, "Hacker's Delight", 2nd edition, section 7-4: a selected bit
// moves by the number of unselected ones below it, by one power of two at a time.)
class Extractor {
 public:
    explicit Extractor(uint64_t mask) : mask_(mask) {
        uint64_t unselected_below = ~mask << 1;
        for (unsigned i = 0; i < 6; ++i) {
            uint64_t odd = unselected_below;  // whether the number of ones up to each bit is odd
            for (unsigned shift = 1; shift < 64; shift *= 2) odd ^= odd << shift;
            moved_[i] = odd & mask;
            mask = (mask ^ moved_[i]) | moved_[i] >> (1U << i);
            unselected_below &= ~odd;
        }
    }

    uint64_t operator()(uint64_t word) const {
        word &= mask_;
        for (unsigned i = 0; i < 6; ++i) {
            const uint64_t moved = word & moved_[i];
            word = (word ^ moved) | moved >> (1U << i);
        }
        return word;
    }

 private:
    uint64_t mask_;
    uint64_t moved_[6];
};

#endif
