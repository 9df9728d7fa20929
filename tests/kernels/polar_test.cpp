// The promise is a sequence of single operations; so the expectations are computed one operation at a time,
// each result stored before the next one is begun, and each function of the library called through a pointer.
#include "kernels/polar.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "tests/kernels/level_test.h"

namespace {

LEVEL_TESTS(PolarKernels, kernels::levels());

struct Pair {
    float first;
    float second;
};

// A result that has gone through memory, in its own format.
template <class Number>
Number stored(Number number) {
    volatile Number memory = number;
    return memory;
}

// Calls a function of the library where the compiler cannot tell which one it is.
template <class Function, class... Arguments>
auto call(Function* function, Arguments... arguments) {
    return stored(stored(function)(arguments...));
}

Pair cartesian(Pair polar) {
    const float cosine = call(cosf, polar.second);
    const float sine = call(sinf, polar.second);
    return {stored(cosine * polar.first), stored(polar.first * sine)};
}

Pair polar(Pair cartesian) {
    const auto [x, y] = cartesian;
    const float squares = stored(stored(y * y) + stored(x * x));
    return {call(sqrtf, squares), call(atan2f, y, x)};
}

// What a fused multiply-add would make of the magnitude, in either order of the squares.
float fused_magnitude(Pair cartesian) {
    const auto [x, y] = cartesian;
    const float first = call(sqrtf, std::fma(y, y, stored(x * x)));
    return first == polar(cartesian).first ? call(sqrtf, std::fma(x, x, stored(y * y))) : first;
}

std::vector<float> sweep(size_t pairs, int32_t first, int32_t last, double duration) {
    constexpr double kTurn = 6.28318530718;
    const double ratio = stored(call(log, stored(double(last) / double(first))));
    const double scale = stored(stored(double(first) * kTurn) / ratio);
    std::vector<float> table;
    for (double i = 0.0; table.size() < 2 * pairs; i += 1.0) {
        const double position = stored(i / duration);
        const float growth = stored(call(expf, float(stored(ratio * position))));
        const auto phase = float(stored(double(stored(growth + -1.0F)) * scale));
        table.push_back(stored(call(sinf, phase) * 0.944F));
        table.push_back(float(stored(position * 100.53096491488)));
    }
    return table;
}

// Which of several NaNs an operation gives is nobody's promise.
testing::AssertionResult same_floats(const uint8_t* bytes, const std::vector<float>& expected) {
    for (size_t i = 0; i < expected.size(); ++i) {
        float actual;
        std::memcpy(&actual, bytes + i * sizeof actual, sizeof actual);
        if (std::isnan(actual) && std::isnan(expected[i])) continue;
        if (std::memcmp(&actual, &expected[i], sizeof actual) == 0) continue;
        return testing::AssertionFailure()
               << std::hexfloat << "float " << i << " is " << actual << " instead of " << expected[i];
    }
    return testing::AssertionSuccess();
}

float any_float(Random& random) {
    using Limits = std::numeric_limits<float>;
    // Of the last two the sine, or the cosine, differs by whether operations are fused.
    constexpr float kSpecial[] = {0.0F,
                                  -0.0F,
                                  Limits::denorm_min(),
                                  Limits::infinity(),
                                  -Limits::infinity(),
                                  Limits::min(),
                                  Limits::max(),
                                  Limits::quiet_NaN(),
                                  std::bit_cast<float>(0x418A3ADB),
                                  std::bit_cast<float>(0x42A35C07)};
    if (random() % 8 == 0) return kSpecial[random() % std::size(kSpecial)];
    if (random() % 2 == 0) return std::uniform_real_distribution(-10.0F, 10.0F)(random);
    return std::ldexp(std::uniform_real_distribution(-1.0F, 1.0F)(random), between(random, -160, 128));
}

TEST_P(PolarKernels, AreTheLibrarysFunctionsBitForBit) {
    Random random;
    size_t fused_differs = 0;
    for (size_t round = 0; round < rounds(800); ++round) {
        const bool to_polar = round % 2;
        // Any overlap: a pair that was stored may be read again as a later one.
        const auto pairs = between<size_t>(random, 1, 300);
        const size_t from = random() % 2 ? 0 : between<size_t>(random, 0, 300);
        const size_t to = random() % 2 ? 0 : between<size_t>(random, 0, 300);
        std::vector<float> expected(std::max(from, to) + 2 * pairs);
        for (float& number : expected) number = any_float(random);
        GuardedBytes memory(expected.size() * sizeof(float), GuardedBytes::kBothSides[random() % 2]);
        std::memcpy(memory.data(), expected.data(), memory.size());
        for (size_t i = 0; i < pairs; ++i) {
            const Pair before = {expected[from + 2 * i], expected[from + 2 * i + 1]};
            const Pair after = to_polar ? polar(before) : cartesian(before);
            expected[to + 2 * i] = after.first;
            expected[to + 2 * i + 1] = after.second;
            fused_differs += to_polar && std::isfinite(after.first) && after.first != fused_magnitude(before);
        }
        (to_polar ? fast().cartesian_to_polar : fast().polar_to_cartesian)(memory.data() + 4 * to,
                                                                           memory.data() + 4 * from, pairs);
        ASSERT_TRUE(same_floats(memory.data(), expected))
            << (to_polar ? "to polar, " : "to Cartesian, ") << from << " to " << to;
    }
    EXPECT_GT(fused_differs, rounds(100)) << "the numbers tell nothing about fused operations";
}

TEST_P(PolarKernels, SweepIsTheFormulaBitForBit) {
    struct Sweep {
        int32_t first, last;
        double duration;
    };
    // In the first two, two pi of more decimals would show, in a position and in a phase; in the third,
    // whether the exponential of its second pair is of fused operations.
    const Sweep kSweeps[] = {{1, 8, 591.375},
                             {3, 54, 480},
                             {21, 168, std::log(8.0) / double(std::bit_cast<float>(0x4202422F))},
                             {1, 8, 64},
                             {20, 20000, 480},
                             {8, 1, 100.5},
                             {-20, -2000, 300},
                             {5, 5, 10},
                             {0, 8, 10},
                             {8, 0, 10},
                             {-1, 8, 10},
                             {1, 8, 0},
                             {1, 8, -10},
                             {1, INT32_MAX, 3},
                             {INT32_MIN, -1, 1e-300},
                             {1, 8, std::numeric_limits<double>::quiet_NaN()}};
    for (const Sweep& s : kSweeps) {
        for (const size_t pairs : {1U, 500U}) {
            const std::vector<float> expected = sweep(pairs, s.first, s.last, s.duration);
            GuardedBytes table(8 * pairs + 1);
            fast().log_sweep(table.data() + 1, pairs, s.first, s.last, s.duration);
            EXPECT_TRUE(same_floats(table.data() + 1, expected))
                << s.first << " to " << s.last << " in " << s.duration;
        }
    }
}

// The identities behind the bits: the sweep has its formula's phase, and a conversion there and back comes
// back.
TEST_P(PolarKernels, ComputeWhatTheyAreFor) {
    Pair table[65];
    auto* bytes = reinterpret_cast<uint8_t*>(table);
    fast().log_sweep(bytes, 65, 1, 8, 64);
    for (size_t i = 0; i < 65; ++i) {
        const double turns = (std::exp2(3 * double(i) / 64) - 1) / std::log(8.0);
        EXPECT_NEAR(table[i].first, 0.944 * std::sin(2 * M_PI * turns), 2e-5) << i;
        EXPECT_NEAR(table[i].second, 32 * M_PI * double(i) / 64, 1e-5) << i;
        table[i] = {1.0F + float(i), (float(i) - 32) / 10.3F};
    }
    fast().polar_to_cartesian(bytes, bytes, 65);
    fast().cartesian_to_polar(bytes, bytes, 65);
    for (size_t i = 0; i < 65; ++i) {
        EXPECT_NEAR(table[i].first, 1.0 + double(i), 2e-5);
        EXPECT_NEAR(table[i].second, (double(i) - 32) / 10.3, 1e-6);
    }
}

}  // namespace
