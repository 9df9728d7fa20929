// A group is one lane of 32 bits, its fourth byte the most significant one.
using Groups = Vector<int32_t>;

template <bool kBeyondByte>
inline void complete_sums(uint8_t* data, size_t groups, int32_t limit, int32_t less) {
    const auto limits = all(limit - less);
    const auto largest = all<int32_t>(255);
    change_bytes(data, 4 * groups, 4, [=](Bytes bytes) {
        // Numbers of 16 bits, with zeros above them.
        auto missing = Groups(without_borrow(limits, sums_of_three(bytes) - less));
        if constexpr (kBeyondByte) missing = smaller_lanes(missing, largest);
        return Bytes((Groups(bytes) & 0xFFFFFF) | missing << 24);
    });
}

// Limits clamp to 0..1020, since sums end at 765 and a byte at 255. Where a sum of 0 stays, all numbers are
// less by 1: that sum becomes the largest number, from which nothing is missing.
void complete_sum(uint8_t* data, size_t groups, int32_t limit, bool zero_stays) {
    const int32_t less = zero_stays ? 1 : 0;
    limit = smaller(larger(limit, less), 1020);
    if (limit <= 255) return complete_sums<false>(data, groups, limit, less);
    complete_sums<true>(data, groups, limit, less);
}

inline int32_t truncated(double number) {
    constexpr double kLimit = 2147483648.0;
    return __builtin_fabs(number) < kLimit ? int32_t(number) : INT32_MIN;
}

void replace_similar(uint8_t* data, size_t groups, const int32_t (&reference)[4],
                     const int32_t (&replacement)[4], double tolerance) {
    uint32_t least = 0;
    uint32_t most = 0;
    uint32_t changed = 0;
    for (unsigned k = 0; k < 4; ++k) {
        const double number = reference[k];
        const int32_t from = larger(0, truncated(number * (1.0 - tolerance)));
        const int32_t to = smaller(255, truncated(number * (tolerance + 1.0)));
        if (from > to) return;
        least |= uint32_t(from) << 8 * k;
        most |= uint32_t(to) << 8 * k;
        changed |= uint32_t(uint8_t(replacement[k])) << 8 * k;
    }
    const auto least_bytes = Bytes(all(least));
    const auto most_bytes = Bytes(all(most));
    const auto changed_groups = Groups(all(changed));
    change_bytes(data, 4 * groups, 4, [=](Bytes bytes) {
        const Bytes nearest = smaller_lanes(larger_lanes(bytes, least_bytes), most_bytes);
        return Bytes(Groups(nearest) == Groups(bytes) ? changed_groups : Groups(bytes));
    });
}
