// The six copy members: ranges, overlaps, raw addresses and handles.
#include <algorithm>
#include <cstring>

#include "tests/support/bundle_test.h"
#include "tests/support/system.h"

namespace {

class CopyTest : public MemberTest {
 protected:
    // The bytes of `destination` after a copy that is made only if both ranges lie inside.
    static Bytes expected(const Bytes& source, Bytes destination, int64_t from, int64_t count, int64_t to) {
        const bool inside = count >= 0 && from >= 0 && to >= 0 && from + count <= int64_t(source.size()) &&
                            to + count <= int64_t(destination.size());
        if (inside && count > 0) {
            std::copy_n(source.begin() + ptrdiff_t(from), count, destination.begin() + ptrdiff_t(to));
        }
        return destination;
    }
};

// A page at an address that fits the 32 bits in which handles travel.
class LowPage {
 public:
    explicit LowPage(uintptr_t address) : page_(map_at(address, kSize)) {}
    ~LowPage() {
        if (mapped()) unmap(page_, kSize);
    }
    LowPage(const LowPage&) = delete;
    LowPage& operator=(const LowPage&) = delete;

    bool mapped() const { return page_ != nullptr; }
    int32_t handle() const { return int32_t(uint32_t(uintptr_t(page_))); }
    void set_master_pointer(void* data) { std::memcpy(page_, &data, sizeof data); }

 private:
    static constexpr size_t kSize = 4096;
    uint8_t* page_;
};

TEST_F(CopyTest, RangesAreCopiedWholeOrNotAtAll) {
    Random random;
    const std::vector<int32_t> numbers = extremes(9);
    for (const auto side : GuardedBytes::kBothSides) {
        for (const int32_t from : numbers) {
            for (const int32_t count : numbers) {
                for (const int32_t to : numbers) {
                    SCOPED_TRACE(testing::Message() << count << " bytes from " << from << " to " << to);
                    GuardedBytes first(9, side, random);
                    GuardedBytes second(12, side, random);
                    const Bytes source = first.copy();
                    const auto within = expected(source, source, from, count, to);
                    const auto across = expected(source, second.copy(), from, count, to);
                    call(view(first), "CopyBytesZOR", {from, count, view(second), to});
                    ASSERT_TRUE(same_bytes(second.bytes(), across));
                    ASSERT_TRUE(same_bytes(first.bytes(), source));
                    call(view(first), "CopyBytesZOR", {from, count, to});
                    ASSERT_TRUE(same_bytes(first.bytes(), within));
                }
            }
        }
    }
}

TEST_F(CopyTest, OverlapsAreCopiedAsThroughABuffer) {
    for (const int32_t to : {2, 0}) {
        const int32_t from = 2 - to;
        const auto after = hex(to == 2 ? "01 02 01 02 03 04" : "03 04 05 06 05 06");
        const ObjectRef within = block(hex("01 02 03 04 05 06"));
        call(within, "CopyBytesZOR", {from, 4, to});
        EXPECT_TRUE(same_bytes(bytes(within), after));
        const ObjectRef itself = block(hex("01 02 03 04 05 06"));
        call(itself, "CopyBytesZOR", {from, 4, itself, to});
        EXPECT_TRUE(same_bytes(bytes(itself), after));
    }
}

TEST_F(CopyTest, AnUnknownSizeLimitsNothing) {
    for (const int32_t size : {0, -1, INT32_MIN}) {
        GuardedBytes memory(hex("01 02 03 04 05 06"));
        call(view(memory, size), "CopyBytesZOR", {0, 3, 3});
        EXPECT_TRUE(same_bytes(memory.bytes(), hex("01 02 03 01 02 03")));
        call(view(memory, size), "CopyBytesZOR", {-1, 3, 3});
        call(view(memory, size), "CopyBytesZOR", {0, -3, 3});
        call(view(memory, size), "CopyBytesZOR", {0, 3, -1});
        EXPECT_TRUE(same_bytes(memory.bytes(), hex("01 02 03 01 02 03")));
    }
}

TEST_F(CopyTest, AddressesAreUsedFromTheirFirstByte) {
    for (const int32_t offset : extremes(5)) {
        for (const int32_t count : extremes(5)) {
            SCOPED_TRACE(testing::Message() << count << " bytes at " << offset);
            GuardedBytes memory(hex("0a 0b 0c 0d 0e"));
            GuardedBytes outside(hex("01 02 03 04 05"));
            const auto in = memory.copy();
            const auto out = outside.copy();
            call(view(memory), "CopyBytesToMacPtrZOR", {offset, count, Pointer{outside.data()}});
            ASSERT_TRUE(same_bytes(outside.bytes(), expected(in, out, offset, count, 0)));
            std::ranges::copy(out, outside.data());
            call(view(memory), "CopyBytesFromMacPtrZOR", {Pointer{outside.data()}, count, offset});
            ASSERT_TRUE(same_bytes(memory.bytes(), expected(out, in, 0, count, offset)));
        }
    }
}

class HandleTest : public MemberTest, public testing::WithParamInterface<uintptr_t> {};
INSTANTIATE_TEST_SUITE_P(Addresses, HandleTest, testing::Values(0x20000000));
#ifndef SANITIZED  // the sanitizer's own memory is there
INSTANTIATE_TEST_SUITE_P(AddressesThatAreNegativeIntegers, HandleTest, testing::Values(0xB0000000));
#endif

TEST_P(HandleTest, HandlesAreReadAtTheTimeOfTheCall) {
    LowPage page(GetParam());
    ASSERT_TRUE(page.mapped());
    const ObjectRef memory = block("abcdef");
    GuardedBytes first(hex("00 00 00"));
    GuardedBytes second(hex("01 02 03"));

    page.set_master_pointer(first.data());
    call(memory, "CopyBytesToMacHandleZOR", {2, 3, page.handle()});
    EXPECT_TRUE(same_bytes(first.bytes(), hex("63 64 65")));
    page.set_master_pointer(second.data());
    call(memory, "CopyBytesFromMacHandleZOR", {page.handle(), 3, 0});
    EXPECT_TRUE(same_bytes(bytes(memory), hex("01 02 03 64 65 66")));

    page.set_master_pointer(nullptr);
    call(memory, "CopyBytesToMacHandleZOR", {0, 3, page.handle()});
    call(memory, "CopyBytesFromMacHandleZOR", {page.handle(), 3, 0});
    EXPECT_TRUE(same_bytes(bytes(memory), hex("01 02 03 64 65 66")));

    // Refused ranges and empty copies do not even look at the handle: nothing is mapped at address 1.
    for (const int32_t count : {0, -1, 7, INT32_MAX}) {
        call(memory, "CopyBytesToMacHandleZOR", {0, count, 1});
        call(memory, "CopyBytesFromMacHandleZOR", {1, count, 0});
    }
    EXPECT_TRUE(same_bytes(bytes(memory), hex("01 02 03 64 65 66")));
}

TEST_F(CopyTest, NilChangesNothingAndRaisesNothing) {
    const ObjectRef memory = block("abc");
    const ObjectRef without_data = host().new_view(nullptr, 3);
    for (const ObjectRef& empty : {ObjectRef(), without_data}) {
        call(empty, "CopyBytesZOR", {0, 1, 1});
        call(empty, "CopyBytesZOR", {0, 1, memory, 0});
        call(memory, "CopyBytesZOR", {0, 1, empty, 0});
        call(empty, "CopyBytesToMacPtrZOR", {0, 1, Pointer{host().block_data(memory.get())}});
        call(empty, "CopyBytesFromMacPtrZOR", {Pointer{host().block_data(memory.get())}, 1, 0});
        call(empty, "CopyBytesToMacHandleZOR", {0, 1, 1});
        call(empty, "CopyBytesFromMacHandleZOR", {1, 1, 0});
    }
    call(memory, "CopyBytesToMacPtrZOR", {0, 1, Pointer{}});
    call(memory, "CopyBytesFromMacPtrZOR", {Pointer{}, 1, 0});
    call(memory, "CopyBytesToMacHandleZOR", {0, 1, 0});
    call(memory, "CopyBytesFromMacHandleZOR", {0, 1, 0});
    EXPECT_TRUE(same_bytes(bytes(memory), hex("61 62 63")));
}

}  // namespace
