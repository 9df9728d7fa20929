// Members that change a range of bytes where it lies, byte by byte or unit by unit.
#include <algorithm>

#include "benchmarks/peers/peers.h"
#include "benchmarks/rows/goals.h"

namespace bench {
namespace {

using Update = void(uint8_t*, size_t);
using Member = void(REALmemoryBlock, int32_t, int32_t);

struct InPlace {
    const char* member;
    Update* kernels::Kernels::*kernel;
    void (*Limit::*limit)(uint8_t*, size_t);
    const char* peer_name;
    Update* peer;
};

void std_reverse(uint8_t* data, size_t n) { std::reverse(data, data + n); }

void lookup_bits(uint8_t* data, size_t n) {
    static const auto kTable = [] {
        struct Table {
            uint8_t bytes[256];
        } table;
        for (size_t i = 0; i < 256; ++i) table.bytes[i] = uint8_t(i);
        rules().reverse_bits_in_bytes(table.bytes, 256);
        return table;
    }();
    peers::stringzilla_lookup(data, n, kTable.bytes);
}

void prepare(Case& c, const InPlace& operation) {
    const size_t n = c.size;
    uint8_t* const data = c.random(0, n);
    const REALmemoryBlock block = c.block(data);
    c.rule({data, n}, [=] { (rules().*operation.kernel)(data, n); });
    c.member<Member>(operation.member, [=](auto* member) { member(block, 0, int32_t(n)); });
    c.kernel([=](const kernels::Kernels& k) { (k.*operation.kernel)(data, n); });
    c.peer(operation.peer_name, operation.peer, [=](auto* f) { f(data, n); });
    c.limit([=](const Limit& limit) { (limit.*operation.limit)(data, n); });
}

// Bits `first` to the last but `left`.
void mirror_bits(Case& c, size_t first, size_t left) {
    const size_t n = c.size;
    const size_t bits = 8 * n - first - left;
    uint8_t* const data = c.random(0, n);
    const REALmemoryBlock block = c.block(data);
    c.rule({data, n}, [=] { rules().reverse_bits(data, first, bits); });
    c.member<Member>("MirrorBitsZOR", [=](auto* member) { member(block, int32_t(first), int32_t(bits)); });
    c.kernel([=](const kernels::Kernels& k) { k.reverse_bits(data, first, bits); });
    c.limit([=](const Limit& limit) { limit.update_mirrored(data, n); });
}

}  // namespace

void add_in_place_rows(Rows& rows) {
    using kernels::Kernels;
    const InPlace operations[] = {
        {"InvertBytesZOR", &Kernels::invert, &Limit::update, "OpenCV bitwise_not", peers::opencv_invert},
        {"SwapBytes16ZOR", &Kernels::swap_units16, &Limit::update, "VOLK", peers::volk_swap16},
        {"SwapBytes32ZOR", &Kernels::swap_units32, &Limit::update, "VOLK", peers::volk_swap32},
        {"SwapBytesZOR", &Kernels::reverse_bytes, &Limit::update_mirrored, "std::reverse", std_reverse},
        {"MirrorBytesZOR", &Kernels::reverse_bytes, &Limit::update_mirrored, "OpenCV flip",
         peers::opencv_reverse},
        {"MirrorBitsInBytesZOR", &Kernels::reverse_bits_in_bytes, &Limit::update, "StringZilla lookup",
         peers::stringzilla_lookup ? lookup_bits : nullptr},
    };
    for (const InPlace& operation : operations) {
        rows.push_back({"in place",
                        operation.member,
                        "",
                        [=](Case& c) { prepare(c, operation); },
                        {of_limit(0.9), kSmallCall},
                        true,
                        true});
    }
    constexpr size_t kLargest = 128 << 20;  // the number of bits is 32 bits wide
    rows.push_back({"in place",
                    "MirrorBitsZOR",
                    "whole bytes",
                    [](Case& c) { mirror_bits(c, 0, 0); },
                    {of_limit(0.7)},
                    true,
                    true,
                    kUsualSizes,
                    kLargest});
    rows.push_back({"in place",
                    "MirrorBitsZOR",
                    "from bit 3",
                    [](Case& c) { mirror_bits(c, 3, 4); },
                    {of_limit(0.7)},
                    true,
                    true,
                    kUsualSizes,
                    kLargest});
}

}  // namespace bench
