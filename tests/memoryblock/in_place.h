// Members that change a range of their block in place: every extreme range against a model.
#pragma once

#include <algorithm>

#include "tests/support/bundle_test.h"

struct InPlaceMember {
    const char* name;
    std::vector<minihost::Value> more;  // arguments after the offset and the length
    int64_t rest;                       // lengths up to this one stand for all that follows
    const char* raised;                 // for a nil block
    int32_t units;                      // of which a byte has so many, for the offset and the length
    void (*change)(std::span<uint8_t> bytes, size_t first, size_t count);  // what is done to a range inside
};
inline constexpr int64_t kNoLength = INT64_MIN;

class InPlaceTest : public BundleTest {
 protected:
    void SetUp() override { start(); }

    void check(const InPlaceMember& member) {
        const int32_t size = kBytes * member.units;
        for (const int32_t offset : extremes(size)) {
            for (const int32_t length : extremes(size)) {
                SCOPED_TRACE(testing::Message() << member.name << " at " << offset << ", length " << length);
                for (const int32_t reported_size : {kBytes, 0, -1}) {
                    for (const auto side : GuardedBytes::kBothSides) {
                        ASSERT_NO_FATAL_FAILURE(check(member, offset, length, reported_size, side));
                    }
                }
                EXPECT_EQ(outcome(member, {}, offset, length), member.raised);
                EXPECT_EQ(outcome(member, host().new_view(nullptr, kBytes), offset, length), "");
            }
        }
    }

 private:
    static constexpr int32_t kBytes = 9;

    std::string outcome(const InPlaceMember& member, const minihost::ObjectRef& block, int32_t offset,
                        int32_t length) {
        std::vector<minihost::Value> arguments = {offset, length};
        arguments.insert(arguments.end(), member.more.begin(), member.more.end());
        return raised([&] { call(block, member.name, arguments); });
    }

    void check(const InPlaceMember& member, int32_t offset, int32_t length, int32_t reported_size,
               GuardedBytes::Side side) {
        const int64_t left = int64_t(kBytes) * member.units - offset;
        int64_t count = length;
        if (length <= member.rest) count = reported_size > 0 ? left : 0;
        if (reported_size > 0) count = std::min(count, left);
        // With an unknown size, a range that leaves the memory is the caller's mistake.
        if (offset >= 0 && count > std::max<int64_t>(left, 0)) return;

        GuardedBytes memory(kBytes, side, random_);
        std::vector<uint8_t> expected = memory.copy();
        if (offset >= 0 && count > 0) member.change(expected, size_t(offset), size_t(count));
        EXPECT_EQ(outcome(member, view(memory, reported_size), offset, length), "");
        ASSERT_TRUE(same_bytes(memory.bytes(), expected)) << "reported size " << reported_size;
    }

    Random random_;
};
