// Arrays of pairs of floats. The rule is a loop over the C library, and the peer to beat.
#include <cstring>
#include <random>

#include "benchmarks/peers/peers.h"
#include "benchmarks/rows/goals.h"

namespace bench {
namespace {

using Convert = void(uint8_t*, const uint8_t*, size_t);
using Member = void(REALmemoryBlock, int32_t, int32_t, REALmemoryBlock);

// Pairs of numbers from `low` to `high`.
uint8_t* floats(const Case& c, float low, float high) {
    std::mt19937 numbers(1);
    std::uniform_real_distribution<float> between(low, high);
    uint8_t* const data = c.region(0);
    for (size_t i = 0; i < c.size; i += sizeof(float)) {
        const float number = between(numbers);
        std::memcpy(data + i, &number, sizeof number);
    }
    return data;
}

void convert(Case& c, const char* name, Convert* kernels::Kernels::*kernel, peers::Pairs* sleef, float low,
             float high) {
    const size_t n = c.size;
    const size_t pairs = n / 8;
    uint8_t* const from = floats(c, low, high);
    uint8_t* const to = c.region(1);
    const REALmemoryBlock block = c.block(to);
    const REALmemoryBlock source = c.block(from);
    c.rule({to, n}, [=] { (rules().*kernel)(to, from, pairs); });
    c.member<Member>(name, [=](auto* member) { member(block, 0, int32_t(pairs), source); });
    c.kernel([=](const kernels::Kernels& k) { (k.*kernel)(to, from, pairs); });
    c.peer("loop over libm", [=] { (rules().*kernel)(to, from, pairs); });
    if (pairs >= 8)
        c.peer(
            "SLEEF u35", sleef, [=](auto* f) { f(to, from, pairs); }, false);
    c.limit([=](const Limit& limit) { limit.transfer(to, n, from, n); });
}

void sweep(Case& c) {
    const size_t n = c.size;
    const auto pairs = int32_t(n / 8);
    uint8_t* const to = c.region(0);
    const REALmemoryBlock block = c.block(to);
    c.rule({to, n}, [=] { rules().log_sweep(to, n / 8, 20, 20000, pairs); });
    c.member<void(REALmemoryBlock, int32_t, int32_t, int32_t, int32_t, double)>(
        "_CalcLogSweepTableZOR", [=](auto* member) { member(block, 0, pairs, 20, 20000, pairs); });
    c.kernel([=](const kernels::Kernels& k) { k.log_sweep(to, n / 8, 20, 20000, pairs); });
    c.peer("loop over libm", [=] { rules().log_sweep(to, n / 8, 20, 20000, pairs); });
    c.limit([=](const Limit& limit) { limit.write(to, n); });
}

}  // namespace

void add_float_rows(Rows& rows) {
    const bool wide = limits()[0].name == kLimits[2];
    const Goal of_libm = at_least(wide ? 6 : 3, {"loop over libm"});
    const auto add = [&](const char* member, const char* variant, std::function<void(Case&)> prepare) {
        rows.push_back({"floats", member, variant, std::move(prepare), {of_libm}, false, variant[0] == '\0'});
    };
    constexpr auto kTo = &kernels::Kernels::polar_to_cartesian;
    constexpr auto kFrom = &kernels::Kernels::cartesian_to_polar;
    constexpr const char* kToName = "_ConvertPolarToCartesian";
    add(kToName, "",
        [=](Case& c) { convert(c, kToName, kTo, peers::sleef_polar_to_cartesian, -3.2F, 3.2F); });
    add(kToName, "angles to 1000000", [=](Case& c) { convert(c, kToName, kTo, nullptr, -1e6F, 1e6F); });
    add("_ConvertCartesianToPolar", "", [=](Case& c) {
        convert(c, "_ConvertCartesianToPolar", kFrom, peers::sleef_cartesian_to_polar, -100, 100);
    });
    add("_CalcLogSweepTableZOR", "", sweep);
}

}  // namespace bench
