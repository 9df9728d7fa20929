#include "kernels/polar.h"

#include <algorithm>

#include "memoryblock/members.h"
#include "plugin/block.h"
#include "plugin/exceptions.h"

namespace memoryblock {
namespace {

constexpr int32_t kPair = 2 * sizeof(float);  // bytes

void convert(decltype(kernels::polar_to_cartesian)* kernel, REALmemoryBlock block, int32_t offsetByte,
             int32_t Z, REALmemoryBlock source) {
    if (!block) return RaiseNilBlock();
    if (!source) return;
    if (offsetByte < 0) return RaiseNegativeOffset();
    const Bytes to = cut(Block(block), offsetByte, int64_t{Z} * kPair);
    const Bytes from = cut(Block(source), 0, int64_t{Z} * kPair);
    kernel(to.data(), from.data(), std::min(to.size(), from.size()) / kPair);
}

}  // namespace

void CalcLogSweepTable(REALmemoryBlock block, int32_t offsetByte, int32_t Z, int32_t lw1, int32_t lw2,
                       double T) {
    if (!block) return RaiseNilBlock();
    if (offsetByte < 0) return RaiseNegativeOffset();
    const Bytes to = cut(Block(block), offsetByte, int64_t{Z} * kPair);
    kernels::log_sweep(to.data(), to.size() / kPair, lw1, lw2, T);
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
