// A soak: calls of all members without end, as the fuzzer makes them, from a seed. Every call is held against
// the model; memory must stay flat, references balanced, and the calls as fast at the end as at the
// beginning.
//
//     soak BUNDLE SECONDS [SEED]
#include <malloc.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "fuzzers/play.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kInput = 600;  // bytes

// What is allocated, in bytes. What the system has given grows a little besides: the allocator's pages fill
// unevenly.
size_t allocated() { return mallinfo2().uordblks; }

double seconds_since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

struct Part {
    uint64_t calls;
    double seconds;
    size_t memory;
    double rate() const { return double(calls) / seconds; }
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "soak: takes a bundle, a number of seconds, and a seed if you like\n");
        return 2;
    }
    const double seconds = std::atof(argv[2]);
    const unsigned seed = argc > 3 ? unsigned(std::strtoul(argv[3], nullptr, 10)) : 1;
    fuzz::World world(argv[1]);
    std::minstd_rand random(seed);
    std::vector<uint8_t> input(kInput);

    const auto play = [&] {
        for (uint8_t& byte : input) byte = uint8_t(random() >> 8);
        const std::string wrong = fuzz::play(world, input);
        if (wrong.empty()) return true;
        std::printf("soak: seed %u, after %llu calls: %s\n", seed,
                    static_cast<unsigned long long>(world.calls()), wrong.c_str());
        return false;
    };
    // Until the host's stores are full: it keeps handles for a while, so that their addresses do not come
    // back.
    for (int i = 0; i < 5000; ++i) {
        if (!play()) return 1;
    }

    constexpr size_t kParts = 10;
    std::vector<Part> parts;
    const auto start = Clock::now();
    while (parts.size() < kParts) {
        const auto part_start = Clock::now();
        const uint64_t before = world.calls();
        while (seconds_since(part_start) < seconds / kParts) {
            if (!play()) return 1;
        }
        world.begin({});
        parts.push_back({world.calls() - before, seconds_since(part_start), allocated()});
        std::printf("soak: %5.0f s, %llu calls, %.0f a second, %zu bytes allocated\n", seconds_since(start),
                    static_cast<unsigned long long>(world.calls()), parts.back().rate(), parts.back().memory);
        std::fflush(stdout);
    }
    const auto growth = std::ptrdiff_t(parts.back().memory) - std::ptrdiff_t(parts.front().memory);
    constexpr std::ptrdiff_t kMost = 256 << 10;
    if (growth > kMost) {
        std::printf("soak: %td bytes more are allocated at the end\n", growth);
        return 1;
    }
    std::printf(
        "soak: seed %u, %llu calls at every level, all as they should be; %td bytes more at the end\n", seed,
        static_cast<unsigned long long>(world.calls()), growth);
    return 0;
}
