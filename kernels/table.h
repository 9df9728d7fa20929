// The operations of one instruction-set level as function pointers. The headers of the families say what each
// operation does; every level gives exactly what the plain one gives, and differs in speed only.
#pragma once

#include "kernels/copy.h"
#include "kernels/expand.h"
#include "kernels/fill.h"
#include "kernels/gather.h"
#include "kernels/groups.h"
#include "kernels/minmax.h"
#include "kernels/mirror.h"
#include "kernels/polar.h"
#include "kernels/scale.h"
#include "kernels/search.h"

namespace kernels {

struct Kernels {
    decltype(&kernels::copy) copy;

    decltype(&kernels::fill) fill;
    decltype(&kernels::invert) invert;
    decltype(&kernels::swap_units16) swap_units16;
    decltype(&kernels::swap_units32) swap_units32;

    decltype(&kernels::reverse_bytes) reverse_bytes;
    decltype(&kernels::reverse_bits_in_bytes) reverse_bits_in_bytes;
    decltype(&kernels::reverse_bits) reverse_bits;

    decltype(&kernels::find_byte) find_byte;
    decltype(&kernels::find_not_byte) find_not_byte;
    decltype(&kernels::find) find;
    decltype(&kernels::equal) equal;
    decltype(&kernels::all_zero) all_zero;
    decltype(&kernels::all_ascii) all_ascii;

    decltype(&kernels::gather) gather;
    decltype(&kernels::gather_bits) gather_bits;
    decltype(&kernels::expand_bits) expand_bits;

    // By kind of element.
    CombineElements* minimum[kElements];
    CombineElements* maximum[kElements];

    decltype(&kernels::scale_uint8) scale_uint8;
    decltype(&kernels::scale_uint16) scale_uint16;

    decltype(&kernels::complete_sum) complete_sum;
    decltype(&kernels::replace_similar) replace_similar;

    decltype(&kernels::log_sweep) log_sweep;
    decltype(&kernels::polar_to_cartesian) polar_to_cartesian;
    decltype(&kernels::cartesian_to_polar) cartesian_to_polar;
};

namespace plain {
extern const Kernels kKernels;
}

}  // namespace kernels
