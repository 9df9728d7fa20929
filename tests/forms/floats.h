// The float functions of a level, held against the C library's. Says for each form in how many floats its
// bits differ from the library's, and fails where those of the form that the level has chosen do, or where it
// has to call a library whose methods it knows. `every` also lists the floats for which fused and separate
// operations differ.

// A result that is not a number is the same as any other.
bool same(float a, float b) {
    return std::bit_cast<uint32_t>(a) == std::bit_cast<uint32_t>(b) || (std::isnan(a) && std::isnan(b));
}

// glibc has had the methods from 2.28 to 2.40. In 32 bits some of its functions are the processor's.
bool library_is_known() {
#ifdef _WIN32
    return false;
#else
    return sizeof(void*) == 8 && std::atof(gnu_get_libc_version()) < 2.405;
#endif
}

class Comparison {
 public:
    Comparison(const char* function, Form chosen) : function_(function), chosen_(chosen) {}

    // Two results for each of kChunk arguments.
    void add(const float* arguments, const float* fused, const float* separate, const float* library) {
        compared_ += kChunk;
        constexpr size_t kBytes = 2 * kChunk * sizeof(float);
        if (memcmp(fused, library, kBytes) == 0 && memcmp(separate, library, kBytes) == 0) return;
        for (size_t i = 0; i < 2 * kChunk; ++i) {
            fused_ += !same(fused[i], library[i]);
            separate_ += !same(separate[i], library[i]);
            if (every && !same(fused[i], separate[i]))
                std::printf("%s of %a: fused is not separate\n", function_, double(arguments[i / 2]));
        }
    }

    ~Comparison() {
        const uint64_t differ = chosen_ == Form::kFused ? fused_ : chosen_ == Form::kSeparate ? separate_ : 0;
        constexpr const char* kNames[] = {"", "fused", "separate", "the library's"};
        std::printf(
            "%s of %.0f arguments: %.0f results differ if fused, %.0f if separate; chosen: %s; %.1f s\n",
            function_, double(compared_), double(fused_), double(separate_), kNames[size_t(chosen_)],
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count());
        std::fflush(stdout);
        failed |= differ != 0 || (chosen_ == Form::kLibrary && library_is_known());
    }

 private:
    const char* function_;
    Form chosen_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    uint64_t compared_ = 0;
    uint64_t fused_ = 0;
    uint64_t separate_ = 0;
};

// Calls compare(x) with kChunk floats at a time.
template <class Compare>
void for_floats(Compare compare) {
    const uint64_t step = every ? 1 : 1009;
    float x[kChunk];
    for (uint64_t bits = 0; bits < uint64_t{1} << 32;) {
        for (float& one : x) {
            one = std::bit_cast<float>(uint32_t(bits));
            bits += step;
        }
        compare(x);
    }
}

// The results of one form as floats: of(x, vectors) gives them as pairs.
struct Results {
    float floats[2 * kChunk];

    template <class Form>
    Results(const float* x, Form of) {
        Doubles arguments[kVectors];
        Words pairs[kVectors];
        for (size_t i = 0; i < kChunk; ++i) arguments[i / kDoubles][i % kDoubles] = double(x[i]);
        of(arguments, pairs);
        memcpy(floats, pairs, sizeof floats);
    }
};

template <class Rounding>
void sines_and_cosines(const Doubles* x, Words* pairs) {
    Reduced angles[kVectors];
    reduce<Rounding>(x, angles, kVectors);
    for (size_t v = 0; v < kVectors; ++v) {
        const auto [sine, cosine] = sine_cosine<Rounding>(x[v], angles[v]);
        pairs[v] = pairs_of(sine, cosine);
    }
}

void compare_sines() {
    Comparison comparison("sine and cosine", sine_form());
    for_floats([&](const float* x) {
        float library[2 * kChunk];
        for (size_t i = 0; i < kChunk; ++i) {
            library[2 * i] = sinf(x[i]);
            library[2 * i + 1] = cosf(x[i]);
        }
        comparison.add(x, Results(x, sines_and_cosines<Fused>).floats,
                       Results(x, sines_and_cosines<Separate>).floats, library);
    });
}

template <class Rounding>
void exponentials(const Doubles* x, Words* pairs) {
    for (size_t v = 0; v < kVectors; ++v) {
        const Doubles result = exponential<Rounding>(x[v]);
        pairs[v] = pairs_of(result, result);
    }
}

// Others than those between -88 and 88 are the library's.
void compare_exponentials() {
    Comparison comparison("exponential", exponential_form());
    for_floats([&](const float* any_x) {
        float x[kChunk];
        float library[2 * kChunk];
        for (size_t i = 0; i < kChunk; ++i) {
            x[i] = std::fabs(any_x[i]) < 88 ? any_x[i] : 0;
            library[2 * i] = library[2 * i + 1] = expf(x[i]);
        }
        comparison.add(x, Results(x, exponentials<Fused>).floats, Results(x, exponentials<Separate>).floats,
                       library);
    });
}

// The operation as a whole, with the special values that it gives to the library.
void compare_polar(Comparison& comparison, const float* x, const float* y) {
    float pairs[2 * kChunk];
    float library[2 * kChunk];
    for (size_t i = 0; i < kChunk; ++i) {
        pairs[2 * i] = x[i];
        pairs[2 * i + 1] = y[i];
        library[2 * i] = sqrtf(y[i] * y[i] + x[i] * x[i]);
        library[2 * i + 1] = atan2f(y[i], x[i]);
    }
    auto* bytes = reinterpret_cast<uint8_t*>(pairs);
    cartesian_to_polar(bytes, bytes, kChunk);
    comparison.add(y, pairs, pairs, library);
}

void compare_arc_tangents() {
    Comparison comparison("magnitude and arc tangent", arc_tangent_form());
    float x[kChunk];
    float y[kChunk];
    for (float& one : x) one = 1;
    for_floats([&](const float* any_y) { compare_polar(comparison, x, any_y); });
    // Half of the pairs are any floats, special ones among them; half are near each other.
    std::mt19937_64 random;
    for (size_t i = 0; i < (every ? 1'000'000'000 : 1'000'000) / kChunk; ++i) {
        for (size_t k = 0; k < kChunk; ++k) {
            const uint64_t bits = random();
            const auto low = uint32_t(bits);
            const auto high = uint32_t(bits >> 32);
            constexpr uint32_t kNear = 0x83FFFFFF;
            x[k] = std::bit_cast<float>(low);
            y[k] = std::bit_cast<float>(k % 2 ? high : low ^ (high & kNear));
        }
        compare_polar(comparison, x, y);
    }
    // Zeros, the ends of the ranges, the smallest and largest numbers, infinities and what is not a number.
    constexpr float kSpecial[] = {
        0,         1,         1.5F,      2,       0x1p-29F, 0x1p25F,         0x1.cp-2F, 0x1.6p-1F, 0x1.3p0F,
        0x1.38p1F, 0x1p-149F, 0x1p-126F, 0x1p60F, 0x1p-60F, 0x1.fffffep127F, INFINITY,  NAN};
    for (const float a : kSpecial) {
        for (const float b : kSpecial) {
            for (size_t k = 0; k < kChunk; ++k) {
                x[k] = k & 1 ? a : -a;
                y[k] = k & 2 ? b : -b;
            }
            compare_polar(comparison, x, y);
        }
    }
}

// A level that has chosen a form of its own leaves nothing to the library, and another one everything.
template <class Operation>
void count_calls(const char* name, bool library, Operation operation) {
    uint8_t pairs[kChunk * kPairBytes] = {};
    plain::asked = 0;
    operation(pairs);
    if (plain::asked == (library ? 1 : 0)) return;
    std::printf("%s: the plain form is called %zu times\n", name, plain::asked);
    failed = true;
}

void compare_floats() {
    compare_sines();
    compare_exponentials();
    compare_arc_tangents();
    failed |= arc_tangent_form() == Form::kFused;  // there is none
    const bool sines = sine_form() == Form::kLibrary;
    count_calls("polar to Cartesian", sines,
                [](uint8_t* pairs) { polar_to_cartesian(pairs, pairs, kChunk); });
    count_calls("Cartesian to polar", arc_tangent_form() == Form::kLibrary,
                [](uint8_t* pairs) { cartesian_to_polar(pairs, pairs, kChunk); });
    count_calls("sweep", sines || sine_form() != exponential_form(),
                [](uint8_t* pairs) { log_sweep(pairs, kChunk, 1, 8, 480); });
}
