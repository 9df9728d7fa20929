// Copies, fills and slices.
#include <cstdlib>
#include <cstring>

#include "benchmarks/peers/peers.h"
#include "benchmarks/rows/goals.h"

namespace bench {
namespace {

void copy_to_block(Case& c) {
    const size_t n = c.size;
    uint8_t* const from = c.random(0, n);
    uint8_t* const to = c.region(1);
    const REALmemoryBlock block = c.block(from);
    const REALmemoryBlock other = c.block(to);
    c.rule({to, n}, [=] { rules().copy(to, from, n); });
    c.member<void(REALmemoryBlock, int32_t, int32_t, REALmemoryBlock, int32_t)>(
        "CopyBytesZOR", [=](auto* member) { member(block, 0, int32_t(n), other, 0); });
    c.kernel([=](const kernels::Kernels& k) { k.copy(to, from, n); });
    c.peer("libc memmove", [=] { std::memmove(to, from, n); });
    c.peer("StringZilla", peers::stringzilla_copy, [=](auto* f) { f(to, from, n); });
    c.limit([=](const Limit& limit) { limit.transfer(to, n, from, n); });
}

void copy_inside(Case& c) {
    constexpr int32_t kShift = 16;
    const size_t n = c.size;
    uint8_t* const from = c.random(0, n + kShift);
    uint8_t* const to = from + kShift;
    const REALmemoryBlock block = c.block(from, n + kShift);
    c.rule({from, n + kShift}, [=] { rules().copy(to, from, n); });
    c.member<void(REALmemoryBlock, int32_t, int32_t, int32_t)>(
        "CopyBytesZOR", [=](auto* member) { member(block, 0, int32_t(n), kShift); });
    c.kernel([=](const kernels::Kernels& k) { k.copy(to, from, n); });
    c.peer("libc memmove", [=] { std::memmove(to, from, n); });
    c.peer("StringZilla", peers::stringzilla_move, [=](auto* f) { f(to, from, n); });
}

void fill(Case& c) {
    const size_t n = c.size;
    uint8_t* const data = c.random(0, n);
    const REALmemoryBlock block = c.block(data);
    c.rule({data, n}, [=] { rules().fill(data, n, 9); });
    c.member<void(REALmemoryBlock, int32_t, int32_t, int32_t)>(
        "FillBytesZOR", [=](auto* member) { member(block, 0, int32_t(n), 9); });
    c.kernel([=](const kernels::Kernels& k) { k.fill(data, n, 9); });
    c.peer("libc memset", [=] { std::memset(data, 9, n); });
    c.peer("StringZilla", peers::stringzilla_fill, [=](auto* f) { f(data, n, 9); });
    c.limit([=](const Limit& limit) { limit.write(data, n); });
}

// The new block is looked at in its last byte and given back.
int64_t last_byte_of(REALmemoryBlock result) {
    const auto* block = static_cast<const Block*>(result);
    const int64_t last = static_cast<const uint8_t*>(block->data)[block->size - 1];
    release(result);
    return last;
}

int64_t last_byte_of_copy(const uint8_t* first, size_t n, const uint8_t* second, size_t m) {
    auto* const copy = static_cast<uint8_t*>(std::malloc(n + m));
    std::memcpy(copy, first, n);
    std::memcpy(copy + n, second, m);
    asm volatile("" : : "r"(copy) : "memory");
    const int64_t last = copy[n + m - 1];
    std::free(copy);
    return last;
}

void mid(Case& c) {
    const size_t n = c.size;
    uint8_t* const data = c.random(0, n);
    const REALmemoryBlock block = c.block(data);
    c.rule({}, [=] { return data[n - 1]; });
    c.member<REALmemoryBlock(REALmemoryBlock, int32_t, int32_t)>(
        "MidZOR", [=](auto* member) { return last_byte_of(member(block, 0, int32_t(n))); });
    c.peer("malloc and memcpy", [=] { return last_byte_of_copy(data, n, nullptr, 0); });
}

void append(Case& c) {
    const size_t half = c.size / 2;
    uint8_t* const first = c.random(0, half);
    uint8_t* const second = c.random(1, half);
    const REALmemoryBlock block = c.block(first, half);
    const REALmemoryBlock other = c.block(second, half);
    c.rule({}, [=] { return second[half - 1]; });
    c.member<REALmemoryBlock(REALmemoryBlock, REALmemoryBlock)>(
        "AppendZOR", [=](auto* member) { return last_byte_of(member(block, other)); });
    c.peer("malloc and memcpy", [=] { return last_byte_of_copy(first, half, second, half); });
}

}  // namespace

void add_copy_rows(Rows& rows) {
    const Goal of_libc = at_least(0.95, {"libc memmove", "libc memset", "StringZilla"});
    const Goal of_malloc = at_least(0.95, {"malloc and memcpy"});
    rows.push_back({"copy", "CopyBytesZOR", "to another block", copy_to_block, {of_libc}, true, true});
    rows.push_back({"copy", "CopyBytesZOR", "in a block, by 16 bytes", copy_inside, {of_libc}, true});
    rows.push_back({"copy", "FillBytesZOR", "", fill, {of_libc, kSmallCall}, true, true});
    rows.push_back({"copy", "MidZOR", "", mid, {of_malloc}, false, true});
    rows.push_back({"copy", "AppendZOR", "", append, {of_malloc}, false, true});
}

}  // namespace bench
