// Nearly all of the time goes into the library's functions, whose bits are promised: nothing is faster than
// the rule itself.
#include "kernels/polar.h"

namespace kernels {

void log_sweep(uint8_t* destination, size_t pairs, int32_t first_frequency, int32_t last_frequency,
               double duration) {
    plain::log_sweep(destination, pairs, first_frequency, last_frequency, duration);
}

void polar_to_cartesian(uint8_t* destination, const uint8_t* source, size_t pairs) {
    plain::polar_to_cartesian(destination, source, pairs);
}

void cartesian_to_polar(uint8_t* destination, const uint8_t* source, size_t pairs) {
    plain::cartesian_to_polar(destination, source, pairs);
}

}  // namespace kernels
