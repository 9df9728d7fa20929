#include "benchmarks/case.h"

#include <algorithm>
#include <cstring>
#include <random>

namespace bench {

constexpr size_t kRegions = 3;
constexpr size_t kAlignment = 4096;
constexpr size_t kOffset = 1344;  // from one region's place in a page to the next one's; a multiple of 64

// A region holds the source of a gathering too, which is longer than what it gives. Memory that no case
// touches is never given to the program.
Buffers::Buffers(size_t largest)
    : stride_(std::max(4 * largest, size_t{16} << 20) + 16 * kAlignment),
      memory_(std::make_unique_for_overwrite<uint8_t[]>(kRegions * (stride_ + kOffset) + kAlignment)) {}

uint8_t* Buffers::region(size_t index) const {
    const auto first = (uintptr_t(memory_.get()) + kAlignment - 1) / kAlignment * kAlignment;
    return reinterpret_cast<uint8_t*>(first + index * (stride_ + kOffset));
}

Case::Case(const Setting& setting, size_t bytes_of_range, bool misaligned)
    : size(bytes_of_range), bytes(bytes_of_range), setting_(setting), misaligned_(misaligned) {}

uint8_t* Case::region(size_t index) const { return setting_.buffers.region(index) + (misaligned_ ? 1 : 0); }

uint8_t* Case::random(size_t index, size_t count) const {
    std::mt19937_64 numbers(count + index);
    uint8_t* const first = region(index);
    for (size_t i = 0; i < count; i += sizeof(uint64_t)) {
        const uint64_t eight = numbers();
        std::memcpy(first + i, &eight, std::min(sizeof eight, count - i));
    }
    return first;
}

REALmemoryBlock Case::block(uint8_t* data, size_t count) {
    return &blocks_.emplace_back(Block{{}, data, int32_t(count)});
}

}  // namespace bench
