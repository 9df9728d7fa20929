// Compares the versions of the C library's functions to which the bundle is bound with today's, bit by bit:
//
//   floats_first_versions        a sample of the floats, and 4 million doubles
//   floats_first_versions every  every float, and 400 million doubles
//
// The bundle's functions, under names of their own.
#define log bound_log
#define expf bound_expf
#include "kernels/linux/system_math.cpp"
#undef log
#undef expf

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>

namespace {

uint64_t compared = 0;
uint64_t differ = 0;

template <class Bits, class Number>
void compare(const char* function, Number x, Number bound, Number today) {
    ++compared;
    if (std::bit_cast<Bits>(bound) == std::bit_cast<Bits>(today) || (std::isnan(bound) && std::isnan(today)))
        return;
    if (++differ <= 10)
        std::printf("%s of %a: %a, today's gives %a\n", function, double(x), double(bound), double(today));
}

void compare_log(double x) { compare<uint64_t>("log", x, bound_log(x), std::log(x)); }

}  // namespace

int main(int arguments, char**) {
    const bool every = arguments > 1;
    const uint64_t step = every ? 1 : 509;
    for (uint64_t bits = 0; bits < uint64_t{1} << 32; bits += step) {
        const auto x = std::bit_cast<float>(uint32_t(bits));
        compare<uint32_t>("expf", x, bound_expf(x), std::exp(x));
    }
    // Any doubles; quotients of frequencies, which is what the members ask for; and the ends.
    std::mt19937_64 random;
    for (uint64_t i = 0; i < (every ? 200'000'000 : 2'000'000); ++i) {
        const uint64_t bits = random();
        compare_log(std::bit_cast<double>(bits));
        compare_log(double(int32_t(bits)) / double(int32_t(bits >> 32)));
    }
    for (const double x : {0.0, 1.0, 0x1p-1074, 0x1p-1022, 0x1.fffffffffffffp1023, HUGE_VAL, std::nan("")}) {
        compare_log(x);
        compare_log(-x);
    }
    std::printf("%.0f results compared, %.0f differ\n", double(compared), double(differ));
    return differ == 0 ? 0 : 1;
}
