#include "benchmarks/measure.h"

#include <algorithm>
#include <ctime>

namespace bench {
namespace {

constexpr int kLeastRounds = 3;

// The processor's time that this thread had: on a machine with other work to do, its turns do not count.
double now() {
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) + 1e-9 * double(time.tv_nsec);
}

double seconds(const Contender& contender, size_t times) {
    const double start = now();
    contender.repeat(times);
    return now() - start;
}

// How many calls fill a sample. The first ones also bring the bytes into the caches.
size_t calls_in(const Contender& contender, double sample) {
    size_t times = 1;
    double taken = seconds(contender, times);
    while ((taken = seconds(contender, times)) < sample) {
        times = std::max(2 * times, std::min(100 * times, size_t(double(times) * sample / taken)));
    }
    return times;
}

double quantile(std::vector<double> values, double part) {
    const auto at = values.begin() + ptrdiff_t(part * double(values.size() - 1) + 0.5);
    std::ranges::nth_element(values, at);
    return *at;
}

}  // namespace

std::vector<Wrong> check(Case& measured) {
    const std::vector<uint8_t> before(measured.stored.begin(), measured.stored.end());
    const int64_t result = measured.plain();
    const std::vector<uint8_t> expected(measured.stored.begin(), measured.stored.end());
    std::vector<Wrong> wrong;
    for (const Contender& contender : measured.contenders) {
        if (!contender.same_result) continue;
        std::ranges::copy(before, measured.stored.begin());
        const int64_t found = contender.call();
        const auto differs = std::ranges::mismatch(measured.stored, expected).in2;
        if (found != result) {
            wrong.push_back(
                {contender.name, std::to_string(found) + " instead of " + std::to_string(result)});
        } else if (differs != expected.end()) {
            const auto at = std::to_string(differs - expected.begin());
            wrong.push_back({contender.name, "another byte at " + at});
        }
    }
    std::ranges::copy(before, measured.stored.begin());
    return wrong;
}

std::vector<Time> measure(Case& measured, const Effort& effort) {
    const auto& contenders = measured.contenders;
    std::vector<size_t> calls;
    for (const Contender& contender : contenders) calls.push_back(calls_in(contender, effort.sample));

    std::vector<std::vector<double>> samples(contenders.size());
    std::vector<std::vector<double>> ratios(contenders.size());
    double spent = 0;
    for (int round = 0; round < effort.rounds && (round < kLeastRounds || spent < effort.most); ++round) {
        for (size_t i = 0; i < contenders.size(); ++i) {
            const double taken = seconds(contenders[i], calls[i]);
            spent += taken;
            samples[i].push_back(taken / double(calls[i]));
            ratios[i].push_back(samples[i].back() / samples[0].back());
        }
    }

    std::vector<Time> times;
    for (size_t i = 0; i < contenders.size(); ++i) {
        const double median = quantile(samples[i], 0.5);
        const double spread = (quantile(samples[i], 0.75) - quantile(samples[i], 0.25)) / median;
        times.push_back({1e9 * median, spread, quantile(ratios[i], 0.5)});
    }
    return times;
}

}  // namespace bench
