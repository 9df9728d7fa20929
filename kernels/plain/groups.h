int32_t bound(int32_t reference, double part) {
    const double product = double(reference) * part;
    return product > -2147483649.0 && product < 2147483648.0 ? int32_t(product) : INT32_MIN;
}

void complete_sum(uint8_t* data, size_t groups, int32_t limit, bool zero_stays) {
    for (uint8_t* group = data; group != data + 4 * groups; group += 4) {
        const int32_t sum = group[0] + group[1] + group[2];
        if (sum >= limit || (zero_stays && sum == 0)) {
            group[3] = 0;
        } else {
            group[3] = uint8_t(std::min(limit - sum, 255));
        }
    }
}

void replace_similar(uint8_t* data, size_t groups, const int32_t (&reference)[4],
                     const int32_t (&replacement)[4], double tolerance) {
    for (uint8_t* group = data; group != data + 4 * groups; group += 4) {
        bool similar = true;
        for (size_t k = 0; k < 4; ++k) {
            similar = similar && group[k] >= bound(reference[k], 1.0 - tolerance) &&
                      group[k] <= bound(reference[k], tolerance + 1.0);
        }
        for (size_t k = 0; similar && k < 4; ++k) group[k] = uint8_t(replacement[k]);
    }
}
