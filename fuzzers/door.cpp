// What the bundle under test has besides its entry point: ways to choose an instruction-set level and to let
// an allocation fail. It is linked with --wrap, so that its allocations come by here.
#include "fuzzers/door.h"

#include <cstdlib>

#include "kernels/levels.h"

namespace {

int until_failure = 0;  // the allocation that reaches 0 fails

bool fails() { return until_failure > 0 && --until_failure == 0; }

}  // namespace

extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier): the linker gives these names
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* memory, size_t size);

void* __wrap_calloc(size_t count, size_t size) { return fails() ? nullptr : __real_calloc(count, size); }
void* __wrap_realloc(void* memory, size_t size) { return fails() ? nullptr : __real_realloc(memory, size); }
// NOLINTEND(bugprone-reserved-identifier)

__attribute__((visibility("default"))) void fail_allocation(int which) { until_failure = which; }

__attribute__((visibility("default"))) const char* level_name(size_t index) {
    if (index >= kernels::levels().size()) return nullptr;
    const kernels::Level& level = kernels::levels()[index];
    return level.runs_here() ? level.name : "";
}

__attribute__((visibility("default"))) void choose_level(size_t index) {
    kernels::choose_level(kernels::levels()[index]);
}
}
