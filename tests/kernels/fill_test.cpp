#include "kernels/fill.h"

#include "tests/kernels/in_place.h"

namespace {

template <uint8_t Value>
constexpr InPlace kFill = {"fill", [](uint8_t* data, size_t n) { kernels::fill(data, n, Value); },
                           [](uint8_t* data, size_t n) { kernels::plain::fill(data, n, Value); }};

TEST(FillKernels, ChangeTheirRangeAsThePlainOnes) {
    const InPlace kernels[] = {
        kFill<0x00>,
        kFill<0xFF>,
        {"invert", kernels::invert, kernels::plain::invert},
        {"swap_units16", kernels::swap_units16, kernels::plain::swap_units16},
        {"swap_units32", kernels::swap_units32, kernels::plain::swap_units32},
    };
    check_in_place(kernels);
}

}  // namespace
