template <class Sample>
void scale(uint8_t* samples, size_t n, double factor) {
    constexpr Sample kLargest = std::numeric_limits<Sample>::max();
    if (std::isnan(factor) || factor < 0) return;
    for (size_t i = 0; i < n; ++i) {
        uint8_t* at = samples + i * sizeof(Sample);
        const auto sample = load<Sample>(at);
        if (sample == 0) continue;
        const double product = std::trunc(double(sample) * factor);
        store(at, product > kLargest ? kLargest : Sample(product));
    }
}

void scale_uint8(uint8_t* samples, size_t n, double factor) { scale<uint8_t>(samples, n, factor); }
void scale_uint16(uint8_t* samples, size_t n, double factor) { scale<uint16_t>(samples, n, factor); }
