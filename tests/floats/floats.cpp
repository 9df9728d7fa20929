// Compares the float functions of one instruction-set level with the C library's:
//
//   floats_LEVEL          a sample
//   floats_LEVEL every    every float for sine, cosine and exponential; for the arc tangent every float with
//   1,
//                         and a thousand million pairs
//
// Says for each form in how many floats its bits differ from the library's, and fails where those of the form
// that the level has chosen do, or where it has to call a library whose methods it knows. `every` also lists
// the floats for which fused and separate operations differ.
#include LEVEL_SOURCE

#include <gnu/libc-version.h>

#include <bit>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>

namespace kernels::LEVEL {
namespace {

bool every = false;
bool failed = false;

// A result that is not a number is the same as any other.
bool same(float a, float b) {
    return std::bit_cast<uint32_t>(a) == std::bit_cast<uint32_t>(b) || (std::isnan(a) && std::isnan(b));
}

// glibc has had the methods from 2.28 to 2.40. In 32 bits some of its functions are the processor's.
bool library_is_known() { return sizeof(void*) == 8 && std::atof(gnu_get_libc_version()) < 2.405; }

class Comparison {
 public:
    Comparison(const char* function, Form chosen) : function_(function), chosen_(chosen) {}

    void add(uint32_t x, float fused, float separate, float library) {
        ++compared_;
        fused_ += !same(fused, library);
        separate_ += !same(separate, library);
        if (!same(fused, separate) && every)
            std::printf("%s of 0x%08X: fused is not separate\n", function_, x);
    }

    ~Comparison() {
        const uint64_t differ = chosen_ == Form::kFused ? fused_ : chosen_ == Form::kSeparate ? separate_ : 0;
        const char* names[] = {"", "fused", "separate", "the library's"};
        std::printf("%s: of %.0f results %.0f differ if fused, %.0f if separate; chosen: %s; %.0f s\n",
                    function_, double(compared_), double(fused_), double(separate_), names[size_t(chosen_)],
                    std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count());
        failed |= differ != 0 || (chosen_ == Form::kLibrary && library_is_known() && fused_ * separate_ == 0);
    }

 private:
    const char* function_;
    Form chosen_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    uint64_t compared_ = 0;
    uint64_t fused_ = 0;
    uint64_t separate_ = 0;
};

// Calls compare(bits, x) with vectors of floats, of which bits[k] are the bits.
template <class Compare>
void for_floats(Compare compare) {
    const uint64_t step = every ? 1 : 1009;
    for (uint64_t first = 0; first < uint64_t{1} << 32; first += step * kDoubles) {
        uint32_t bits[kDoubles];
        Doubles x;
        for (size_t k = 0; k < kDoubles; ++k) {
            bits[k] = uint32_t(first + k * step);
            x[k] = double(std::bit_cast<float>(bits[k]));
        }
        compare(bits, x);
    }
}

template <class Rounding>
SineCosine sine_cosine(Doubles x) {
    Reduced angle;
    reduce<Rounding>(&x, &angle, 1);
    return sine_cosine<Rounding>(x, angle);
}

void compare_sines() {
    Comparison sines("sine", sine_form());
    Comparison cosines("cosine", sine_form());
    for_floats([&](const uint32_t* bits, Doubles x) {
        const auto fused = sine_cosine<Fused>(x);
        const auto separate = sine_cosine<Separate>(x);
        for (size_t k = 0; k < kDoubles; ++k) {
            sines.add(bits[k], float(fused.sine[k]), float(separate.sine[k]), sinf(float(x[k])));
            cosines.add(bits[k], float(fused.cosine[k]), float(separate.cosine[k]), cosf(float(x[k])));
        }
    });
}

void compare_exponentials() {
    Comparison comparison("exponential", exponential_form());
    for_floats([&](const uint32_t* bits, Doubles x) {
        const Doubles fused = exponential<Fused>(x);
        const Doubles separate = exponential<Separate>(x);
        for (size_t k = 0; k < kDoubles; ++k) {
            if (!(std::fabs(x[k]) < 88)) continue;
            comparison.add(bits[k], float(fused[k]), float(separate[k]), expf(float(x[k])));
        }
    });
}

// Through the operation, which gives special values to the library.
void compare_arc_tangents(Comparison& comparison, const float (&x)[kFloats], const float (&y)[kFloats]) {
    float pairs[2 * kFloats];
    for (size_t k = 0; k < kFloats; ++k) {
        pairs[2 * k] = x[k];
        pairs[2 * k + 1] = y[k];
    }
    auto* bytes = reinterpret_cast<uint8_t*>(pairs);
    cartesian_to_polar(bytes, bytes, kFloats);
    for (size_t k = 0; k < kFloats; ++k) {
        const float angle = pairs[2 * k + 1];
        comparison.add(0, angle, angle, atan2f(y[k], x[k]));
    }
}

void compare_arc_tangents() {
    Comparison comparison("arc tangent", arc_tangent_form());
    float x[kFloats];
    float y[kFloats];
    for (float& one : x) one = 1;
    for_floats([&](const uint32_t* bits, Doubles) {
        for (size_t k = 0; k < kFloats; ++k) y[k] = std::bit_cast<float>(bits[k % kDoubles]);
        compare_arc_tangents(comparison, x, y);
    });
    // Half of the pairs are any floats, special ones among them; half are near each other.
    std::mt19937_64 random;
    for (size_t i = 0; i < (every ? 1'000'000'000 : 1'000'000) / kFloats; ++i) {
        for (size_t k = 0; k < kFloats; ++k) {
            const uint64_t bits = random();
            const auto low = uint32_t(bits);
            const auto high = uint32_t(bits >> 32);
            constexpr uint32_t kNear = 0x83FFFFFF;
            x[k] = std::bit_cast<float>(low);
            y[k] = std::bit_cast<float>(i % 2 ? high : low ^ (high & kNear));
        }
        compare_arc_tangents(comparison, x, y);
    }
    constexpr float kSpecial[] = {
        0,         1,        1.5F,      2,         0x1p-29F,  0x1p25F,         0x1.b8p-2F,
        0x1.6p-1F, 0x1.3p0F, 0x1.38p1F, 0x1p-149F, 0x1p-126F, 0x1.fffffep127F, INFINITY,
        NAN,       0x1p60F,  0x1p-60F};
    for (const float a : kSpecial) {
        for (const float b : kSpecial) {
            for (size_t k = 0; k < kFloats; ++k) {
                x[k] = k & 1 ? a : -a;
                y[k] = k & 2 ? b : -b;
            }
            compare_arc_tangents(comparison, x, y);
        }
    }
}

}  // namespace

bool matches_library(bool all_floats) {
    every = all_floats;
    compare_sines();
    compare_exponentials();
    compare_arc_tangents();
    return !failed;
}

}  // namespace kernels::LEVEL

int main(int arguments, char**) {
#ifdef __AVX512VBMI__
    if (!__builtin_cpu_supports("avx512vbmi") || !__builtin_cpu_supports("gfni")) {
#else
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma")) {
#endif
        std::puts("NOT TESTED: this machine lacks the level's instructions");
        return 77;
    }
    return kernels::LEVEL::matches_library(arguments > 1) ? 0 : 1;
}
