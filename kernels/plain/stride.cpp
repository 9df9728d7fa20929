#include "kernels/stride.h"

#include "kernels/copy.h"

namespace kernels::plain {
namespace {

bool bit_at(const uint8_t* run, uint64_t bit) { return run[bit / 8] & 0x80 >> bit % 8; }

}  // namespace

void gather(uint8_t* destination, const uint8_t* source, size_t piece, ptrdiff_t step, size_t pieces) {
    for (size_t i = 0; i < pieces; ++i) {
        copy(destination + i * piece, source + ptrdiff_t(i) * step, piece);
    }
}

void gather_bits(uint8_t* destination, uint64_t destination_bit, const uint8_t* source, uint64_t source_bit,
                 uint64_t bits, uint64_t step, size_t groups) {
    uint64_t to = destination_bit;
    unsigned pending = 0;
    for (size_t group = 0; group < groups; ++group) {
        for (uint64_t i = 0; i < bits; ++i) {
            if (bit_at(source, source_bit + group * step + i)) pending |= 0x80U >> to % 8;
            const bool last = group == groups - 1 && i == bits - 1;
            if (to % 8 == 7 || last) {
                destination[to / 8] = uint8_t(pending);
                pending = 0;
            }
            ++to;
        }
    }
}

void expand_bits(uint8_t* destination, size_t destination_count, const uint8_t* source, size_t source_count,
                 uint8_t low, uint8_t high) {
    for (size_t group = 0; group < destination_count; group += 32) {
        uint8_t four[4] = {};
        for (size_t i = 0; i < 4; ++i) {
            if (group / 8 + i < source_count) four[i] = source[group / 8 + i];
        }
        for (size_t i = 0; i < 32 && group + i < destination_count; ++i) {
            destination[group + i] = bit_at(four, i) ? high : low;
        }
    }
}

}  // namespace kernels::plain
