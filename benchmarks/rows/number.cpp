// Minimum and maximum, scaling, and groups of four bytes.
#include "benchmarks/passes.h"
#include "benchmarks/peers/peers.h"
#include "benchmarks/rows/goals.h"

namespace bench {
namespace {

struct Element {
    kernels::Element kind;
    const char* name;
    int32_t bits;
    bool is_signed;
};

constexpr Element kElements[] = {
    {kernels::Element::kUint8, "UInt8", 8, false},    {kernels::Element::kInt8, "Int8", 8, true},
    {kernels::Element::kUint16, "UInt16", 16, false}, {kernels::Element::kInt16, "Int16", 16, true},
    {kernels::Element::kUint32, "UInt32", 32, false}, {kernels::Element::kInt32, "Int32", 32, true},
    {kernels::Element::kUint64, "UInt64", 64, false}, {kernels::Element::kInt64, "Int64", 64, true},
};

void combine(Case& c, const char* name, const Element& element, bool smaller) {
    const size_t n = c.size;
    const size_t count = n / size_t(element.bits / 8);
    uint8_t* const first = c.random(0, n);
    uint8_t* const second = c.random(1, n);
    uint8_t* const to = c.region(2);
    const REALmemoryBlock block = c.block(to);
    const auto kernel = [=](const kernels::Kernels& k) {
        const auto index = size_t(element.kind);
        (smaller ? k.minimum[index] : k.maximum[index])(to, first, second, count);
    };
    c.rule({to, n}, [=] { return kernel(rules()), true; });
    c.member<REALboolean(REALmemoryBlock, void*, void*, int32_t, REALboolean, int32_t, int32_t)>(
        name, [=](auto* member) {
            return member(block, first, second, element.bits, element.is_signed, 0, int32_t(n));
        });
    c.kernel([=](const kernels::Kernels& k) { return kernel(k), true; });
    c.peer("OpenCV", (smaller ? peers::opencv_minimum : peers::opencv_maximum)[size_t(element.kind)],
           [=](auto* f) { return f(to, first, second, n), true; });
    c.limit([=](const Limit& limit) { limit.combine(to, first, second, n); });
}

using Scale = void(REALmemoryBlock, double, int32_t, int32_t);

uint8_t scaled(uint8_t sample, double factor) {
    rules().scale_uint8(&sample, 1, factor);
    return sample;
}

void scale8(Case& c, double factor) {
    const size_t n = c.size;
    uint8_t* const data = c.random(0, n);
    const REALmemoryBlock block = c.block(data);
    struct Table {
        uint8_t bytes[256];
    } table;
    for (size_t i = 0; i < 256; ++i) table.bytes[i] = scaled(uint8_t(i), factor);
    c.rule({data, n}, [=] { rules().scale_uint8(data, n, factor); });
    c.member<Scale>("MultiplyUInt8ZOR", [=](auto* member) { member(block, factor, 0, int32_t(n)); });
    c.kernel([=](const kernels::Kernels& k) { k.scale_uint8(data, n, factor); });
    c.peer("StringZilla lookup, table ready", peers::stringzilla_lookup,
           [=](auto* f) { f(data, n, table.bytes); });
    c.peer(
        "OpenCV convertTo", peers::opencv_scale8, [=](auto* f) { f(data, n, factor); }, false);
    if (n == 16) {
        auto* const invert = c.bundle().member<void(REALmemoryBlock, int32_t, int32_t)>("InvertBytesZOR");
        const REALmemoryBlock other = c.block(c.region(1));
        c.reference(
            "InvertBytesZOR", [=] { invert(other, 0, int32_t(n)); }, false);
    }
    c.limit([=](const Limit& limit) { limit.update(data, n); });
}

void scale16(Case& c, double factor) {
    const size_t n = c.size;
    uint8_t* const data = c.random(0, n);
    const REALmemoryBlock block = c.block(data);
    c.rule({data, n}, [=] { rules().scale_uint16(data, n / 2, factor); });
    c.member<Scale>("MultiplyUInt16ZOR", [=](auto* member) { member(block, factor, 0, int32_t(n)); });
    c.kernel([=](const kernels::Kernels& k) { k.scale_uint16(data, n / 2, factor); });
    c.peer("pass in doubles", scale16_pass(), [=](auto* pass) { pass(data, n / 2, factor); });
    c.peer(
        "OpenCV convertTo", peers::opencv_scale16, [=](auto* f) { f(data, n, factor); }, false);
    c.limit([=](const Limit& limit) { limit.update(data, n); });
}

void complete_sum(Case& c) {
    const size_t n = c.size;
    uint8_t* const data = c.random(0, n);
    const REALmemoryBlock block = c.block(data);
    c.rule({data, n}, [=] { rules().complete_sum(data, n / 4, 255, true); });
    c.member<void(REALmemoryBlock, int32_t, int32_t, int32_t, REALboolean)>(
        "_Calc2te", [=](auto* member) { member(block, 255, 0, int32_t(n), true); });
    c.kernel([=](const kernels::Kernels& k) { k.complete_sum(data, n / 4, 255, true); });
    c.limit([=](const Limit& limit) { limit.update(data, n); });
}

// About a quarter of the groups are alike.
void replace_similar(Case& c) {
    const size_t n = c.size;
    uint8_t* const data = c.random(0, n);
    for (size_t i = 0; i < n; ++i) data[i] = uint8_t(data[i] % 4 == 0 ? 255 : 100 + data[i] % 32);
    const REALmemoryBlock block = c.block(data);
    c.rule({data, n}, [=] {
        rules().replace_similar(data, n / 4, {120, 120, 120, 120}, {110, 111, 112, 113}, 0.25);
    });
    c.member<void(REALmemoryBlock, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                  double, int32_t, int32_t)>("_Calc3te", [=](auto* member) {
        member(block, 120, 120, 120, 120, 110, 111, 112, 113, 0.25, 0, int32_t(n));
    });
    c.kernel([=](const kernels::Kernels& k) {
        k.replace_similar(data, n / 4, {120, 120, 120, 120}, {110, 111, 112, 113}, 0.25);
    });
    c.limit([=](const Limit& limit) { limit.update(data, n); });
}

}  // namespace

void add_number_rows(Rows& rows) {
    for (const bool smaller : {true, false}) {
        const char* const name = smaller ? "MinZOR" : "MaxZOR";
        for (const Element& element : kElements) {
            const bool charted = smaller && !element.is_signed;
            rows.push_back({"min and max",
                            name,
                            element.name,
                            [=](Case& c) { combine(c, name, element, smaller); },
                            {of_limit(0.9)},
                            false,
                            charted});
        }
    }
    const Goal small = {.of = {"InvertBytesZOR"}, .least = 1.0 / 3, .from = 16, .to = 16};
    const Goal of_pass = at_least(0.9, {"pass in doubles"});
    for (const double factor : {0.7, 1.3}) {
        const std::string by = factor < 1 ? "by 0.7" : "by 1.3";
        rows.push_back({"scaling",
                        "MultiplyUInt8ZOR",
                        by,
                        [=](Case& c) { scale8(c, factor); },
                        {of_limit(0.8), small, small_call(250)},
                        true,
                        true});
        rows.push_back({"scaling",
                        "MultiplyUInt16ZOR",
                        by,
                        [=](Case& c) { scale16(c, factor); },
                        {of_pass},
                        true,
                        true});
    }
    rows.push_back({"scaling", "_Calc2te", "", complete_sum, {of_limit(0.8)}, true, true});
    rows.push_back(
        {"scaling", "_Calc3te", "", replace_similar, {of_limit(0.8), small_call(300)}, true, true});
}

}  // namespace bench
