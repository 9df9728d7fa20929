// Members that change a range of their block: every extreme range against a model.
#pragma once

#include <algorithm>

#include "tests/support/bundle_test.h"

inline constexpr int64_t kNoLength = INT64_MIN;

struct RangeMember {
    const char* name;
    std::vector<Value> before = {};  // its arguments before the offset and the length,
    std::vector<Value> after = {};   // and after them
    std::function<void(std::span<uint8_t> bytes, size_t first, size_t count)> change;  // what is done inside
    int64_t rest = 0;                        // lengths up to this one stand for all that follows
    int32_t units = 1;                       // of which a byte has so many, for the offset and the length
    int32_t group = 1;                       // a length is rounded up to a multiple of this
    const char* nil = kNilBlock;             // raised for a nil block
    const char* negative = kNegativeOffset;  // and for a negative offset
    Value result = {};
};

// What is done to each whole unit of a range; `index` counts the units from its start.
inline auto each_unit(size_t size, std::function<void(uint8_t* unit, size_t index)> change) {
    return [=](std::span<uint8_t> bytes, size_t first, size_t count) {
        for (size_t i = 0; i < count / size; ++i) change(bytes.data() + first + i * size, i);
    };
}

class RangeTest : public MemberTest {
 protected:
    static constexpr int32_t kBytes = 11;

    void check(const RangeMember& member) {
        const int32_t size = kBytes * member.units;
        for (const int32_t offset : extremes(size)) {
            for (const int32_t length : extremes(size)) {
                SCOPED_TRACE(testing::Message() << member.name << " at " << offset << ", length " << length);
                const char* raised = offset < 0 ? member.negative : "";
                EXPECT_EQ(outcome(member, {}, offset, length), member.nil);
                EXPECT_EQ(outcome(member, host().new_view(nullptr, kBytes), offset, length), raised);
                for (const int32_t reported_size : {kBytes, 0, -1}) {
                    for (const auto side : GuardedBytes::kBothSides) {
                        const int64_t count = count_inside(member, offset, length, reported_size);
                        // With an unknown size, a range that leaves the memory is the caller's mistake.
                        if (offset >= 0 && count > std::max<int64_t>(int64_t{size} - offset, 0)) continue;
                        GuardedBytes memory(kBytes, side, random_);
                        Bytes expected = memory.copy();
                        if (offset >= 0 && count > 0) member.change(expected, size_t(offset), size_t(count));
                        EXPECT_EQ(outcome(member, view(memory, reported_size), offset, length), raised);
                        ASSERT_TRUE(same_bytes(memory.bytes(), expected))
                            << "reported size " << reported_size;
                        ASSERT_TRUE(memory.untouched_around());
                    }
                }
            }
        }
    }

 private:
    static int64_t count_inside(const RangeMember& member, int32_t offset, int32_t length, int32_t reported) {
        const int64_t left = int64_t{kBytes} * member.units - offset;
        int64_t count = length;
        if (length <= member.rest) count = reported > 0 ? left : 0;
        if (count > 0) count = (count + member.group - 1) / member.group * member.group;
        return reported > 0 ? std::min(count, left) : count;
    }

    std::string outcome(const RangeMember& member, const ObjectRef& block, int32_t offset, int32_t length) {
        std::vector<Value> arguments = member.before;
        arguments.insert(arguments.end(), {offset, length});
        arguments.insert(arguments.end(), member.after.begin(), member.after.end());
        return raised([&] { EXPECT_EQ(call(block, member.name, arguments), member.result); });
    }

    Random random_;
};
