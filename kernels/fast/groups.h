// A group is one lane of 32 bits, its fourth byte the most significant one. Both rules give the same when
// they are applied again, so that the last vector may overlap the one before it.

using Lanes = Vector<int32_t>;

// Applies a rule, which takes and gives a vector of groups, to all groups.
template <class Rule>
void change_groups(uint8_t* data, size_t groups, Rule rule) {
    if (groups == 0) return;
    const size_t n = 4 * groups;
    if (n < sizeof(Lanes)) {
        Lanes few = {};
        memcpy(&few, data, n);
        few = rule(few);
        memcpy(data, &few, n);
        return;
    }
    const size_t last = n - sizeof(Lanes);
    for (size_t i = 0; i < last; i += sizeof(Lanes)) store(data + i, rule(load<Lanes>(data + i)));
    store(data + last, rule(load<Lanes>(data + last)));
}

int32_t truncated(double number) {
    constexpr double kLimit = 2147483648.0;
    return number >= -kLimit && number < kLimit ? int32_t(number) : INT32_MIN;
}

void complete_sum(uint8_t* data, size_t groups, int32_t limit, bool zero_stays) {
    // Limits clamp to 0..1020, since sums end at 765 and a byte at 255.
    const int32_t nearest = smaller(larger(limit, 0), 1020);
    const int32_t if_zero = zero_stays ? 0 : -1;
    change_groups(data, groups, [=](Lanes group) {
        const Lanes sum = (group & 0xFF) + (group >> 8 & 0xFF) + (group >> 16 & 0xFF);
        Lanes missing = nearest - sum;
        missing = missing > 0 ? missing : 0;
        missing = missing < 255 ? missing : 255;
        missing &= (sum > 0) | if_zero;
        return (group & 0xFFFFFF) | missing << 24;
    });
}

void replace_similar(uint8_t* data, size_t groups, const int32_t (&reference)[4],
                     const int32_t (&replacement)[4], double tolerance) {
    Bytes least;
    Bytes most;
    Bytes changed;
    for (size_t i = 0; i < kVectorBytes; ++i) {
        const double number = reference[i % 4];
        const int32_t from = larger(0, truncated(number * (1.0 - tolerance)));
        const int32_t to = smaller(255, truncated(number * (tolerance + 1.0)));
        if (from > to) return;
        least[i] = uint8_t(from);
        most[i] = uint8_t(to);
        changed[i] = uint8_t(replacement[i % 4]);
    }
    change_groups(data, groups, [=](Lanes group) {
        const auto bytes = Bytes(group);
        Bytes nearest = bytes < least ? least : bytes;
        nearest = nearest > most ? most : nearest;
        return Lanes(nearest) == group ? Lanes(changed) : group;
    });
}
