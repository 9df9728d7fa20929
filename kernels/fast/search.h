// A round looks at four vectors. In long runs the first and the last round overlap their neighbours, and
// those between are aligned as a whole: no round reaches into a page behind that of the first byte that is
// new to it. Short runs are cut at the page's end.

constexpr size_t kVector = kVectorBytes;
constexpr size_t kRound = 4 * kVector;
constexpr size_t kPage = 4096;  // the smallest of any processor

inline size_t left_in_page(const uint8_t* at) { return kPage - uintptr_t(at) % kPage; }

// Starts to fetch the bytes of a round that comes later; they may lie behind all memory.
constexpr size_t kAhead = 4096;
inline void fetch(const uint8_t* round) {
    for (size_t i = 0; i < kRound; i += 64) __builtin_prefetch(round + i);
}

// What bytes are looked for. What is seen of several vectors is joined by | and asked at once.
struct ByteIs {
    explicit ByteIs(uint8_t value) : wanted(all(value)) {}
    Bytes wanted;
    Marks seen(Bytes v) const { return marked_equal(v, wanted); }
    static Mask mask(Marks seen) { return mask_of(seen); }
};
struct ByteIsNot {
    explicit ByteIsNot(uint8_t value) : unwanted(all(value)) {}
    Bytes unwanted;
    Bytes seen(Bytes v) const { return v ^ unwanted; }
    static Mask mask(Bytes seen) { return mask_of(marked_equal(seen, Bytes{})) ^ kEveryByte; }
};
struct ByteIsHigh {
    explicit ByteIsHigh(uint8_t) {}
    static Bytes seen(Bytes v) { return v & 0x80; }
    static Mask mask(Bytes seen) { return high_bits(seen); }
};

// What is found in 1 to kVector - 1 bytes, loaded as two pieces of kPiece bytes that may overlap.
template <size_t kPiece, class Wanted>
inline Mask found_in_pieces(Bytes pieces, size_t n, Wanted wanted) {
    const Mask found = wanted.mask(wanted.seen(pieces));
    return (found & first_bytes(kPiece)) | (found >> kPiece * kMaskBits & first_bytes(kPiece))
                                               << (n - kPiece) * kMaskBits;
}

template <class Wanted>
inline Mask found_in_part(const uint8_t* data, size_t n, Wanted wanted) {
    if constexpr (kVectorBytes == 64) {
        if (n >= 32) return found_in_pieces<32>(load_long_pieces<32>(data, n), n, wanted);
    }
    if constexpr (kVectorBytes > 16) {
        if (n >= 16) return found_in_pieces<16>(load_long_pieces<16>(data, n), n, wanted);
    }
    if (n >= 8) return found_in_pieces<8>(load_words_at_ends(data, n), n, wanted);
    const auto in_word = [](uint64_t pieces) { return Bytes(Lane64{pieces}); };
    if (n >= 4) return found_in_pieces<4>(in_word(load_pieces<uint32_t>(data, n)), n, wanted);
    if (n >= 2) return found_in_pieces<2>(in_word(load_pieces<uint16_t>(data, n)), n, wanted);
    return n == 1 ? wanted.mask(wanted.seen(in_word(data[0]))) & first_bytes(1) : 0;
}

// A run shorter than a round, all in readable memory.
template <class Wanted>
inline size_t find_in_few(const uint8_t* data, size_t n, Wanted wanted) {
    if (n < kVector) {
        const Mask found = found_in_part(data, n, wanted);
        return found ? first(found) : kNotFound;
    }
    size_t i = 0;
    for (; n - i > kVector; i += kVector) {
        if (const Mask found = wanted.mask(wanted.seen(load<Bytes>(data + i)))) return i + first(found);
    }
    i = n - kVector;
    const Mask found = wanted.mask(wanted.seen(load<Bytes>(data + i)));
    return found ? i + first(found) : kNotFound;
}

template <class Wanted>
inline bool round_has(const uint8_t* data, Wanted wanted) {
    const auto front = wanted.seen(load<Bytes>(data)) | wanted.seen(load<Bytes>(data + kVector));
    const auto back =
        wanted.seen(load<Bytes>(data + 2 * kVector)) | wanted.seen(load<Bytes>(data + 3 * kVector));
    return any(front | back);
}

template <class Wanted>
inline size_t find_first(const uint8_t* data, size_t n, uint8_t value);

// For runs of which less than a round, and less than all, lies in the page of the first byte. A function of
// its own, so that the others keep nothing across a call.
template <class Wanted>
[[gnu::noinline]] size_t find_first_across_page(const uint8_t* data, size_t n, uint8_t value) {
    const size_t head = left_in_page(data);
    const size_t found = find_in_few(data, head, Wanted(value));
    if (found != kNotFound) return found;
    const size_t rest = find_first<Wanted>(data + head, n - head, value);
    return rest == kNotFound ? rest : head + rest;
}

template <class Wanted>
inline size_t find_first(const uint8_t* data, size_t n, uint8_t value) {
    const size_t readable = left_in_page(data);
    const Wanted wanted(value);
    if (n < kRound && n <= readable) return find_in_few(data, n, wanted);
    if (readable < kRound) return find_first_across_page<Wanted>(data, n, value);
    const uint8_t* at = data;
    if (!round_has(data, wanted)) at += kRound - uintptr_t(data) % kRound;
    const uint8_t* const last = data + (n - kRound);
    while (at < last && !round_has(at, wanted)) at += kRound;
    if (at > last) at = last;
    const size_t found = find_in_few(at, kRound, wanted);
    return found == kNotFound ? found : size_t(at - data) + found;
}

size_t find_byte(const uint8_t* data, size_t n, uint8_t value) { return find_first<ByteIs>(data, n, value); }
size_t find_not_byte(const uint8_t* data, size_t n, uint8_t value) {
    return find_first<ByteIsNot>(data, n, value);
}
bool all_zero(const uint8_t* data, size_t n) { return find_not_byte(data, n, 0) == kNotFound; }
bool all_ascii(const uint8_t* data, size_t n) { return find_first<ByteIsHigh>(data, n, 0) == kNotFound; }

bool equal(const uint8_t* first, const uint8_t* second, size_t n) {
    if (n < kVector) return !any(part(first, n) ^ part(second, n));
    const auto differences = [&](size_t i) { return load<Bytes>(first + i) ^ load<Bytes>(second + i); };
    size_t i = 0;
    if (n > kRound) {
        // Vectors of the first range are aligned; the ranges are often equally far from that.
        if (any(differences(0))) return false;
        i = kVector - uintptr_t(first) % kVector;
    }
    for (; n - i > kRound; i += kRound) {
        const Bytes front = differences(i) | differences(i + kVector);
        if (any(front | differences(i + 2 * kVector) | differences(i + 3 * kVector))) return false;
    }
    for (; n - i > kVector; i += kVector) {
        if (any(differences(i))) return false;
    }
    return !any(differences(n - kVector));
}

// Searching a needle: vectors of haystack bytes, loaded at a few offsets, the probes, are compared with the
// needle's byte there; where all agree, the whole needle is compared. The first probes are bytes that seldom
// occur. Where too many places agree, more probes are compared at once; where whole comparisons fail, the
// place at which they failed becomes a probe, and the haystack's byte there tells how far the needle may be
// moved on. When that has cost more than it should, the rest is searched by a method whose time is linear for
// all inputs.

// The bytes of text, source code and logs from the most frequent one on; all others are rare.
constexpr char kFrequent[] =
    " etaoinsrhldcumpfgyb0w1vk,.2-\n35_4:x6789/"
    "=j\"T()SAIqCzEPRMDNLOFBW'\0HGU;\r\t>V<*[]Y+JK#|{}X&Q%Z@$!?\\^~`\377";

struct Ranks {
    uint8_t of[256];
};
constexpr Ranks ranks() {
    Ranks ranks = {};
    constexpr size_t kCount = sizeof kFrequent - 1;
    for (size_t i = 0; i < kCount; ++i) ranks.of[uint8_t(kFrequent[i])] = uint8_t(kCount - i);
    return ranks;
}
constexpr Ranks kRanks = ranks();

constexpr size_t kMaxProbes = 6;
constexpr size_t kAlways = 3;        // probes that a comparison looks at without asking what those before say
constexpr size_t kShortNeedle = 32;  // compared at all places of a vector at once, byte after byte
constexpr size_t kFewStarts = 32;    // places that words are compared at, one by one
constexpr size_t kShortSearch = 256;  // places that are searched without a choice of probes
constexpr size_t kFarApart = 1280;    // rounds that agree in vain cost less than another probe
// Places that are compared by a vector: fewer than fill it where an instruction loads a part of one.
constexpr size_t kFewestPlaces = kVectorBytes == 64 ? 4 : kVectorBytes;

// The byte that differs from that at `offset` and is nearest to the front; the last one where all are equal.
inline size_t other_byte(const uint8_t* needle, size_t m, size_t offset) {
    const size_t other = find_first<ByteIsNot>(needle, m, needle[offset]);
    return other != kNotFound ? other : m - 1;
}

// How many of the first n bytes, 1 or more, are equal.
inline size_t equal_front(const uint8_t* a, const uint8_t* b, size_t n) {
    if (a[0] != b[0]) return 0;
    size_t i = 0;
    for (; n - i >= kVector; i += kVector) {
        const Mask same = mask_of(marked_equal(load<Bytes>(a + i), load<Bytes>(b + i)));
        if (same != kEveryByte) return i + first(same ^ kEveryByte);
    }
    const Mask differs = mask_of(marked_equal(part(a + i, n - i), part(b + i, n - i))) ^ kEveryByte;
    return differs ? i + first(differs) : n;
}

// The index of the last of n bytes that differ, or kNotFound.
inline size_t last_difference(const uint8_t* a, const uint8_t* b, size_t n) {
    size_t i = n;
    for (; i >= kVector; i -= kVector) {
        const size_t at = i - kVector;
        const Mask same = mask_of(marked_equal(load<Bytes>(a + at), load<Bytes>(b + at)));
        if (same != kEveryByte) return at + last(same ^ kEveryByte);
    }
    const Mask differs = mask_of(marked_equal(part(a, i), part(b, i))) ^ kEveryByte;
    return differs ? last(differs) : kNotFound;
}

// The index of the last of n bytes that is `value`, or kNotFound.
inline size_t last_byte(const uint8_t* data, size_t n, uint8_t value) {
    size_t i = n;
    for (; i >= kVector; i -= kVector) {
        const Mask found = mask_of(marked_equal(load<Bytes>(data + i - kVector), all(value)));
        if (found) return i - kVector + last(found);
    }
    const Mask found = mask_of(marked_equal(part(data, i), all(value))) & first_bytes(i);
    return found ? last(found) : kNotFound;
}

// The start of the needle's greatest suffix, by the order of bytes or by the reverse one, and its period.
struct Suffix {
    size_t start;
    size_t period;
};
inline Suffix greatest_suffix(const uint8_t* needle, size_t m, bool reverse) {
    Suffix best = {0, 1};
    size_t other = 1;  // the suffix that is compared with the best one
    size_t k = 0;      // how many of their bytes are equal
    while (other + k < m) {
        const uint8_t a = needle[other + k];
        const uint8_t b = needle[best.start + k];
        if (a == b) {
            if (++k == best.period) {
                other += k;
                k = 0;
            }
        } else if ((a < b) != reverse) {
            other += k + 1;
            k = 0;
            best.period = other - best.start;
        } else {
            best = {other, 1};
            ++other;
            k = 0;
        }
    }
    return best;
}

// Crochemore and Perrin, "Two-way string-matching", Journal of the ACM 38, 1991: the needle is cut where its
// greatest suffix begins; its back is compared forwards, then its front. Linear, and without memory of its
// own.
size_t find_two_way(const uint8_t* haystack, size_t n, const uint8_t* needle, size_t m) {
    const Suffix a = greatest_suffix(needle, m, false);
    const Suffix b = greatest_suffix(needle, m, true);
    const Suffix cut = a.start > b.start ? a : b;
    const bool periodic = equal(needle, needle + cut.period, cut.start);
    const size_t period = periodic ? cut.period : larger(cut.start, m - cut.start) + 1;
    size_t known = 0;  // how many first bytes are known to be equal: none, or all before the cut at least
    for (size_t at = 0; m <= n - at;) {
        const size_t from = larger(cut.start, known);
        const size_t back = from + equal_front(needle + from, haystack + at + from, m - from);
        if (back < m) {
            at += back - cut.start + 1;
            known = 0;
            continue;
        }
        if (known >= cut.start || equal(needle, haystack + at, cut.start)) return at;
        at += period;
        known = periodic ? m - period : 0;
    }
    return kNotFound;
}

// The marks of the places from `at` on at which all probes agree.
template <size_t kProbes>
inline Marks agreeing(const uint8_t* const (&at)[kProbes], const Bytes (&bytes)[kProbes], size_t i) {
    Marks marks = marked_equal(load<Bytes>(at[0] + i), bytes[0]);
    for (size_t k = 1; k < kProbes; ++k) marks &= marked_equal(load<Bytes>(at[k] + i), bytes[k]);
    return marks;
}

// The same for a round at which the first probe is aligned, by aligned loads: what another probe compares
// begins in one vector, behind a byte of it at least, and ends in the next one.
template <size_t kProbes>
struct AlignedProbes {
    const uint8_t* const (&at)[kProbes];
    const Bytes (&bytes)[kProbes];
    size_t begin[kProbes];
    Across across[kProbes];

    AlignedProbes(const uint8_t* const (&places)[kProbes], const Bytes (&wanted)[kProbes])
        : at(places), bytes(wanted) {
        for (size_t k = 1; k < kProbes; ++k) {
            begin[k] = (uintptr_t(at[k]) - uintptr_t(at[0]) - 1) % kVector + 1;
            across[k] = Across(begin[k]);
        }
    }

    bool agree(size_t i) const {
        Marks marks[4];
        for (size_t v = 0; v < 4; ++v) {
            marks[v] = marked_equal(load<Bytes>(at[0] + i + v * kVector), bytes[0]);
        }
        for (size_t k = 1; k < kProbes; ++k) {
            const uint8_t* vector = at[k] + (i - begin[k]);
            Bytes before = load<Bytes>(vector);
            for (Marks& agreeing : marks) {
                vector += kVector;
                const Bytes after = in_register(load<Bytes>(vector));
                agreeing &= marked_equal(across[k].taken(before, after), bytes[k]);
                before = after;
            }
        }
        return any((marks[0] | marks[1]) | (marks[2] | marks[3]));
    }
};

// The index of the first byte of a word that is not 0.
inline size_t first_byte(uint64_t word) { return size_t(__builtin_ctzll(word)) / 8; }

struct Search {
    const uint8_t* haystack;
    const uint8_t* needle;
    size_t m;
    size_t starts;              // the number of places at which the needle may begin
    size_t probes[kMaxProbes];  // offsets in the needle
    size_t next = 0;            // the first place that has not been ruled out
    size_t spent = 0;           // on comparisons that failed, in steps of about a vector
    size_t active = 0;          // how many probes look for rounds worth a comparison
    size_t learned = 0;         // how many probes were replaced

    void spread_probes();
    void choose_rare_probes();
    size_t next_round() const;
    template <size_t kProbes>
    size_t first_round() const;
    size_t places_from(size_t at) const;
    template <class Load>
    Mask narrowed(Load bytes_at, size_t at, Mask mask);
    void learn(size_t difference) { probes[2 + learned++ % (larger<size_t>(active, 3) - 2)] = difference; }
    template <size_t kProbes>
    size_t compare(size_t at, size_t places);
    size_t compare_whole(size_t at, Mask mask);
};

void Search::spread_probes() {
    const size_t spread[] = {0, m - 1, m / 2, m / 4, m / 2 + m / 4, 1};
    for (size_t i = 0; i < kMaxProbes; ++i) probes[i] = spread[i];
}

// The rarest bytes become the probes, the rarest one first and another one second; no more are looked at than
// the haystack is worth. Of long needles the last byte is one too.
void Search::choose_rare_probes() {
    const auto rank = [this](size_t i) { return kRanks.of[needle[i]]; };
    const size_t looked_at = smaller(m, smaller<size_t>(256, 16 + starts / 128));
    size_t chosen = 0;
    for (size_t i = 0; i < looked_at; ++i) {
        if (chosen == kMaxProbes && rank(i) >= rank(probes[chosen - 1])) continue;
        size_t k = chosen < kMaxProbes ? chosen++ : kMaxProbes - 1;
        for (; k > 0 && rank(i) < rank(probes[k - 1]); --k) probes[k] = probes[k - 1];
        probes[k] = i;
    }
    active = 2;
    if (needle[probes[1]] == needle[probes[0]]) probes[1] = other_byte(needle, m, probes[0]);
    if (m >= 2 * kMaxProbes) probes[kMaxProbes - 1] = m - 1;
}

// How many places may be looked at together: no probe then reaches into a page behind that in which a needle
// at the first of them ends.
size_t Search::places_from(size_t at) const {
    return smaller(smaller(starts - at, kRound), left_in_page(haystack + at + m - 1));
}

// The first place from which on a round of places should be compared, or `starts`.
template <size_t kProbes>
size_t Search::first_round() const {
    if (places_from(next) < kRound) return next;
    // The probe that is furthest on becomes the first: the others compare what it has loaded.
    size_t furthest = 0;
    for (size_t k = 1; k < kProbes; ++k) {
        if (probes[k] > probes[furthest]) furthest = k;
    }
    const uint8_t* at[kProbes];
    Bytes bytes[kProbes];
    for (size_t k = 0; k < kProbes; ++k) {
        const size_t offset = probes[(furthest + k) % kProbes];
        at[k] = haystack + offset;
        bytes[k] = all(needle[offset]);
    }
    const auto agree = [&](size_t i) {
        const Marks front = agreeing(at, bytes, i) | agreeing(at, bytes, i + kVector);
        return any(front | (agreeing(at, bytes, i + 2 * kVector) | agreeing(at, bytes, i + 3 * kVector)));
    };
    size_t start = next;
    // Until rounds are aligned, so that each lies in a page, and no vector begins before the haystack.
    for (;;) {
        const size_t past = uintptr_t(at[0] + start) % kRound;
        if (past == 0 && start >= kVector) break;
        if (starts - start < kRound || agree(start)) return start;
        start += kRound - past;
    }
    if constexpr (Across::kThere) {
        const AlignedProbes<kProbes> aligned(at, bytes);
        while (starts - start >= kRound && !aligned.agree(start)) {
            fetch(at[0] + start + kAhead);
            start += kRound;
        }
    } else {
        while (starts - start >= kRound && !agree(start)) start += kRound;
    }
    return start;
}

// Of the places of a mask, whose first bit stands for `at`, those that may be the needle's: all probes and
// the first and the last word agree, and of short needles every byte.
template <class Load>
Mask Search::narrowed(Load bytes_at, size_t at, Mask mask) {
    constexpr unsigned kFew = 4;
    if (m >= kWord) {
        Mask kept = 0;
        const auto front = load<uint64_t>(needle);
        const auto back = load<uint64_t>(needle + m - kWord);
        for (unsigned looked_at = 0; mask && looked_at < kFew; ++looked_at, mask = without_first(mask)) {
            const uint8_t* const place = haystack + at + first(mask);
            const uint64_t front_differs = load<uint64_t>(place) ^ front;
            const uint64_t back_differs = load<uint64_t>(place + m - kWord) ^ back;
            if ((front_differs | back_differs) == 0) {
                kept |= mask & -mask;
            } else {
                learn(front_differs ? first_byte(front_differs) : m - kWord + first_byte(back_differs));
            }
        }
        if (mask == 0 && m <= 2 * kWord) return kept;
        mask |= kept;
    }
    const auto narrow = [&](size_t offset) {
        mask &= mask_of(marked_equal(bytes_at(haystack + at + offset), all(needle[offset])));
    };
    for (size_t k = kAlways; k < kMaxProbes && mask != 0; ++k) narrow(probes[k]);
    for (size_t k = 0; m <= kShortNeedle && k < m && mask != 0; ++k) narrow(k);
    return mask;
}

// Compares the needle at the places from `at` on at which some probes agree, and rules all those places out.
// Returns the first at which it lies.
template <size_t kProbes>
size_t Search::compare(size_t at, size_t places) {
    const uint8_t* rows[kProbes];
    Bytes wanted[kProbes];
    for (size_t k = 0; k < kProbes; ++k) {
        rows[k] = haystack + probes[k];
        wanted[k] = all(needle[probes[k]]);
    }
    const size_t end = at + places;
    size_t found = kNotFound;
    if (places < kVector) {
        const auto some = [&](const uint8_t* bytes) { return part(bytes, places); };
        Mask mask = first_bytes(places);
        for (size_t k = 0; k < kProbes; ++k) mask &= mask_of(marked_equal(some(rows[k] + at), wanted[k]));
        if (mask) found = compare_whole(at, narrowed(some, at, mask));
    } else {
        for (size_t i = at; found == kNotFound && i < end; i += kVector) {
            i = smaller(i, end - kVector);
            const Mask mask = mask_of(agreeing(rows, wanted, i));
            if (mask) found = compare_whole(i, narrowed(load<Bytes>, i, mask));
        }
    }
    next = larger(next, end);
    return found;
}

// The first place of a mask, whose first bit stands for `at`, at which the whole needle lies.
size_t Search::compare_whole(size_t at, Mask mask) {
    for (; mask; mask = without_first(mask)) {
        const size_t place = at + first(mask);
        if (place < next) continue;
        if (m <= kShortNeedle) return place;
        const size_t difference = last_difference(haystack + place, needle, m);
        if (difference == kNotFound) return place;
        spent += 4 + (m - difference) / kVector;
        next = place + 1;
        learn(difference);
        if (m - difference < kVector) continue;
        const size_t again = last_byte(needle, difference, haystack[place + difference]);
        next = place + difference - again;
    }
    return kNotFound;
}

size_t Search::next_round() const {
    if (active == 2) return first_round<2>();
    if (active == 3) return first_round<3>();
    if (active == 4) return first_round<4>();
    if (active == 6) return first_round<6>();
    return next;
}

// The needle's first and last word are all of it.
template <class Word>
struct ShortNeedle {
    const uint8_t* needle;
    size_t m;
    Word front = load<Word>(needle);
    Word back = load<Word>(needle + m - sizeof(Word));

    bool is_at(const uint8_t* place) const {
        return load<Word>(place) == front && load<Word>(place + m - sizeof(Word)) == back;
    }

    // One place after the other.
    size_t find_singly(const uint8_t* haystack, size_t starts) const {
        for (size_t i = 0; i < starts; ++i) {
            if (is_at(haystack + i)) return i;
        }
        return kNotFound;
    }

    // By vectors, of which the last may overlap the one before it, or by one that is not filled; and by the
    // needle's ends and middle.
    size_t find_by_vectors(const uint8_t* haystack, size_t starts) const {
        const uint8_t* const rows[] = {haystack, haystack + m / 2, haystack + m - 1};
        const Bytes wanted[] = {all(needle[0]), all(needle[m / 2]), all(needle[m - 1])};
        const auto first_of = [&](size_t i, Mask mask) {
            for (; mask; mask = without_first(mask)) {
                if (is_at(haystack + i + first(mask))) return i + first(mask);
            }
            return kNotFound;
        };
        if (starts < kVector) {
            const auto places = [&](size_t k) { return marked_equal(part(rows[k], starts), wanted[k]); };
            return first_of(0, mask_of(places(0) & places(1) & places(2)) & first_bytes(starts));
        }
        const size_t last_vector = starts - kVector;
        for (size_t i = 0;; i = smaller(i + kVector, last_vector)) {
            const size_t found = first_of(i, mask_of(agreeing(rows, wanted, i)));
            if (found != kNotFound || i == last_vector) return found;
        }
    }
};

template <class Word>
inline size_t find_short(const uint8_t* haystack, size_t starts, ShortNeedle<Word> needle, bool by_vectors) {
    return by_vectors ? needle.find_by_vectors(haystack, starts) : needle.find_singly(haystack, starts);
}

size_t find(const uint8_t* haystack, size_t n, const uint8_t* needle, size_t m) {
    if (m > n) return kNotFound;
    if (m == 1) return find_byte(haystack, n, needle[0]);
    const size_t starts = n - m + 1;
    // What lies in one page may be read by vectors.
    const bool in_page = n <= left_in_page(haystack);
    if (m <= 2 * kWord && starts <= (in_page ? kShortSearch : kFewStarts)) {
        const bool by_vectors = in_page && starts >= kFewestPlaces;
        if (m >= 8) return find_short(haystack, starts, ShortNeedle<uint64_t>{needle, m}, by_vectors);
        if (m >= 4) return find_short(haystack, starts, ShortNeedle<uint32_t>{needle, m}, by_vectors);
        return find_short(haystack, starts, ShortNeedle<uint16_t>{needle, m}, by_vectors);
    }
    Search search = {haystack, needle, m, starts, {}};
    search.spread_probes();
    // Choosing costs as much as searching some hundred bytes.
    const size_t searched_before = m <= kShortNeedle && starts > 2 * kShortSearch ? 0 : kShortSearch;
    size_t rounds = 0;  // in which the active probes agreed somewhere,
    size_t since = 0;   // from here on
    while (search.next < search.starts) {
        if (search.active == 0 && search.next >= searched_before) search.choose_rare_probes();
        const size_t at = search.next_round();
        if (at >= search.starts) break;
        const size_t places = search.places_from(at);
        const size_t found = search.active == kMaxProbes ? search.compare<kMaxProbes>(at, places)
                                                         : search.compare<kAlways>(at, places);
        if (found != kNotFound) return found;
        if (search.active != 0 && search.active < kMaxProbes &&
            ++rounds > 1 + (search.next - since) / kFarApart) {
            search.active += search.active == 4 ? 2 : 1;
            rounds = 0;
            since = search.next;
        }
        if (search.spent > 256 + search.next / 2) {
            const size_t rest = find_two_way(haystack + search.next, n - search.next, needle, m);
            return rest == kNotFound ? rest : search.next + rest;
        }
    }
    return kNotFound;
}
