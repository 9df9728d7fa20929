// Small pieces of bytes pass through registers: all of a piece is read before any of it is stored. Bits are
// taken by words and collected in a word, as long as no store can reach a bit that is still to be taken.
#include "kernels/stride.h"

#include <algorithm>

#include "kernels/copy.h"
#include "kernels/words.h"

namespace kernels {
namespace {

// Bytes

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

// Bits

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
    return unsigned(std::min((BitReader::kBits - bits) / step + 1, BitWriter::kBits / bits));
}

// The bits of the first `groups` groups that begin with a word's most significant bit.
uint64_t group_mask(uint64_t bits, uint64_t step, unsigned groups) {
    const uint64_t group = ~UINT64_C(0) << (64 - bits);
    uint64_t mask = 0;
    for (unsigned i = 0; i < groups; ++i) mask |= group >> i * step;
    return mask;
}

// Bits to bytes

// The eight bytes for the bits of one byte, its most significant bit first in memory.
uint64_t expand_byte(uint8_t byte, uint64_t low, uint64_t low_to_high) {
    constexpr uint64_t kBitOfEach = UINT64_C(0x0102040810204080);
    // A byte that keeps its one bit reaches 0x80 when 0x7F is added to it.
    const uint64_t chosen = eight_of(byte) & kBitOfEach;
    const uint64_t ones = (chosen + eight_of(0x7F)) >> 7 & eight_of(1);
    return low ^ (ones * 0xFF & low_to_high);
}

void expand_four(uint8_t* destination, const uint8_t* source, uint64_t low, uint64_t low_to_high) {
    uint8_t four[4];
    std::memcpy(four, source, sizeof four);
    for (size_t i = 0; i < 4; ++i) store(destination + 8 * i, expand_byte(four[i], low, low_to_high));
}

}  // namespace

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

void gather_bits(uint8_t* destination, uint64_t destination_bit, const uint8_t* source, uint64_t source_bit,
                 uint64_t bits, uint64_t step, size_t groups) {
    if (bits == 0 || groups == 0) return;
    const uint64_t source_bytes = (source_bit + (groups - 1) * step + bits + 7) / 8;
    if (!bits_in_any_order(destination, destination_bit, source, source_bit, source_bytes)) {
        return plain::gather_bits(destination, destination_bit, source, source_bit, bits, step, groups);
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

void expand_bits(uint8_t* destination, size_t destination_count, const uint8_t* source, size_t source_count,
                 uint8_t low, uint8_t high) {
    const uint64_t lows = eight_of(low);
    const uint64_t low_to_high = lows ^ eight_of(high);
    for (; source_count >= 4 && destination_count >= 32; source += 4, destination += 32) {
        expand_four(destination, source, lows, low_to_high);
        source_count -= 4;
        destination_count -= 32;
    }
    while (destination_count > 0) {
        uint8_t four[4] = {};
        uint8_t expanded[32];
        const size_t taken = std::min<size_t>(4, source_count);
        const size_t stored = std::min<size_t>(32, destination_count);
        std::memcpy(four, source, taken);
        expand_four(expanded, four, lows, low_to_high);
        std::memcpy(destination, expanded, stored);
        source += taken;
        source_count -= taken;
        destination += stored;
        destination_count -= stored;
    }
}

}  // namespace kernels
