// What the table of a level does not show: its float functions and the parts of its search.
//
//   forms_LEVEL          a sample of the floats
//   forms_LEVEL every    every float for sine, cosine and exponential; for the arc tangent
//                        every float with 1, and a thousand million pairs
#include LEVEL_SOURCE

#ifndef _WIN32
#include <gnu/libc-version.h>
#endif

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>

// Stands in for the plain level, which calls the library for each number.
namespace kernels::plain {
static size_t asked = 0;
constinit const Kernels kKernels = [] {
    Kernels counting = {};
    counting.log_sweep = [](uint8_t*, size_t, int32_t, int32_t, double) { ++asked; };
    counting.polar_to_cartesian = [](uint8_t*, const uint8_t*, size_t) { ++asked; };
    counting.cartesian_to_polar = [](uint8_t*, const uint8_t*, size_t) { ++asked; };
    return counting;
}();
}  // namespace kernels::plain

namespace kernels::LEVEL {
namespace {

bool every = false;
bool failed = false;

#include "tests/forms/floats.h"
#include "tests/forms/search.h"

}  // namespace

bool all_hold(bool all_floats) {
    every = all_floats;
    compare_search();
    compare_floats();
    return !failed;
}

}  // namespace kernels::LEVEL

int main(int arguments, char**) {
#ifdef __AVX512VBMI__
    const bool runs = __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("gfni");
#elif defined(__FMA__)
    const bool runs = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
#elif defined(__SSE4_2__)
    const bool runs = __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("popcnt");
#else
    const bool runs = true;
#endif
    if (!runs) {
        std::puts("NOT TESTED: this machine lacks the level's instructions");
        return 77;
    }
    return kernels::LEVEL::all_hold(arguments > 1) ? 0 : 1;
}
