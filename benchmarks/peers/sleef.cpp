// SLEEF's functions of eight floats, on pairs.
#include "benchmarks/peers/peers.h"

#ifdef HAVE_SLEEF
#include <immintrin.h>
#include <sleef.h>

namespace bench::peers {
namespace {

struct Eight {
    __m256 first;
    __m256 second;
};

// The first and the second numbers of eight pairs, both in the order 0 1 4 5 2 3 6 7.
Eight load(const uint8_t* pairs) {
    const __m256 low = _mm256_loadu_ps(reinterpret_cast<const float*>(pairs));
    const __m256 high = _mm256_loadu_ps(reinterpret_cast<const float*>(pairs + 32));
    return {_mm256_shuffle_ps(low, high, 0x88), _mm256_shuffle_ps(low, high, 0xDD)};
}

void store(uint8_t* pairs, Eight eight) {
    _mm256_storeu_ps(reinterpret_cast<float*>(pairs), _mm256_unpacklo_ps(eight.first, eight.second));
    _mm256_storeu_ps(reinterpret_cast<float*>(pairs + 32), _mm256_unpackhi_ps(eight.first, eight.second));
}

template <class Convert>
void each(uint8_t* destination, const uint8_t* source, size_t pairs, Convert convert) {
    for (size_t i = 0; i + 8 <= pairs; i += 8) store(destination + 8 * i, convert(load(source + 8 * i)));
}

Eight to_cartesian(Eight polar) {
    const Sleef___m256_2 sine_cosine = Sleef_sincosf8_u35avx2(polar.second);
    return {_mm256_mul_ps(sine_cosine.y, polar.first), _mm256_mul_ps(polar.first, sine_cosine.x)};
}

Eight to_polar(Eight point) {
    const __m256 squares =
        _mm256_add_ps(_mm256_mul_ps(point.second, point.second), _mm256_mul_ps(point.first, point.first));
    return {_mm256_sqrt_ps(squares), Sleef_atan2f8_u35avx2(point.second, point.first)};
}

bool runs_here() { return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0; }

void polar_to_cartesian(uint8_t* destination, const uint8_t* source, size_t pairs) {
    each(destination, source, pairs, to_cartesian);
}

void cartesian_to_polar(uint8_t* destination, const uint8_t* source, size_t pairs) {
    each(destination, source, pairs, to_polar);
}

}  // namespace

Pairs* const sleef_polar_to_cartesian = runs_here() ? polar_to_cartesian : nullptr;
Pairs* const sleef_cartesian_to_polar = runs_here() ? cartesian_to_polar : nullptr;

}  // namespace bench::peers

#else

namespace bench::peers {

Pairs* const sleef_polar_to_cartesian = nullptr;
Pairs* const sleef_cartesian_to_polar = nullptr;

}  // namespace bench::peers

#endif
