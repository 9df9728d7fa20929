#include "kernels/levels.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace kernels {

#if defined(__x86_64__) || defined(__i386__)
namespace avx512 {
extern const Kernels kKernels;
}
namespace avx2 {
extern const Kernels kKernels;
}
namespace sse4 {
extern const Kernels kKernels;
}
namespace sse2 {
extern const Kernels kKernels;
}
#elif defined(__aarch64__)
namespace neon {
extern const Kernels kKernels;
}
#else
namespace generic {
extern const Kernels kKernels;
}
#endif
namespace plain {
extern const Kernels kKernels;
}

namespace {

bool everywhere() { return true; }

#if defined(__x86_64__) || defined(__i386__)

// The feature bits of a processor, by the register in which CPUID gives them.
struct Features {
    unsigned leaf1_ecx = 0;
    unsigned leaf7_ebx = 0;
    unsigned leaf7_ecx = 0;
    unsigned extended_ecx = 0;
    uint64_t saved_state = 0;  // which registers the operating system keeps for each thread
};

Features features() {
    Features found;
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned edx = 0;
    unsigned ecx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx)) found.leaf1_ecx = ecx;
    if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx)) {
        found.leaf7_ebx = ebx;
        found.leaf7_ecx = ecx;
    }
    if (__get_cpuid(0x80000001, &eax, &ebx, &ecx, &edx)) found.extended_ecx = ecx;
    if (found.leaf1_ecx & bit_OSXSAVE) {
        unsigned low = 0;
        unsigned high = 0;
        __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
        found.saved_state = uint64_t(high) << 32 | low;
    }
    return found;
}

bool has_all(uint64_t bits, uint64_t wanted) { return (bits & wanted) == wanted; }

bool runs_sse4(const Features& found) {
    return has_all(found.leaf1_ecx, bit_SSSE3 | bit_SSE4_1 | bit_SSE4_2 | bit_POPCNT);
}

bool runs_avx2(const Features& found) {
    constexpr uint64_t kVectors256 = 0x6;  // XMM and the upper halves of YMM
    return runs_sse4(found) && has_all(found.saved_state, kVectors256) &&
           has_all(found.leaf1_ecx, bit_AVX | bit_FMA) &&
           has_all(found.leaf7_ebx, bit_AVX2 | bit_BMI | bit_BMI2) && has_all(found.extended_ecx, bit_ABM);
}

bool runs_avx512(const Features& found) {
    constexpr uint64_t kVectors512 = 0xE6;  // the former, mask registers, ZMM
    return runs_avx2(found) && has_all(found.saved_state, kVectors512) &&
           has_all(found.leaf7_ebx, bit_AVX512F | bit_AVX512BW | bit_AVX512VL | bit_AVX512DQ) &&
           has_all(found.leaf7_ecx, bit_AVX512VBMI | bit_GFNI);
}

constexpr Level kLevels[] = {
    {"avx512", [] { return runs_avx512(features()); }, &avx512::kKernels},
    {"avx2", [] { return runs_avx2(features()); }, &avx2::kKernels},
    {"sse4", [] { return runs_sse4(features()); }, &sse4::kKernels},
    {"sse2", everywhere, &sse2::kKernels},
    {"plain", everywhere, &plain::kKernels},
};
constinit const Kernels* chosen = &sse2::kKernels;

#elif defined(__aarch64__)

constexpr Level kLevels[] = {
    {"neon", everywhere, &neon::kKernels},
    {"plain", everywhere, &plain::kKernels},
};
constinit const Kernels* chosen = &neon::kKernels;

#else

constexpr Level kLevels[] = {
    {"generic", everywhere, &generic::kKernels},
    {"plain", everywhere, &plain::kKernels},
};
constinit const Kernels* chosen = &generic::kKernels;

#endif

}  // namespace

std::span<const Level> levels() { return kLevels; }

const Level& best_level() {
    const Level* level = kLevels;
    while (!level->runs_here()) ++level;
    return *level;
}

void choose_level(const Level& level) { chosen = level.kernels; }

void copy(uint8_t* destination, const uint8_t* source, size_t n) { chosen->copy(destination, source, n); }

void fill(uint8_t* data, size_t n, uint8_t value) { chosen->fill(data, n, value); }
void invert(uint8_t* data, size_t n) { chosen->invert(data, n); }
void swap_units16(uint8_t* data, size_t n) { chosen->swap_units16(data, n); }
void swap_units32(uint8_t* data, size_t n) { chosen->swap_units32(data, n); }

void reverse_bytes(uint8_t* data, size_t n) { chosen->reverse_bytes(data, n); }
void reverse_bits_in_bytes(uint8_t* data, size_t n) { chosen->reverse_bits_in_bytes(data, n); }
void reverse_bits(uint8_t* data, size_t first, size_t count) { chosen->reverse_bits(data, first, count); }

size_t find_byte(const uint8_t* data, size_t n, uint8_t value) { return chosen->find_byte(data, n, value); }
size_t find_not_byte(const uint8_t* data, size_t n, uint8_t value) {
    return chosen->find_not_byte(data, n, value);
}
size_t find(const uint8_t* haystack, size_t n, const uint8_t* needle, size_t m) {
    return chosen->find(haystack, n, needle, m);
}
bool equal(const uint8_t* first, const uint8_t* second, size_t n) { return chosen->equal(first, second, n); }
bool all_zero(const uint8_t* data, size_t n) { return chosen->all_zero(data, n); }
bool all_ascii(const uint8_t* data, size_t n) { return chosen->all_ascii(data, n); }

void gather(uint8_t* destination, const uint8_t* source, size_t piece, ptrdiff_t step, size_t pieces) {
    chosen->gather(destination, source, piece, step, pieces);
}
void gather_bits(uint8_t* destination, uint64_t destination_bit, const uint8_t* source, uint64_t source_bit,
                 uint64_t bits, uint64_t step, size_t groups) {
    chosen->gather_bits(destination, destination_bit, source, source_bit, bits, step, groups);
}
void expand_bits(uint8_t* destination, size_t destination_count, const uint8_t* source, size_t source_count,
                 uint8_t low, uint8_t high) {
    chosen->expand_bits(destination, destination_count, source, source_count, low, high);
}

void minimum(Element element, uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t n) {
    chosen->minimum[size_t(element)](destination, first, second, n);
}
void maximum(Element element, uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t n) {
    chosen->maximum[size_t(element)](destination, first, second, n);
}

void scale_uint8(uint8_t* samples, size_t n, double factor) { chosen->scale_uint8(samples, n, factor); }
void scale_uint16(uint8_t* samples, size_t n, double factor) { chosen->scale_uint16(samples, n, factor); }

void complete_sum(uint8_t* data, size_t groups, int32_t limit, bool zero_stays) {
    chosen->complete_sum(data, groups, limit, zero_stays);
}
void replace_similar(uint8_t* data, size_t groups, const int32_t (&reference)[4],
                     const int32_t (&replacement)[4], double tolerance) {
    chosen->replace_similar(data, groups, reference, replacement, tolerance);
}

void log_sweep(uint8_t* destination, size_t pairs, int32_t first_frequency, int32_t last_frequency,
               double duration) {
    chosen->log_sweep(destination, pairs, first_frequency, last_frequency, duration);
}
void polar_to_cartesian(uint8_t* destination, const uint8_t* source, size_t pairs) {
    chosen->polar_to_cartesian(destination, source, pairs);
}
void cartesian_to_polar(uint8_t* destination, const uint8_t* source, size_t pairs) {
    chosen->cartesian_to_polar(destination, source, pairs);
}

}  // namespace kernels
