// Samples times a factor in double precision, truncated. Many 8-bit samples go through a multiplication of
// integers that gives the same for all of them.

void scale_uint16(uint8_t* samples, size_t n, double factor) {
    if (!(factor >= 0)) return;
    // With a factor of the largest sample or more every sample but 0 saturates, so that all of these factors
    // may be taken for it (with the infinite one 0 would become not a number).
    constexpr double kLargest = 65535;
    const auto factors = all(smaller(factor, kLargest));
    const auto largest = all(kLargest);
    change_bytes(samples, 2 * n, 2, [=](Bytes x) { return scaled16(x, factors, largest); });
}

inline void scale_few_uint8(uint8_t* samples, size_t n, double factor) {
    const auto factors = all(factor);
    const auto largest = all(255.0);
    change_bytes(samples, n, 1, [=](Bytes x) {
        return narrowed(Vector<uint16_t>(scaled16(Bytes(widened_low(x)), factors, largest)),
                        Vector<uint16_t>(scaled16(Bytes(widened_high(x)), factors, largest)));
    });
}

// A factor for 8-bit samples: x * whole + (x * fraction >> 16), less 1 for the samples in `rounded_down`. It
// is right for x up to `largest`; all samples above saturate as that one does.
struct Multiplier {
    uint16_t whole;
    uint16_t fraction;
    uint8_t largest;
    uint8_t rounded_down[255];
    size_t rounded_down_count;
};

// The smallest x, 1 to 255, for which x * fraction and x * (fraction + 1) differ above their lowest 16 bits;
// 0 if there is none.
inline unsigned first_to_differ(uint16_t fraction) {
    using Numbers = Vector<uint16_t>;
    constexpr uint16_t kStep = kVectorBytes / sizeof(uint16_t);
    const auto fractions = all(fraction);
    Numbers x = counting<uint16_t>();
    for (unsigned i = 0; i < 256; i += kStep, x += kStep) {
        // What is missing from the next multiple of 2^16, less one.
        const Numbers missing = ~(x * fractions);
        const auto differ = Bytes(missing < x);
        if (any(differ)) return i + unsigned(first(high_bits(differ)) / sizeof(uint16_t));
    }
    return 0;
}

// The multiplier for a factor of 0 to 255. With r the factor's fraction and c = trunc(r * 2^16), every result
// is that of c or that of c + 1, and the two differ for the multiples of one number only: fractions with
// denominators up to 255 are at least 1 / (255 * 254) apart, so at most one, q / p in its lowest terms, lies
// after c / 2^16 and not after (c + 1) / 2^16. If the factor reaches it, c + 1 is right, and if it stays
// below, c. Where it is so near that rounding lifts some products to whole numbers, c + 1 is right for these
// samples only.
inline Multiplier find_multiplier(double factor) {
    Multiplier found;
    const auto whole = unsigned(factor);
    const auto fraction = unsigned((factor - whole) * 65536.0);
    found.whole = uint16_t(whole);
    found.fraction = uint16_t(fraction);
    found.largest = uint8_t(whole == 0 ? 255 : smaller(255U, 255 / whole + 1));
    found.rounded_down_count = 0;
    const unsigned p = first_to_differ(found.fraction);
    if (p == 0) return found;
    const unsigned q = p * whole + (p * fraction >> 16) + 1;
    constexpr double kNear = 1e-9;  // more than products are rounded by
    const double distance = p * factor - q;
    if (distance < -kNear) return found;
    if (distance <= 0) {
        unsigned multiples = 0;
        for (unsigned x = p, result = q; x <= 255 && result <= 255; x += p, result += q, ++multiples) {
            if (x * factor < result) found.rounded_down[found.rounded_down_count++] = uint8_t(x);
        }
        if (found.rounded_down_count == multiples) {
            found.rounded_down_count = 0;
            return found;
        }
    }
    found.fraction = uint16_t(fraction + 1);
    return found;
}

inline Bytes multiplied(Bytes x, const Multiplier& multiplier) {
    const auto product = [&](Vector<uint16_t> samples) {
        return samples * all(multiplier.whole) + high_products(samples, all(multiplier.fraction));
    };
    x = smaller_lanes(x, all(multiplier.largest));
    return narrowed(product(widened_low(x)), product(widened_high(x)));
}

// For a factor below 1: every second byte by itself, those above it with the lower byte of their number as 0.
inline Bytes multiplied_by_fraction(Bytes x, const Multiplier& multiplier) {
    const auto fraction = all(multiplier.fraction);
    const auto even = high_products(Vector<uint16_t>(x) & 0xFF, fraction);
    const auto odd = high_products(Vector<uint16_t>(x) & 0xFF00, fraction) & 0xFF00;
    return Bytes(even | odd);
}

template <bool kBelowOne>
inline Bytes product(Bytes x, const Multiplier& multiplier) {
    if constexpr (kBelowOne)
        return multiplied_by_fraction(x, multiplier);
    else
        return multiplied(x, multiplier);
}

// kRounded: at least as many as are rounded down, or 0 for any number.
template <bool kBelowOne, size_t kRounded>
void scale_rounded(uint8_t* samples, size_t n, const Multiplier& multiplier) {
    Bytes rounded[larger<size_t>(kRounded, 1)];
    for (size_t i = 0; i < kRounded; ++i) {
        rounded[i] = all(multiplier.rounded_down[smaller(i, multiplier.rounded_down_count - 1)]);
    }
    change_bytes(samples, n, 1, [&](Bytes x) {
        Bytes less = {};
        for (size_t i = 0; i < kRounded; ++i) less |= Bytes(x == rounded[i]);
        for (size_t i = 0; kRounded == 0 && i < multiplier.rounded_down_count; ++i) {
            less |= Bytes(x == all(multiplier.rounded_down[i]));
        }
        return product<kBelowOne>(x, multiplier) + less;
    });
}

template <bool kBelowOne>
void scale_by(uint8_t* samples, size_t n, const Multiplier& multiplier) {
    if (multiplier.rounded_down_count == 0) {
        return change_bytes(samples, n, 1, [&](Bytes x) { return product<kBelowOne>(x, multiplier); });
    }
    if (multiplier.rounded_down_count <= 4) return scale_rounded<kBelowOne, 4>(samples, n, multiplier);
    scale_rounded<kBelowOne, 0>(samples, n, multiplier);
}

// Each product once.
template <class Table>
void scale_by_table(uint8_t* samples, size_t n, double factor) {
    uint8_t products[256];
    for (unsigned i = 0; i < sizeof products; ++i) products[i] = uint8_t(i);
    scale_few_uint8(products, sizeof products, factor);
    change_bytes(samples, n, 1, Table(products));
}

void scale_uint8(uint8_t* samples, size_t n, double factor) {
    if (!(factor >= 0)) return;
    factor = smaller(factor, 255.0);
    if constexpr (ByteTable::kThere) {
        if (n > 256) return scale_by_table<ByteTable>(samples, n, factor);
        return scale_few_uint8(samples, n, factor);
    }
    constexpr size_t kFew = 128;  // finding the multiplier takes as long
    if (n <= kFew) return scale_few_uint8(samples, n, factor);
    const Multiplier multiplier = find_multiplier(factor);
    if (multiplier.whole > 0) return scale_by<false>(samples, n, multiplier);
    scale_by<true>(samples, n, multiplier);
}
