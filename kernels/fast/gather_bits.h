// Bits are taken by words and collected in a word, as long as no store can reach a bit that is still to be
// taken.

namespace rule {
#include "kernels/plain/bits.h"
#include "kernels/plain/gather_bits.h"
}  // namespace rule

// Reads bits of a run without touching a byte outside it.
class BitReader {
 public:
    // The run has `bytes` bytes.
    BitReader(const uint8_t* run, uint64_t bytes) : run_(run), bytes_(bytes) {}

    static constexpr unsigned kBits = 57;

    // At least kBits bits from `bit` on, the first one as the most significant. Those after the run are 0.
    uint64_t from(uint64_t bit) const {
        const uint8_t* at = run_ + size_t(bit / 8);
        const uint64_t left = bytes_ - bit / 8;
        uint64_t word = 0;
        if (left >= sizeof word) {
            word = bytes_reversed(load<uint64_t>(at));
        } else {
            for (unsigned i = 0; i < left; ++i) word |= uint64_t(at[i]) << (56 - 8 * i);
        }
        return word << bit % 8;
    }

 private:
    const uint8_t* run_;
    uint64_t bytes_;
};

// Stores bits side by side, four bytes at a time.
class BitWriter {
 public:
    BitWriter(uint8_t* run, uint64_t bit) : at_(run + size_t(bit / 8)), pending_(unsigned(bit % 8)) {}

    static constexpr unsigned kBits = 32;

    // Appends the low `count` (at most kBits) bits of `bits`; the others are 0.
    void append(uint64_t bits, unsigned count) {
        word_ = word_ << count | bits;
        pending_ += count;
        if (pending_ < 32) return;
        pending_ -= 32;
        store(at_, bytes_reversed(uint32_t(word_ >> pending_)));
        at_ += 4;
    }

    // Stores what is pending, the last byte filled up with 0.
    void finish() {
        for (; pending_ >= 8; ++at_) *at_ = uint8_t(word_ >> (pending_ -= 8));
        if (pending_ > 0) *at_ = uint8_t(word_ << (8 - pending_));
    }

 private:
    uint8_t* at_;
    uint64_t word_ = 0;  // the low pending_ bits are still to be stored
    unsigned pending_;
};

// Moves the bits of a word that a mask selects to its low end, in their order. (H. S. Warren, "Hacker's
// Delight", 2nd edition, section 7-4: a selected bit moves by the number of unselected ones below it, by one
// power of two at a time.)
class Compressor {
 public:
    explicit Compressor(uint64_t mask) : mask_(mask) {
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

// Whether words may be stored late and taken early: every store stays behind the bits that are still to be
// taken, or the destination lies wholly behind the source. The source moves at least as fast.
bool bits_in_any_order(const uint8_t* destination, uint64_t destination_bit, const uint8_t* source,
                       uint64_t source_bit, uint64_t source_bytes) {
    const uint64_t first_stored = uintptr_t(destination) + destination_bit / 8;
    const uint64_t first_taken = uintptr_t(source) + source_bit / 8;
    if (first_stored == first_taken) return destination_bit % 8 <= source_bit % 8;
    return first_stored < first_taken || first_stored >= uintptr_t(source) + source_bytes;
}

// A group of any length, in parts.
void copy_bits(const BitReader& reader, BitWriter& writer, uint64_t bit, uint64_t bits) {
    for (; bits > BitWriter::kBits; bit += BitWriter::kBits, bits -= BitWriter::kBits) {
        writer.append(reader.from(bit) >> (64 - BitWriter::kBits), BitWriter::kBits);
    }
    writer.append(reader.from(bit) >> (64 - bits), unsigned(bits));
}

// How many whole groups of `bits` bits one read can take and one append can store.
unsigned groups_per_word(uint64_t bits, uint64_t step) {
    if (bits > BitWriter::kBits) return 0;
    return unsigned(smaller((BitReader::kBits - bits) / step + 1, BitWriter::kBits / bits));
}

// The bits of the first `groups` groups that begin with a word's most significant bit.
uint64_t group_mask(uint64_t bits, uint64_t step, unsigned groups) {
    const uint64_t group = ~UINT64_C(0) << (64 - bits);
    uint64_t mask = 0;
    for (unsigned i = 0; i < groups; ++i) mask |= group >> i * step;
    return mask;
}

void gather_bits(uint8_t* destination, uint64_t destination_bit, const uint8_t* source, uint64_t source_bit,
                 uint64_t bits, uint64_t step, size_t groups) {
    if (bits == 0 || groups == 0) return;
    const uint64_t source_bytes = (source_bit + (groups - 1) * step + bits + 7) / 8;
    if (!bits_in_any_order(destination, destination_bit, source, source_bit, source_bytes)) {
        return rule::gather_bits(destination, destination_bit, source, source_bit, bits, step, groups);
    }
    const BitReader reader(source, source_bytes);
    BitWriter writer(destination, destination_bit);
    if (bits == step) {
        copy_bits(reader, writer, source_bit, bits * groups);
        return writer.finish();
    }
    const unsigned at_once = groups_per_word(bits, step);
    if (at_once > 1) {
        const Compressor compress(group_mask(bits, step, at_once));
        for (; groups >= at_once; groups -= at_once, source_bit += at_once * step) {
            writer.append(compress(reader.from(source_bit)), unsigned(at_once * bits));
        }
    }
    for (; groups > 0; --groups, source_bit += step) copy_bits(reader, writer, source_bit, bits);
    writer.finish();
}
