// 8-bit samples go through a table of all results, 16-bit ones through the multiplication; each with or
// without saturation, which is settled by the factor before the loop.

enum class Saturate { kNo, kYes };

template <class Sample>
constexpr Sample kLargest = Sample(-1);

// The product of a factor below 1 cannot exceed the largest sample.
template <class Sample, Saturate saturate>
Sample scaled(Sample sample, double factor) {
    double product = double(sample) * factor;
    if constexpr (saturate == Saturate::kYes) product = smaller<double>(product, kLargest<Sample>);
    return Sample(int32_t(product));
}

template <Saturate saturate>
void scale8(uint8_t* samples, size_t n, double factor) {
    uint8_t results[256];
    for (unsigned i = 0; i < 256; ++i) results[i] = scaled<uint8_t, saturate>(uint8_t(i), factor);
    for (size_t i = 0; i < n; ++i) samples[i] = results[samples[i]];
}

template <Saturate saturate>
void scale16(uint8_t* samples, size_t n, double factor) {
    for (size_t i = 0; i < n; ++i) {
        store(samples + 2 * i, scaled<uint16_t, saturate>(load<uint16_t>(samples + 2 * i), factor));
    }
}

// With a factor of the largest sample or more every sample but 0 saturates. So all of these, the infinite one
// included, which would make 0 not a number, give the same results.
template <class Sample>
double limited(double factor) {
    return smaller<double>(factor, kLargest<Sample>);
}

void scale_uint8(uint8_t* samples, size_t n, double factor) {
    if (!(factor >= 0)) return;
    if (factor < 1) return scale8<Saturate::kNo>(samples, n, factor);
    scale8<Saturate::kYes>(samples, n, limited<uint8_t>(factor));
}

void scale_uint16(uint8_t* samples, size_t n, double factor) {
    if (!(factor >= 0)) return;
    if (factor < 1) return scale16<Saturate::kNo>(samples, n, factor);
    scale16<Saturate::kYes>(samples, n, limited<uint16_t>(factor));
}
