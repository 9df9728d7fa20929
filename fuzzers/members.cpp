// Members: arbitrary calls of everything that the bundle registers, on hosts of every version in which
// operations are missing, late or failing, with known, unknown and negative sizes, nil wherever it can occur,
// blocks that overlap, and allocations that fail; each at every instruction-set level.
//
// After each call its result, every byte of memory, the exception with its message, and all references,
// objects, strings and string data are what the model says. Calls that only a broken program makes are not
// made: those whose range leaves memory of unknown size, or an address.
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "fuzzers/play.h"

namespace {

fuzz::World& world() {
    static fuzz::World world(FUZZED_BUNDLE);
    return world;
}

uint64_t inputs = 0;
uint64_t calls = 0;

void report() {
    std::fprintf(stderr, "%llu member calls in %llu inputs\n", static_cast<unsigned long long>(calls),
                 static_cast<unsigned long long>(inputs));
}

}  // namespace

// NOLINTNEXTLINE(bugprone-reserved-identifier): the sanitizer's name
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1:detect_leaks=0"; }

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    std::atexit(report);
    std::string levels;
    for (const std::string& level : world().levels()) levels += " " + level;
    std::fprintf(stderr, "levels:%s\n", levels.c_str());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string wrong = fuzz::play(world(), {data, size});
    calls = world().calls();
    if (++inputs % (1 << 18) == 0) report();
    if (wrong.empty()) return 0;
    std::fprintf(stderr, "%s\n", wrong.c_str());
    std::abort();
}
