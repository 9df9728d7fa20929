// Bits are taken by words and collected in a word, as long as no store can reach a bit that is still to be
// taken.

// A run of bits that is read by words without touching a byte outside it.
struct BitSource {
    const uint8_t* run;
    uint64_t bytes;

    static constexpr unsigned kBits = 57;

    // Whether `from` may read a whole word.
    bool has_word(uint64_t bit) const { return bytes - bit / 8 >= kWord; }

    // At least kBits bits from `bit` on, the first one as the most significant.
    uint64_t word(uint64_t bit) const {
        return bytes_reversed(load<uint64_t>(run + size_t(bit / 8))) << bit % 8;
    }

    // The same where the run may end; the bits after it are 0.
    uint64_t from(uint64_t bit) const {
        if (has_word(bit)) return word(bit);
        uint64_t last_bits = 0;
        for (uint64_t i = bit / 8; i < bytes; ++i) last_bits |= uint64_t(run[i]) << (56 - 8 * (i - bit / 8));
        return last_bits << bit % 8;
    }
};

// Stores bits side by side.
class BitWriter {
 public:
    BitWriter(uint8_t* run, uint64_t bit) : at_(run + size_t(bit / 8)), pending_(unsigned(bit % 8)) {}

    static constexpr unsigned kBits = 57;  // at a time

    uint8_t* position() const { return at_; }
    unsigned pending() const { return pending_; }

    // Appends the low `count` (at most kBits) bits of `bits`; the others are 0. Stores whole bytes only.
    void append(uint64_t bits, unsigned count) {
        word_ = word_ << count | bits;
        pending_ += count;
        for (; pending_ >= 8; ++at_) *at_ = uint8_t(word_ >> (pending_ -= 8));
    }

    // Appends up to kBits bits, and stores eight bytes, of which those after the bits are not settled
    // yet.
    void append_word(uint64_t bits, unsigned count) {
        word_ = word_ << count | bits;
        pending_ += count;
        store(at_, bytes_reversed(word_ << (64 - pending_)));
        at_ += pending_ / 8;
        pending_ %= 8;
    }

    // The same for whole bytes of up to 64 bits, when no bits are pending.
    void append_bytes(uint64_t bits, unsigned count) {
        store(at_, bytes_reversed(bits << (64 - count)));
        at_ += count / 8;
    }

    // Leaves out whole bytes, which somebody else stores. No bits may be pending.
    void skip(size_t count) { at_ += count; }

    // Stores what is pending, the last byte filled up with 0.
    void finish() {
        if (pending_ > 0) *at_ = uint8_t(word_ << (8 - pending_));
    }

 private:
    uint8_t* at_;
    uint64_t word_ = 0;  // the low pending_ bits, fewer than 8 between calls, are still to be stored
    unsigned pending_;
};

// Whether every store stays behind the bits that are still to be taken: the source moves at least as fast.
inline bool stays_behind(const uint8_t* destination, uint64_t destination_bit, const uint8_t* source,
                         uint64_t source_bit) {
    const uint64_t first_stored = uintptr_t(destination) + destination_bit / 8;
    const uint64_t first_taken = uintptr_t(source) + source_bit / 8;
    if (first_stored == first_taken) return destination_bit % 8 <= source_bit % 8;
    return first_stored < first_taken;
}

// Sets n bytes to the bits from bit `shift` (1 to 7) of a run of n + 1 bytes on. The destination may overlap
// the run if it does not begin after it.
inline void shift_bytes(uint8_t* destination, const uint8_t* run, size_t n, unsigned shift) {
    const auto shifted = [=](size_t i) {
        const auto kept = load<Vector<uint64_t>>(run + i) << shift & eight_of(uint8_t(0xFF << shift));
        const auto moved_in =
            load<Vector<uint64_t>>(run + i + 1) >> (8 - shift) & eight_of(uint8_t(0xFF >> (8 - shift)));
        return kept | moved_in;
    };
    const size_t in_vectors = n / kVectorBytes * kVectorBytes;
    each_vector(0, in_vectors, [=](size_t i) { store(destination + i, shifted(i)); });
    for (size_t i = in_vectors; i < n; ++i) {
        destination[i] = uint8_t(run[i] << shift | run[i + 1] >> (8 - shift));
    }
}

// A group of any length, in parts.
inline void copy_group(const BitSource& source, BitWriter& writer, uint64_t bit, uint64_t bits) {
    for (; bits > BitWriter::kBits; bit += BitWriter::kBits, bits -= BitWriter::kBits) {
        writer.append(source.from(bit) >> (64 - BitWriter::kBits), BitWriter::kBits);
    }
    writer.append(source.from(bit) >> (64 - bits), unsigned(bits));
}

// A long run of bits: up to a whole byte of the destination, whole bytes, and the rest.
inline void copy_run(const BitSource& source, BitWriter& writer, uint64_t bit, uint64_t bits) {
    const unsigned to_byte = (8 - writer.pending()) % 8;
    if (bits >= to_byte + 8 * kVectorBytes) {
        if (to_byte > 0) writer.append(source.from(bit) >> (64 - to_byte), to_byte);
        bit += to_byte;
        bits -= to_byte;
        const auto whole = size_t(bits / 8);
        const uint8_t* const run = source.run + size_t(bit / 8);
        if (bit % 8 == 0) {
            copy(writer.position(), run, whole);
        } else {
            shift_bytes(writer.position(), run, whole, unsigned(bit % 8));
        }
        writer.skip(whole);
        bit += 8 * uint64_t(whole);
        bits -= 8 * uint64_t(whole);
        if (bits == 0) return;
    }
    copy_group(source, writer, bit, bits);
}

// The bits of the first `groups` groups that begin with a word's most significant bit.
inline uint64_t group_mask(uint64_t bits, uint64_t step, unsigned groups) {
    uint64_t mask = ~UINT64_C(0) << (64 - bits);
    for (uint64_t shift = step; shift < 64; shift *= 2) mask |= mask >> shift;
    return mask & ~UINT64_C(0) << (64 - ((groups - 1) * step + bits));
}

// How groups are taken together, by words that begin with a byte.
struct WordOfGroups {
    unsigned at_once;  // groups of a word
    unsigned phase;    // the bit of a word with which its first group begins

    // The most that fit into a word if the next word begins a number of whole bytes later, in the same phase;
    // 0 for groups of more bits than are stored at a time; of others, one fits in any phase.
    WordOfGroups(uint64_t bit, uint64_t bits, uint64_t step) : phase(unsigned(bit % 8)) {
        const uint64_t most = smaller<uint64_t>((64 - phase - bits) / step + 1, BitWriter::kBits / bits);
        // A multiple of 1, 2, 4 or 8 groups ends a number of whole bytes later.
        at_once = unsigned(most) & ~(7U >> unsigned(__builtin_ctz(unsigned(step) | 8U)));
    }
};

// Stores rounds of `round_bits` bits, each of which `take` takes, as long as whole words may be read and
// stored: the last place to read one is `unread` ahead, of which a round takes `round_read`, and the rest of
// the `bits` fills the word that is stored. Returns the number of rounds.
template <class Take>
size_t append_rounds(BitWriter& result, unsigned round_bits, uint64_t bits, int64_t unread,
                     uint64_t round_read, Take take) {
    BitWriter writer = result;  // which no store changes
    int64_t room = int64_t(bits) - 64;
    size_t rounds = 0;
    const auto append_by = [&](auto append) {
        for (; (unread | room) >= 0; ++rounds) {
            append(take());
            unread -= int64_t(round_read);
            room -= round_bits;
        }
    };
    if (writer.pending() == 0 && round_bits % 8 == 0) {
        append_by([&](uint64_t taken) { writer.append_bytes(taken, round_bits); });
    } else {
        append_by([&](uint64_t taken) { writer.append_word(taken, round_bits); });
    }
    result = writer;
    return rounds;
}

// As many groups as can be taken so and stored in whole words; returns their number.
inline size_t gather_words_of_bits(const BitSource& source, BitWriter& writer, uint64_t bit, uint64_t bits,
                                   uint64_t step, size_t groups) {
    const WordOfGroups word(bit, bits, step);
    if (word.at_once == 0) return 0;
    const auto taken_bits = unsigned(word.at_once * bits);
    const bool in_bytes = writer.pending() == 0 && 64 / taken_bits * taken_bits % 8 == 0;
    const unsigned words = (in_bytes ? 64 : BitWriter::kBits) / taken_bits;  // for one store
    const uint64_t bytes = word.at_once * step / 8;                          // from word to word
    const Extractor extract(group_mask(bits, step, word.at_once) >> word.phase);
    const uint8_t* at = source.run + size_t(bit / 8);
    const auto take_word = [&] {
        const uint64_t taken = extract(bytes_reversed(load<uint64_t>(at)));
        at += bytes;
        return taken;
    };
    const auto take_round = [&] {
        uint64_t taken = take_word();
        for (unsigned i = 1; i < words; ++i) taken = taken << taken_bits | take_word();
        return taken;
    };
    const auto unread = int64_t(source.bytes - bit / 8 - (words - 1) * bytes - kWord);
    const size_t rounds =
        append_rounds(writer, words * taken_bits, bits * groups, unread, words * bytes, take_round);
    size_t gathered = rounds * words * word.at_once;
    const uint8_t* const end = source.run + size_t(source.bytes);
    for (; groups - gathered >= word.at_once && uint64_t(end - at) >= kWord; gathered += word.at_once) {
        writer.append(take_word(), taken_bits);
    }
    return gathered;
}

// The same for groups that lie otherwise in every word.
inline size_t gather_words_in_any_phase(const BitSource& source, BitWriter& writer, uint64_t bit,
                                        uint64_t bits, uint64_t step, size_t groups) {
    if (bits > BitSource::kBits) return 0;
    const auto at_once = unsigned((BitSource::kBits - bits) / step + 1);
    const Extractor extract(group_mask(bits, step, at_once));
    const auto take_round = [&] {
        const uint64_t taken = extract(source.word(bit));
        bit += at_once * step;
        return taken;
    };
    const auto unread = int64_t(8 * (source.bytes - kWord) + 7 - bit);  // in bits
    return at_once *
           append_rounds(writer, at_once * unsigned(bits), bits * groups, unread, at_once * step, take_round);
}

// The rest, as many groups at a time as a word from any bit on holds. Stores whole bytes only.
inline void gather_rest_of_bits(const BitSource& source, BitWriter& writer, uint64_t bit, uint64_t bits,
                                uint64_t step, size_t groups) {
    if (bits > BitWriter::kBits) {
        for (; groups > 0; --groups, bit += step) copy_run(source, writer, bit, bits);
        return;
    }
    while (groups > 0) {
        const uint64_t in_word = (64 - bit % 8 - bits) / step + 1;
        const auto at_once = unsigned(smaller(smaller(in_word, BitWriter::kBits / bits), uint64_t(groups)));
        const Extractor extract(group_mask(bits, step, at_once));
        writer.append(extract(source.from(bit)), unsigned(at_once * bits));
        groups -= at_once;
        bit += at_once * step;
    }
}

void gather_bits(uint8_t* destination, uint64_t destination_bit, const uint8_t* source, uint64_t source_bit,
                 uint64_t bits, uint64_t step, size_t groups) {
    const uint64_t stored_bits = bits * groups;
    if (stored_bits == 0) return;
    const uint64_t source_bytes = (source_bit + (groups - 1) * step + bits + 7) / 8;
    const size_t first_stored = size_t(destination_bit / 8);
    const auto stored = size_t((destination_bit + stored_bits + 7) / 8) - first_stored;
    const bool all_apart = apart(destination + first_stored, stored, source, size_t(source_bytes));
    if (!all_apart && !stays_behind(destination, destination_bit, source, source_bit)) {
        return rule::gather_bits(destination, destination_bit, source, source_bit, bits, step, groups);
    }
    const BitSource from{source, source_bytes};
    BitWriter writer(destination, destination_bit);
    if (bits == step) {
        copy_run(from, writer, source_bit, stored_bits);
        return writer.finish();
    }
    // A word of the destination may be stored ahead of its bits only where that cannot reach the source.
    if (all_apart) {
        if ((bits | step | source_bit | destination_bit) % 8 == 0) {
            return gather(destination + first_stored, source + size_t(source_bit / 8), size_t(bits / 8),
                          ptrdiff_t(step / 8), groups);
        }
        auto gathered = gather_words_of_bits(from, writer, source_bit, bits, step, groups);
        if (gathered == 0) gathered = gather_words_in_any_phase(from, writer, source_bit, bits, step, groups);
        source_bit += gathered * step;
        groups -= gathered;
    }
    gather_rest_of_bits(from, writer, source_bit, bits, step, groups);
    writer.finish();
}
