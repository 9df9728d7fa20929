constexpr double kTurn = 6.28318530718;
constexpr size_t kPair = 2 * sizeof(float);

void store_pair(uint8_t* pair, float first, float second) {
    store(pair, first);
    store(pair + sizeof first, second);
}

void log_sweep(uint8_t* destination, size_t pairs, int32_t first_frequency, int32_t last_frequency,
               double duration) {
    const double ratio = log(double(last_frequency) / double(first_frequency));
    const double scale = double(first_frequency) * kTurn / ratio;
    for (size_t i = 0; i < pairs; ++i) {
        const double position = double(i) / duration;
        const float growth = expf(float(ratio * position));
        const float phase = float(double(growth - 1.0F) * scale);
        store_pair(destination + i * kPair, sinf(phase) * 0.944F, float(position * (16 * kTurn)));
    }
}

void polar_to_cartesian(uint8_t* destination, const uint8_t* source, size_t pairs) {
    for (size_t i = 0; i < pairs; ++i) {
        const auto magnitude = load<float>(source + i * kPair);
        const auto angle = load<float>(source + i * kPair + sizeof magnitude);
        store_pair(destination + i * kPair, cosf(angle) * magnitude, magnitude * sinf(angle));
    }
}

void cartesian_to_polar(uint8_t* destination, const uint8_t* source, size_t pairs) {
    for (size_t i = 0; i < pairs; ++i) {
        const auto x = load<float>(source + i * kPair);
        const auto y = load<float>(source + i * kPair + sizeof x);
        store_pair(destination + i * kPair, sqrtf(y * y + x * x), atan2f(y, x));
    }
}
