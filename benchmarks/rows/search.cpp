// Searches for a byte, and comparisons. What decides is never there, so that the whole range is read.
#include <cstring>

#include "benchmarks/peers/peers.h"
#include "benchmarks/rows/goals.h"

namespace bench {
namespace {

using Find = int32_t(REALmemoryBlock, int32_t, int32_t, int32_t);

uint8_t* filled(const Case& c, size_t region, uint8_t value) {
    return static_cast<uint8_t*>(std::memset(c.region(region), value, c.size));
}

size_t index(const void* found, const uint8_t* data) {
    return found ? size_t(static_cast<const uint8_t*>(found) - data) : SIZE_MAX;
}

// memchr over the same bytes, all of them `there`.
void add_byte_searches(Case& c, const uint8_t* data, uint8_t there) {
    const auto absent = uint8_t(there + 1);
    c.peer("libc memchr", [=, n = c.size] { return index(std::memchr(data, absent, n), data); });
    c.peer("StringZilla", peers::stringzilla_find_byte,
           [=, n = c.size](auto* f) { return f(data, n, absent); });
    c.peer("memchr crate", peers::memchr_crate_find_byte,
           [=, n = c.size](auto* f) { return f(data, n, absent); });
    c.limit([=, n = c.size](const Limit& limit) { limit.read(data, n); });
}

void find_byte(Case& c) {
    uint8_t* const data = filled(c, 0, 7);
    const REALmemoryBlock block = c.block(data);
    const size_t n = c.size;
    c.rule({}, [=] { return rules().find_byte(data, n, 8); });
    c.member<Find>("FindByteZOR", [=](auto* member) { return member(block, 0, int32_t(n), 8); });
    c.kernel([=](const kernels::Kernels& k) { return k.find_byte(data, n, 8); });
    add_byte_searches(c, data, 7);
}

void find_not_byte(Case& c) {
    uint8_t* const data = filled(c, 0, 7);
    const REALmemoryBlock block = c.block(data);
    const size_t n = c.size;
    c.rule({}, [=] { return rules().find_not_byte(data, n, 7); });
    c.member<Find>("FindNotByteZOR", [=](auto* member) { return member(block, 0, int32_t(n), 7); });
    c.kernel([=](const kernels::Kernels& k) { return k.find_not_byte(data, n, 7); });
    c.peer("memcmp with itself",
           [=] { return data[0] == 7 && std::memcmp(data, data + 1, n - 1) == 0 ? SIZE_MAX : 0; });
    add_byte_searches(c, data, 7);
}

void all_zero(Case& c) {
    uint8_t* const data = filled(c, 0, 0);
    const REALmemoryBlock block = c.block(data);
    const size_t n = c.size;
    c.rule({}, [=] { return rules().all_zero(data, n); });
    c.member<REALboolean(REALmemoryBlock, int32_t, int32_t)>(
        "BytesZeroZOR", [=](auto* member) { return member(block, 0, int32_t(n)); });
    c.kernel([=](const kernels::Kernels& k) { return k.all_zero(data, n); });
    c.peer("ISA-L", peers::isal_all_zero, [=](auto* f) { return f(data, n); });
    c.peer("libc memchr", [=] { return std::memchr(data, 1, n) == nullptr; });
    c.limit([=](const Limit& limit) { limit.read(data, n); });
}

void equal(Case& c) {
    uint8_t* const first = c.random(0, c.size);
    auto* const second = static_cast<uint8_t*>(std::memcpy(c.region(1), first, c.size));
    const REALmemoryBlock block = c.block(first);
    const REALmemoryBlock other = c.block(second);
    const size_t n = c.size;
    c.rule({}, [=] { return rules().equal(first, second, n); });
    c.member<REALboolean(REALmemoryBlock, int32_t, int32_t, REALmemoryBlock, int32_t)>(
        "BytesEqualZOR", [=](auto* member) { return member(block, 0, int32_t(n), other, 0); });
    c.kernel([=](const kernels::Kernels& k) { return k.equal(first, second, n); });
    c.peer("libc memcmp", [=] { return std::memcmp(first, second, n) == 0; });
    c.peer("StringZilla", peers::stringzilla_equal, [=](auto* f) { return f(first, second, n); });
    c.limit([=](const Limit& limit) { limit.read_two(first, second, n); });
}

// The string itself is the host's to make, so what counts is the look at its bytes.
void all_ascii(Case& c) {
    uint8_t* const data = filled(c, 0, 'a');
    const size_t n = c.size;
    const REALmemoryBlock block = c.block(data);
    c.rule({}, [=] { return rules().all_ascii(data, n); });
    c.member<REALstring(REALmemoryBlock, int32_t, int32_t)>("GetStringZOR", [=](auto* member) {
        const REALstring string = member(block, 0, int32_t(n));
        release(string);
        return string != nullptr;
    });
    c.reference("its look alone", [=] { return kernels::all_ascii(data, n); });
    c.kernel([=](const kernels::Kernels& k) { return k.all_ascii(data, n); });
    c.peer("libc memchr", [=] { return std::memchr(data, 0x80, n) == nullptr; });
    c.limit([=](const Limit& limit) { limit.read(data, n); });
}

}  // namespace

void add_search_rows(Rows& rows) {
    const Goal of_libc = at_least(0.95, {"libc memchr", "libc memcmp", "StringZilla"});
    const Goal of_memchr = at_least(0.9, {"libc memchr"});
    Goal look_of_memchr = of_memchr;
    look_of_memchr.who = "its look alone";
    rows.push_back({"search", "FindByteZOR", "", find_byte, {of_libc, kSmallCall}, true, true});
    rows.push_back({"search", "FindNotByteZOR", "", find_not_byte, {of_memchr, kSmallCall}, true, true});
    rows.push_back({"search", "BytesZeroZOR", "", all_zero, {of_memchr, kSmallCall}, true, true});
    rows.push_back({"search", "BytesEqualZOR", "", equal, {of_libc}, true, true});
    rows.push_back({"search", "GetStringZOR", "all below 0x80", all_ascii, {look_of_memchr}});
}

}  // namespace bench
