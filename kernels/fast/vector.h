// Vectors of kVectorBytes bytes. The level sets kVectorBytes, Mask and kMaskBits before it includes this.
// Arithmetic, comparison and choice (+ - & | ^ << >> == < ?:) are the compiler's, lane by lane; what it has
// no operator for stands in the level's own file:
//
// Mask: a number with kMaskBits bits for each byte of a vector, all of them set or none
// Marks: a mark or none for each byte of a vector, to be joined by & and | before a Mask is made
// mask_of(marks): the Mask of the bytes that have a mark
// marked_equal(a, b): marks of the bytes in which a and b are equal
// in_register(v): v, which the compiler then loads once and not again for each use
// high_bits(v): a Mask of the bytes of 0x80 and above
// any(v): whether any bit, or any mark, is set
// part(bytes, n): the n bytes there, fewer than a vector's, and zeros; other bytes are not touched
// reversed(v): the bytes in reverse order
// swapped16/32(v): the bytes of each unit of 2, of 4, in reverse order
// bits_reversed(v): the bits of each byte in reverse order
// expanded(bits, low, high): for each bit from the address `bits` on a byte of one of these vectors
// sums_of_three(v): for each unit of 4 bytes the sum of its first three, as a number of 32 bits
// without_borrow(a, b): differences of unsigned 16-bit numbers, 0 where they would be negative
// high_products(a, b): the upper 16 bits of the products of unsigned 16-bit numbers
// widened_low/high(v): bytes as 16-bit numbers: those that `narrowed` takes first, and second
// narrowed(a, b): 16-bit numbers of 0 to 32767 as bytes, at most 255
// scaled16(v, f, l): unsigned 16-bit numbers times f in double precision, at most l, truncated; f and l have
//     equal lanes, and l is at most 65535
// ByteTable: made of the address of 256 bytes, it gives the bytes at the indices in a vector; NotThere on
//     levels without an instruction for it
// Across: made of a number up to kVectorBytes, its taken(a, b) gives the bytes from there on of two vectors;
//     NotThere on levels without an instruction for it
// second_of(v): of the pair of floats in each word the second one, as a double
// pairs_of(a, b): doubles, rounded to float, as such pairs
// rounded(v): doubles rounded to float
// truncated(v): doubles below 2^31 without their fractions
// low_products(a, b): the products of the lower halves of words
// looked_up<n>(table, v): the words at the indices v of a table of n, 16 or 32
// Fused::multiply_add(a, b, c): a * b + c, rounded once; Fused is Separate on levels without it
//
// For picking bytes by their positions, vectors hold windows of kWindowBytes bytes each:
//
// kMostWindows: how many windows may be put together; 0 where no instruction picks bytes
// load_windows(p, d), store_windows(p, d, v): windows that begin d bytes apart, stored in their order
// picked(v, from): in each window the bytes at these positions, 0 for positions of 0x80 and above

template <class Lane, size_t kBytes = kVectorBytes>
struct VectorOf {
    typedef Lane type __attribute__((vector_size(kBytes)));
};
template <class Lane, size_t kBytes = kVectorBytes>
using Vector = typename VectorOf<Lane, kBytes>::type;
using Bytes = Vector<uint8_t>;
using Words = Vector<uint64_t>;
using Doubles = Vector<double>;
using Floats = Vector<float>;

struct NotThere {
    static constexpr bool kThere = false;
};

template <class Lane>
inline Vector<Lane> all(Lane value) {
    return Vector<Lane>{} + value;
}

// 0, 1, 2 ...
template <class Lane>
inline Vector<Lane> counting() {
    Vector<Lane> lanes = {};
    for (size_t i = 0; i < kVectorBytes / sizeof(Lane); ++i) lanes[i] = Lane(i);
    return lanes;
}

template <class Lanes>
inline Lanes smaller_lanes(Lanes a, Lanes b) {
    return a < b ? a : b;
}

template <class Lanes>
inline Lanes larger_lanes(Lanes a, Lanes b) {
    return a > b ? a : b;
}

// One by one: levels without a faster way use it.
inline Words looked_up_singly(const uint64_t* table, Words indices) {
    Words found = {};
    for (size_t i = 0; i < kVectorBytes / sizeof(uint64_t); ++i) found[i] = table[indices[i]];
    return found;
}

// The index of the first and of the last byte of a mask that is not empty.
inline size_t first(Mask mask) {
    return size_t(sizeof mask == 8 ? __builtin_ctzll(mask) : __builtin_ctz(unsigned(mask))) / kMaskBits;
}
inline size_t last(Mask mask) {
    return (sizeof mask == 8 ? 63 - size_t(__builtin_clzll(mask))
                             : 31 - size_t(__builtin_clz(unsigned(mask)))) /
           kMaskBits;
}
inline Mask without_first(Mask mask) {
    if constexpr (kMaskBits == 1) return mask & (mask - 1);
    return mask & ~(((Mask(1) << kMaskBits) - 1) << first(mask) * kMaskBits);
}

// Calls `step` with i, i + kVectorBytes, ... below `end`.
template <class Step>
inline void each_vector(size_t i, size_t end, Step step) {
    for (; i + 3 * kVectorBytes < end; i += 4 * kVectorBytes) {
        step(i);
        step(i + kVectorBytes);
        step(i + 2 * kVectorBytes);
        step(i + 3 * kVectorBytes);
    }
    for (; i < end; i += kVectorBytes) step(i);
}

// By shifts: levels without a faster way use it.
inline Bytes bits_reversed_by_shifts(Bytes v) {
    auto words = Vector<uint64_t>(v);
    words = (words >> 4 & 0x0F0F0F0F0F0F0F0F) | (words & 0x0F0F0F0F0F0F0F0F) << 4;
    words = (words >> 2 & 0x3333333333333333) | (words & 0x3333333333333333) << 2;
    return Bytes((words >> 1 & 0x5555555555555555) | (words & 0x5555555555555555) << 1);
}

// The mask of the first n bytes, of which there are fewer than a vector's; and that of all.
inline Mask first_bytes(size_t n) { return (Mask(1) << n * kMaskBits) - 1; }
constexpr Mask kEveryByte = Mask(~Mask(0)) >> (sizeof(Mask) * 8 - kVectorBytes * kMaskBits);

// The n bytes at `bytes`, fewer than a word's, and zeros.
inline uint64_t part_of_word(const uint8_t* bytes, size_t n) {
    if (n >= 4) {
        return load<uint32_t>(bytes) | uint64_t(load<uint32_t>(bytes + n - 4)) << 8 * (n - 4);
    }
    if (n == 0) return 0;
    return bytes[0] | uint64_t(bytes[n / 2]) << 8 * (n / 2) | uint64_t(bytes[n - 1]) << 8 * (n - 1);
}

// The n bytes at `bytes`, fewer than a vector's, and zeros. Other bytes are not touched. By words: levels
// without a faster way use it.
inline Bytes part_by_words(const uint8_t* bytes, size_t n) {
    Vector<uint64_t> words = {};
    size_t word = 0;
    if constexpr (kVectorBytes == 32) {
        if (n >= 16) {
            words[0] = load<uint64_t>(bytes);
            words[1] = load<uint64_t>(bytes + kWord);
            bytes += 16;
            n -= 16;
            word = 2;
        }
    }
    uint64_t low = 0;
    uint64_t high = 0;
    if (n >= kWord) {
        low = load<uint64_t>(bytes);
        high = load<uint64_t>(bytes + n - kWord) >> 8 * (15 - n) >> 8;
    } else {
        low = part_of_word(bytes, n);
    }
    if (word == 0) {
        words[0] = low;
        words[1] = high;
    } else {
        words[2 % (kVectorBytes / kWord)] = low;
        words[3 % (kVectorBytes / kWord)] = high;
    }
    return Bytes(words);
}
