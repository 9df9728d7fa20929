// Instances of MemoryBlockZOR: their memory, its size and its view, through their whole life.
#include <algorithm>
#include <cstring>
#include <limits>

#include "tests/support/bundle_test.h"
#include "tests/support/system.h"

namespace {

#ifdef SANITIZED
constexpr bool kSanitized = true;  // its allocator ends the program instead of failing
#else
constexpr bool kSanitized = false;
#endif

class MemoryBlockZORTest : public MemberTest {
 protected:
    void SetUp() override {
        MemberTest::SetUp();
        self_ = host().new_instance("MemoryBlockZOR");
    }
    void TearDown() override {
        self_ = {};
        BundleTest::TearDown();
    }

    bool create(int64_t size) { return call_for<bool>(self_, "Create", {size}); }
    bool resize(int64_t size) { return call_for<bool>(self_, "Resize", {size}); }
    ObjectRef memory() { return std::get<ObjectRef>(get(self_, "Memory")); }
    uint8_t* address() {
        return reinterpret_cast<uint8_t*>(uintptr_t(std::get<int64_t>(get(self_, "Address"))));
    }

    // Whether the instance has memory of that size and a view of it; for 0, whether it has neither.
    testing::AssertionResult holds(int64_t size) {
        const int64_t found = std::get<int64_t>(get(self_, "Size"));
        const ObjectRef view = memory();
        const bool all = found == size && bool(view) == (size > 0) && bool(address()) == (size > 0);
        if (all && (!view || host().block_data(view.get()) == address())) return testing::AssertionSuccess();
        return testing::AssertionFailure() << "size " << found << " at " << static_cast<void*>(address());
    }

    ObjectRef self_;
};

TEST_F(MemoryBlockZORTest, CreateGivesZeroesOrLeavesNothing) {
    EXPECT_TRUE(holds(0));
    const int64_t refused[] = {0, -1, INT64_MIN, INT64_C(0x80000000), INT64_C(0x100000010), INT64_MAX};
    for (const int64_t size : refused) {
        ASSERT_TRUE(create(4096));
        EXPECT_TRUE(holds(4096));
        EXPECT_EQ(std::count(address(), address() + 4096, 0), 4096);
        std::memset(address(), 0xEE, 4096);
        EXPECT_FALSE(create(size)) << size;
        EXPECT_TRUE(holds(0)) << size;
    }
}

TEST_F(MemoryBlockZORTest, ResizeKeepsWhatFits) {
    ASSERT_TRUE(resize(3));
    std::ranges::copy(hex("01 02 03"), address());
    for (const int64_t size : {8, 1 << 20, 4, 3}) {
        ASSERT_TRUE(resize(size));
        EXPECT_TRUE(holds(size));
        EXPECT_TRUE(same_bytes({address(), 3}, hex("01 02 03")));
        if (size > 3) address()[size - 1] = 1;
    }
    ASSERT_TRUE(resize(1));
    EXPECT_TRUE(holds(1));
    EXPECT_EQ(*address(), 1);
    const uint8_t* before = address();
    for (const int64_t size : {INT64_C(0), INT64_C(-1), INT64_MIN}) EXPECT_FALSE(resize(size)) << size;
    EXPECT_TRUE(holds(1) && address() == before);
}

TEST_F(MemoryBlockZORTest, AFailedAllocationIsReported) {
    if (kSanitized) GTEST_SKIP() << "the sanitizer's allocator does not fail";
#ifdef EMULATED
    GTEST_SKIP() << "NOT TESTED: an emulator ignores limits of memory";
#endif
    ASSERT_TRUE(create(16));
    const ObjectRef view = memory();
    EXPECT_FALSE(resize(INT64_MAX));
    // A size that is a small one when it is cut to 32 bits.
    if (sizeof(void*) == 4) {
        EXPECT_FALSE(resize(INT64_C(0x100000008)));
    }
    const Limit scarce(Limit::kMemory, 1 << 30);
    if (!scarce) GTEST_SKIP() << "NOT TESTED: this system has no limits of memory";
    EXPECT_FALSE(resize(INT32_MAX));
    EXPECT_TRUE(holds(16) && memory() == view);
    EXPECT_FALSE(create(INT32_MAX));
    EXPECT_TRUE(holds(0));
    EXPECT_FALSE(resize(INT32_MAX));
    EXPECT_TRUE(holds(0));
}

TEST_F(MemoryBlockZORTest, SizesReachBeyond32Bits) {
    if (kSanitized || sizeof(void*) == 4) GTEST_SKIP() << "needs the system's allocator and 64 bits";
    constexpr int64_t kFiveGib = INT64_C(5) << 30;
    ASSERT_TRUE(create(16));
    *address() = 0x5A;
    if (!resize(kFiveGib)) GTEST_SKIP() << "the system does not grant 5 GiB";
    EXPECT_TRUE(holds(kFiveGib));
    // The pages between are never touched.
    address()[kFiveGib - 1] = 0xA5;
    ASSERT_TRUE(resize(kFiveGib + 1));
    EXPECT_EQ(address()[kFiveGib - 1], 0xA5);
    // The way there that the README names.
    const ObjectRef part = block("..");
    const auto far = call_for<Pointer>(memory(), "AddressPtrZOR", {kFiveGib - 1});
    call(part, "CopyBytesFromMacPtrZOR", {far, 1, 1});
    EXPECT_EQ(bytes(part), hex("2e a5"));
    ASSERT_TRUE(resize(kFiveGib / 2));
    EXPECT_TRUE(holds(kFiveGib / 2));
    EXPECT_EQ(*address(), 0x5A);
}

TEST_F(MemoryBlockZORTest, TheViewIsSharedUntilTheMemoryChanges) {
    const std::function<void()> changes[] = {[&] { resize(32); }, [&] { create(16); }, [&] { create(-1); },
                                             [&] { call(self_, "Close"); }, [&] { self_ = {}; }};
    for (const auto& change : changes) {
        ASSERT_TRUE(create(16));
        const ObjectRef view = memory();
        EXPECT_EQ(memory(), view);
        const int32_t references = host().references(view.get());
        change();
        EXPECT_EQ(host().references(view.get()), references - 1) << "the instance's own reference";
    }
}

TEST_F(MemoryBlockZORTest, MembersOfBlocksWorkOnTheView) {
    ASSERT_TRUE(create(16));
    const ObjectRef view = memory();
    call(view, "FillBytesZOR", {4, 8, 0x11});
    call(view, "MultiplyUInt16ZOR", {2.0, 4, 4});
    EXPECT_TRUE(same_bytes({address(), 16}, hex("00 00 00 00 22 22 22 22 11 11 11 11 00 00 00 00")));
    EXPECT_EQ(call_for<uint64_t>(view, "AddressZOR"), uintptr_t(address()));
    call(self_, "Close");
    call(self_, "Close");
    EXPECT_TRUE(holds(0));
}

TEST_F(MemoryBlockZORTest, MemoryNeedsNoView) {
    self_ = {};
    start(Options{.without = {"PtrToMemoryBlock"}});
    self_ = host().new_instance("MemoryBlockZOR");
    EXPECT_TRUE(create(16) && resize(32) && address() && !memory());
    call(self_, "Close");
    EXPECT_TRUE(holds(0));
}

}  // namespace
