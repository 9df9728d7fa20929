#include "kernels/scale.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>

#include "tests/support/guarded.h"

namespace {

using Limits = std::numeric_limits<double>;

constexpr double kSpecialFactors[] = {
    0.0,
    -0.0,
    Limits::denorm_min(),
    Limits::min(),
    1e-5,
    0.5,
    0.7,
    1.0 / 3,
    1.0,
    1.1,
    1.5,
    2.0,
    254,
    255,
    256,
    65534.99,
    65535,
    65536,
    1e12,
    2147483648.0,
    1e19,
    Limits::max(),
    Limits::infinity(),
};

// All samples, and the kernels under test by their size.
struct Samples {
    size_t bytes;
    decltype(kernels::scale_uint8)* fast;
    decltype(kernels::scale_uint8)* plain;
};
constexpr Samples kSamples[] = {
    {1, kernels::scale_uint8, kernels::plain::scale_uint8},
    {2, kernels::scale_uint16, kernels::plain::scale_uint16},
};

std::vector<uint8_t> all_samples(size_t bytes) {
    std::vector<uint8_t> samples;
    for (unsigned sample = 0; sample < 1U << 8 * bytes; ++sample) {
        for (size_t i = 0; i < bytes; ++i) samples.push_back(uint8_t(sample >> 8 * i));
    }
    return samples;
}

TEST(ScaleKernels, AreExactForEverySample) {
    Random random;
    std::vector<double> factors(std::begin(kSpecialFactors), std::end(kSpecialFactors));
    for (const double one : {0.5, 1.0, 255.0, 65535.0}) {
        factors.push_back(std::nextafter(one, 0));
        factors.push_back(std::nextafter(one, Limits::infinity()));
    }
    // Factors whose products come close to whole numbers, and any.
    for (int i = 0; i < 100; ++i)
        factors.push_back(between(random, 1, 70000) / std::uniform_real_distribution(1.0, 300.0)(random));
    for (int i = 0; i < 100; ++i)
        factors.push_back(between(random, 1, 300) / double(between(random, 1, 300)));
    for (const Samples& kernel : kSamples) {
        const std::vector<uint8_t> all = all_samples(kernel.bytes);
        for (const double factor : factors) {
            std::vector<uint8_t> expected = all;
            std::vector<uint8_t> scaled = all;
            kernel.plain(expected.data(), all.size() / kernel.bytes, factor);
            kernel.fast(scaled.data(), all.size() / kernel.bytes, factor);
            ASSERT_TRUE(same_bytes(scaled, expected)) << kernel.bytes << " bytes, factor " << factor;
        }
    }
}

TEST(ScaleKernels, TruncateAndSaturate) {
    const auto scaled = [](uint16_t sample, double factor) {
        uint8_t bytes[2];
        std::memcpy(bytes, &sample, 2);
        kernels::scale_uint16(bytes, 1, factor);
        std::memcpy(&sample, bytes, 2);
        return sample;
    };
    EXPECT_EQ(scaled(65535, 0.5), 32767);
    EXPECT_EQ(scaled(513, 2), 1026);
    EXPECT_EQ(scaled(40000, 2), 65535);
    EXPECT_EQ(scaled(3, 0.7), 2);   // the product is rounded to a little less than 2.1
    EXPECT_EQ(scaled(10, 0.7), 7);  // and this one to 7
    EXPECT_EQ(scaled(1, 65534.99), 65534);
    EXPECT_EQ(scaled(1, Limits::infinity()), 65535);
    EXPECT_EQ(scaled(0, Limits::infinity()), 0);
}

TEST(ScaleKernels, LeaveSamplesForOtherFactors) {
    for (const Samples& kernel : kSamples) {
        for (const double factor : {-Limits::denorm_min(), -1.0, -Limits::infinity(), Limits::quiet_NaN()}) {
            std::vector<uint8_t> samples = hex("00 01 7f 80 ff fe");
            kernel.fast(samples.data(), samples.size() / kernel.bytes, factor);
            EXPECT_TRUE(same_bytes(samples, hex("00 01 7f 80 ff fe"))) << factor;
        }
    }
}

TEST(ScaleKernels, StayInsideTheSamples) {
    Random random;
    for (int round = 0; round < 2000; ++round) {
        const Samples& kernel = kSamples[round % 2];
        const auto n = between<size_t>(random, 0, 100);
        const double factor = std::uniform_real_distribution(0.0, 2.0)(random);
        GuardedBytes memory(n * kernel.bytes, GuardedBytes::kBothSides[random() % 2], random);
        std::vector<uint8_t> expected = memory.copy();
        kernel.plain(expected.data(), n, factor);
        kernel.fast(memory.data(), n, factor);
        ASSERT_TRUE(same_bytes(memory.bytes(), expected)) << n << " samples, factor " << factor;
        ASSERT_TRUE(memory.untouched_around());
    }
}

}  // namespace
