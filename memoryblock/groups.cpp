// A group counts when it starts within the length; so the length is rounded up to whole groups before it is
// cut at the block's end.
#include "kernels/groups.h"

#include "memoryblock/members.h"
#include "plugin/block.h"
#include "plugin/exceptions.h"

namespace memoryblock {
namespace {

// The groups to change: up to three bytes after the last whole one may be among them.
Bytes whole_groups(const rbBuffer& held, int32_t offset, int32_t length) {
    const int64_t bytes = or_rest(held.length(), offset, length);
    return bytes > 0 ? cut_or_rest(held, offset, (bytes + 3) / 4 * 4) : Bytes();
}

}  // namespace

void Calc2te(REALmemoryBlock block, int32_t iByteMax, int32_t offsetByte, int32_t Length,
             REALboolean WithSum0) {
    if (!block) return RaiseNilBlock();
    if (offsetByte < 0) return RaiseNegativeOffset();
    const rbBuffer held(block);
    const Bytes bytes = whole_groups(held, offsetByte, Length);
    kernels::complete_sum(bytes.data(), bytes.size() / 4, iByteMax, WithSum0 != 0);
}

void Calc3te(REALmemoryBlock block, int32_t Source1, int32_t Source2, int32_t Source3, int32_t Source4,
             int32_t Dest1, int32_t Dest2, int32_t Dest3, int32_t Dest4, double Tolerance, int32_t offsetByte,
             int32_t Length) {
    if (!block) return RaiseNilBlock();
    if (offsetByte < 0) return RaiseNegativeOffset();
    const rbBuffer held(block);
    const Bytes bytes = whole_groups(held, offsetByte, Length);
    kernels::replace_similar(bytes.data(), bytes.size() / 4, {Source1, Source2, Source3, Source4},
                             {Dest1, Dest2, Dest3, Dest4}, Tolerance);
}

}  // namespace memoryblock
