#include "kernels/scale.h"

#include <cmath>
#include <limits>

#include "tests/kernels/level_test.h"

namespace {

LEVEL_TESTS(ScaleKernels, fast_levels());

using Limits = std::numeric_limits<double>;

TEST_P(ScaleKernels, AreExactForEverySampleAndFactor) {
    std::vector<double> factors = {0.0,
                                   -0.0,
                                   Limits::denorm_min(),
                                   Limits::min(),
                                   0.7,
                                   1.0 / 3,
                                   1.005,
                                   1.5,
                                   254,
                                   256,
                                   65534.99,
                                   65536,
                                   1e12,
                                   2147483648.0,
                                   1e19,
                                   Limits::max(),
                                   Limits::infinity(),
                                   -Limits::denorm_min(),
                                   -1.0,
                                   -Limits::infinity(),
                                   Limits::quiet_NaN()};
    for (const double near : {0.5, 1.0, 2.0, 255.0, 65535.0}) {
        for (const double towards : {0.0, near, Limits::infinity()})
            factors.push_back(std::nextafter(near, towards));
    }
    Random random;
    // Factors at and beside fractions, whose products come close to whole numbers: there rounding decides.
    for (size_t i = 0; i < rounds(200); ++i) {
        const int q = between(random, 1, 256);
        const double fraction = between(random, 1, i % 2 ? q : 70000) / double(q);
        for (const double towards : {0.0, fraction, Limits::infinity()}) {
            factors.push_back(std::nextafter(fraction, towards));
        }
    }
    for (size_t i = 0; i < rounds(100); ++i) {
        factors.push_back(
            std::ldexp(std::uniform_real_distribution(0.5, 1.0)(random), between(random, -9, 9)));
    }

    std::vector<uint8_t> all;
    for (unsigned sample = 0; sample < 65536; ++sample)
        all.insert(all.end(), {uint8_t(sample), uint8_t(sample >> 8)});
    for (const double factor : factors) {
        // All samples, and runs of any length.
        for (size_t n : {size_t(65536), between<size_t>(random, 0, 100), between<size_t>(random, 0, 20)}) {
            for (const size_t bytes : {1U, 2U}) {
                GuardedBytes memory({all.data(), all.data() + n * bytes}, GuardedBytes::kBothSides[n % 2]);
                std::vector<uint8_t> expected = memory.copy();
                (bytes == 1 ? plain().scale_uint8 : plain().scale_uint16)(expected.data(), n, factor);
                (bytes == 1 ? fast().scale_uint8 : fast().scale_uint16)(memory.data(), n, factor);
                ASSERT_TRUE(same_bytes(memory.bytes(), expected))
                    << n << " of " << bytes << " bytes, factor " << factor;
                ASSERT_TRUE(memory.untouched_around());
            }
        }
    }
}

}  // namespace
