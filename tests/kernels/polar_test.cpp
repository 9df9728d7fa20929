// The promise is a sequence of single operations; so the expectations are computed one operation at a time,
// each result stored before the next one is begun, and each function of the library called through a pointer.
#include "kernels/polar.h"

#include <cmath>
#include <cstring>
#include <limits>

#include "tests/support/guarded.h"

namespace {

struct Pair {
    float first;
    float second;
};

using Function = float (*)(float);
Function volatile call_sinf = sinf;
Function volatile call_cosf = cosf;
Function volatile call_expf = expf;
Function volatile call_sqrtf = sqrtf;
float (*volatile call_atan2f)(float, float) = atan2f;
double (*volatile call_log)(double) = log;

// A result that has gone through memory, in its own format.
template <class Number>
Number stored(Number number) {
    volatile Number memory = number;
    return memory;
}

Pair cartesian(Pair polar) {
    const float cosine = stored(call_cosf(polar.second));
    const float sine = stored(call_sinf(polar.second));
    return {stored(cosine * polar.first), stored(polar.first * sine)};
}

Pair polar(Pair cartesian) {
    const auto [x, y] = cartesian;
    const float squares = stored(stored(y * y) + stored(x * x));
    return {stored(call_sqrtf(squares)), stored(call_atan2f(y, x))};
}

std::vector<Pair> sweep(size_t pairs, int32_t first, int32_t last, double duration) {
    constexpr double kTurn = 6.28318530718;
    const double ratio = stored(call_log(stored(double(last) / double(first))));
    const double scale = stored(stored(double(first) * kTurn) / ratio);
    std::vector<Pair> table;
    for (double i = 0.0; table.size() < pairs; i += 1.0) {
        const double position = stored(i / duration);
        const float growth = stored(call_expf(float(stored(ratio * position))));
        const float less_one = stored(growth + -1.0F);
        const auto phase = float(stored(double(less_one) * scale));
        table.push_back(
            {stored(stored(call_sinf(phase)) * 0.944F), float(stored(position * 100.53096491488))});
    }
    return table;
}

// Which of several NaNs an operation gives is nobody's promise.
bool same_float(float a, float b) {
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

testing::AssertionResult same_pairs(const uint8_t* bytes, const std::vector<Pair>& expected) {
    for (size_t i = 0; i < expected.size(); ++i) {
        Pair actual;
        std::memcpy(&actual, bytes + i * sizeof actual, sizeof actual);
        if (same_float(actual.first, expected[i].first) && same_float(actual.second, expected[i].second))
            continue;
        return testing::AssertionFailure()
               << std::hexfloat << "pair " << i << " is " << actual.first << ", " << actual.second
               << " instead of " << expected[i].first << ", " << expected[i].second;
    }
    return testing::AssertionSuccess();
}

float any_float(Random& random) {
    using Limits = std::numeric_limits<float>;
    constexpr float kSpecial[] = {0.0F,
                                  -0.0F,
                                  1.0F,
                                  -1.0F,
                                  Limits::min(),
                                  Limits::max(),
                                  Limits::denorm_min(),
                                  -Limits::denorm_min(),
                                  Limits::infinity(),
                                  -Limits::infinity(),
                                  Limits::quiet_NaN(),
                                  1e20F};
    if (random() % 4 == 0) return kSpecial[random() % std::size(kSpecial)];
    if (random() % 2 == 0) return std::uniform_real_distribution(-10.0F, 10.0F)(random);
    const auto bits = uint32_t(random() << 16 ^ random());
    float number;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

struct Conversion {
    const char* name;
    decltype(kernels::polar_to_cartesian)* kernel;
    decltype(kernels::polar_to_cartesian)* plain;
    Pair (*rule)(Pair);
};
constexpr Conversion kConversions[] = {
    {"to Cartesian", kernels::polar_to_cartesian, kernels::plain::polar_to_cartesian, cartesian},
    {"to polar", kernels::cartesian_to_polar, kernels::plain::cartesian_to_polar, polar},
};

TEST(PolarKernels, AreTheLibrarysFunctionsBitForBit) {
    Random random;
    for (int round = 0; round < 1000; ++round) {
        const Conversion& conversion = kConversions[round % 2];
        SCOPED_TRACE(conversion.name);
        const auto n = between<size_t>(random, 0, 200);
        const auto side = GuardedBytes::kBothSides[random() % 2];
        GuardedBytes source(n * sizeof(Pair), side);
        GuardedBytes destination(n * sizeof(Pair), side, random);
        std::vector<Pair> expected;
        for (size_t i = 0; i < n; ++i) {
            const Pair pair = {any_float(random), any_float(random)};
            std::memcpy(source.data() + i * sizeof pair, &pair, sizeof pair);
            expected.push_back(conversion.rule(pair));
        }
        conversion.kernel(destination.data(), source.data(), n);
        ASSERT_TRUE(same_pairs(destination.data(), expected));
        ASSERT_TRUE(destination.untouched_around());
        conversion.plain(destination.data(), source.data(), n);
        ASSERT_TRUE(same_pairs(destination.data(), expected));
        conversion.kernel(source.data(), source.data(), n);
        ASSERT_TRUE(same_pairs(source.data(), expected)) << "in place";
    }
}

TEST(PolarKernels, RoundEachSquareByItself) {
    Random random;
    int fused_differs = 0;
    for (int i = 0; i < 2000; ++i) {
        const Pair pair = {std::uniform_real_distribution(0.1F, 10.0F)(random),
                           std::uniform_real_distribution(0.1F, 10.0F)(random)};
        const float fused = call_sqrtf(std::fma(pair.second, pair.second, stored(pair.first * pair.first)));
        const float other = call_sqrtf(std::fma(pair.first, pair.first, stored(pair.second * pair.second)));
        const float expected = polar(pair).first;
        fused_differs += fused != expected && other != expected;
        uint8_t converted[sizeof pair];
        kernels::cartesian_to_polar(converted, reinterpret_cast<const uint8_t*>(&pair), 1);
        float magnitude;
        std::memcpy(&magnitude, converted, sizeof magnitude);
        ASSERT_EQ(magnitude, expected) << pair.first << ", " << pair.second;
    }
    EXPECT_GT(fused_differs, 10) << "the pairs tell nothing about fused operations";
}

// What is converted there and back comes back, up to the rounding of a few single-precision operations.
TEST(PolarKernels, ConvertThereAndBack) {
    Random random;
    for (int i = 0; i < 2000; ++i) {
        const Pair before = {std::uniform_real_distribution(0.01F, 100.0F)(random),
                             std::uniform_real_distribution(-3.1F, 3.1F)(random)};
        uint8_t bytes[sizeof before];
        std::memcpy(bytes, &before, sizeof before);
        kernels::polar_to_cartesian(bytes, bytes, 1);
        kernels::cartesian_to_polar(bytes, bytes, 1);
        Pair after;
        std::memcpy(&after, bytes, sizeof after);
        EXPECT_NEAR(after.first, before.first, 4e-7F * before.first);
        EXPECT_NEAR(after.second, before.second, 1e-6F);
    }
}

// The destination may overlap the source: then pairs that are stored are read again as later ones.
TEST(PolarKernels, ConvertPairAfterPair) {
    Random random;
    for (int round = 0; round < 400; ++round) {
        const Conversion& conversion = kConversions[round % 2];
        std::vector<float> numbers(52);
        for (float& number : numbers) number = std::uniform_real_distribution(-10.0F, 10.0F)(random);
        GuardedBytes memory(numbers.size() * sizeof(float));
        std::memcpy(memory.data(), numbers.data(), memory.size());
        const auto from = between<size_t>(random, 0, 12);
        const auto to = between<size_t>(random, 0, 12);
        for (size_t i = 0; i < 20; ++i) {
            const Pair pair = conversion.rule({numbers[from + 2 * i], numbers[from + 2 * i + 1]});
            numbers[to + 2 * i] = pair.first;
            numbers[to + 2 * i + 1] = pair.second;
        }
        std::vector<uint8_t> expected(memory.size());
        std::memcpy(expected.data(), numbers.data(), memory.size());
        conversion.kernel(memory.data() + 4 * to, memory.data() + 4 * from, 20);
        ASSERT_TRUE(same_bytes(memory.bytes(), expected)) << conversion.name << ", " << from << " to " << to;
    }
}

TEST(PolarKernels, SweepIsTheFormulaBitForBit) {
    struct Case {
        size_t pairs;
        int32_t first, last;
        double duration;
    };
    constexpr Case kCases[] = {
        {64, 1, 8, 64},
        {1000, 20, 20000, 48000},
        {500, 8, 1, 100.5},
        {300, -20, -2000, 300},
        {10, 5, 5, 10},
        {10, 0, 8, 10},
        {10, 8, 0, 10},
        {10, -1, 8, 10},
        {10, 1, 8, 0},
        {10, 1, 8, -10},
        {40, 1, INT32_MAX, 3},
        {10, INT32_MIN, -1, 1e-300},
        {10, 1, 8, std::numeric_limits<double>::infinity()},
        {10, 1, 8, std::numeric_limits<double>::quiet_NaN()},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(testing::Message() << c.first << " to " << c.last << " in " << c.duration);
        const std::vector<Pair> expected = sweep(c.pairs, c.first, c.last, c.duration);
        GuardedBytes table(8 * c.pairs + 1);
        kernels::log_sweep(table.data() + 1, c.pairs, c.first, c.last, c.duration);
        EXPECT_TRUE(same_pairs(table.data() + 1, expected));
        GuardedBytes plain(8 * c.pairs);
        kernels::plain::log_sweep(plain.data(), c.pairs, c.first, c.last, c.duration);
        EXPECT_TRUE(same_pairs(plain.data(), expected));
    }
}

// The formula itself, with the full precision of the double functions: a sine of 1 to 8 cycles.
TEST(PolarKernels, SweepsFromTheFirstFrequencyToTheLast) {
    constexpr size_t kPairs = 65;
    Pair table[kPairs];
    kernels::log_sweep(reinterpret_cast<uint8_t*>(table), kPairs, 1, 8, 64);
    const double ratio = std::log(8.0);
    for (size_t i = 0; i < kPairs; ++i) {
        const double position = double(i) / 64;
        const double turns = (std::exp(ratio * position) - 1) / ratio;
        EXPECT_NEAR(table[i].first, 0.944 * std::sin(2 * M_PI * turns), 2e-5) << i;
        EXPECT_NEAR(table[i].second, 32 * M_PI * position, 1e-5) << i;
    }
    EXPECT_EQ(table[0].first, 0.0F);
}

}  // namespace
