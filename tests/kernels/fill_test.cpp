#include "kernels/fill.h"

#include "tests/kernels/in_place.h"

namespace {

LEVEL_TESTS(FillKernels, fast_levels());

TEST_P(FillKernels, ChangeTheirRangeAsThePlainOnes) {
    const InPlace kernels[] = {
        {"fill", [](uint8_t* data, size_t n) { fast().fill(data, n, 0xC3); },
         [](uint8_t* data, size_t n) { plain().fill(data, n, 0xC3); }},
        {"invert", fast().invert, plain().invert},
        {"swap_units16", fast().swap_units16, plain().swap_units16},
        {"swap_units32", fast().swap_units32, plain().swap_units32},
    };
    check_in_place(kernels);
}

}  // namespace
