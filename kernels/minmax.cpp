// One loop for every type of element and both directions, in vectors as long as no store can reach an input
// element that is still to be read.
#include "kernels/minmax.h"

#include "kernels/words.h"

namespace kernels {
namespace {

constexpr size_t kVectorBytes = 16;

template <class Integer>
struct VectorOf {
    typedef Integer type __attribute__((vector_size(kVectorBytes)));
};

// Each is for numbers and, lane by lane, for vectors of them.
struct Smaller {
    template <class Operand>
    static Operand choose(Operand a, Operand b) {
        return a < b ? a : b;
    }
};
struct Larger {
    template <class Operand>
    static Operand choose(Operand a, Operand b) {
        return a > b ? a : b;
    }
};

template <class Choice, class Operand>
Operand chosen(const uint8_t* first, const uint8_t* second) {
    return Choice::choose(load<Operand>(first), load<Operand>(second));
}

// Whether an element stored at the destination would be read later as a part of the input.
bool feeds(const uint8_t* destination, const uint8_t* input, size_t bytes) {
    const uintptr_t distance = uintptr_t(destination) - uintptr_t(input);
    return distance > 0 && distance < bytes;
}

template <class Choice, class Integer>
void combine(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t bytes) {
    using Vector = typename VectorOf<Integer>::type;
    bytes -= bytes % sizeof(Integer);
    if (bytes < sizeof(Vector) || feeds(destination, first, bytes) || feeds(destination, second, bytes)) {
        for (size_t i = 0; i < bytes; i += sizeof(Integer)) {
            store(destination + i, chosen<Choice, Integer>(first + i, second + i));
        }
        return;
    }
    // The last vector overlaps the one before it: it is read before anything is stored.
    const size_t last = bytes - sizeof(Vector);
    const auto at_last = chosen<Choice, Vector>(first + last, second + last);
    for (size_t i = 0; i < last; i += sizeof(Vector)) {
        store(destination + i, chosen<Choice, Vector>(first + i, second + i));
    }
    store(destination + last, at_last);
}

template <class Choice>
bool combine(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t bytes, int32_t bits,
             bool is_signed) {
    void (*loop)(uint8_t*, const uint8_t*, const uint8_t*, size_t) = nullptr;
    switch (bits) {
        case 8:
            loop = is_signed ? combine<Choice, int8_t> : combine<Choice, uint8_t>;
            break;
        case 16:
            loop = is_signed ? combine<Choice, int16_t> : combine<Choice, uint16_t>;
            break;
        case 32:
            loop = is_signed ? combine<Choice, int32_t> : combine<Choice, uint32_t>;
            break;
        case 64:
            loop = is_signed ? combine<Choice, int64_t> : combine<Choice, uint64_t>;
            break;
        default:
            return false;
    }
    loop(destination, first, second, bytes);
    return true;
}

}  // namespace

bool minimum(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t bytes, int32_t bits,
             bool is_signed) {
    return combine<Smaller>(destination, first, second, bytes, bits, is_signed);
}

bool maximum(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t bytes, int32_t bits,
             bool is_signed) {
    return combine<Larger>(destination, first, second, bytes, bits, is_signed);
}

}  // namespace kernels
