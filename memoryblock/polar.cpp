// The block is the destination; the array of the other block begins at its first byte.
#include "kernels/polar.h"

#include <algorithm>

#include "memoryblock/members.h"
#include "plugin/block.h"
#include "plugin/exceptions.h"

namespace memoryblock {
namespace {

// The whole pairs among `count` that lie inside a block from `offset` on.
size_t whole_pairs(REALmemoryBlock block, int32_t offset, int32_t count) {
    constexpr int64_t kPair = 2 * sizeof(float);
    return cut(block_size(block), offset, kPair * count).count / kPair;
}

void convert(decltype(kernels::polar_to_cartesian)* kernel, REALmemoryBlock block, int32_t offsetByte,
             int32_t Z, REALmemoryBlock source) {
    if (!block) return RaiseNilBlock();
    if (!source) return;
    if (offsetByte < 0) return RaiseNegativeOffset();
    uint8_t* to = block_data(block);
    const uint8_t* from = block_data(source);
    if (!to || !from) return;
    kernel(to + offsetByte, from, std::min(whole_pairs(block, offsetByte, Z), whole_pairs(source, 0, Z)));
}

}  // namespace

void CalcLogSweepTable(REALmemoryBlock block, int32_t offsetByte, int32_t Z, int32_t lw1, int32_t lw2,
                       double T) {
    if (!block) return RaiseNilBlock();
    if (offsetByte < 0) return RaiseNegativeOffset();
    uint8_t* to = block_data(block);
    if (!to) return;
    kernels::log_sweep(to + offsetByte, whole_pairs(block, offsetByte, Z), lw1, lw2, T);
}

void ConvertPolarToCartesian(REALmemoryBlock block, int32_t offsetByte, int32_t Z,
                             REALmemoryBlock polarData) {
    convert(kernels::polar_to_cartesian, block, offsetByte, Z, polarData);
}

void ConvertCartesianToPolar(REALmemoryBlock block, int32_t offsetByte, int32_t Z,
                             REALmemoryBlock CartesianData) {
    convert(kernels::cartesian_to_polar, block, offsetByte, Z, CartesianData);
}

}  // namespace memoryblock
