// Slices, addresses and sizes.
#include <algorithm>

#include "tests/support/bundle_test.h"

namespace {

// For the host's "newMemoryBlock": a block that has a size but no data.
REALmemoryBlock block_without_data(int32_t size) {
    const ObjectRef result = Host::current().new_view(nullptr, size);
    minihost::retain(result.get());
    return static_cast<REALmemoryBlock>(result.get());
}

class SlicesTest : public MemberTest {
 protected:
    // The bytes of the block that a member returns; nothing for nil.
    std::optional<Bytes> slice(const ObjectRef& self, const char* member, std::vector<Value> arguments) {
        const auto result = call_for<ObjectRef>(self, member, std::move(arguments));
        if (!result) return {};
        EXPECT_EQ(host().references(result.get()), 1);
        return bytes(result);
    }
};

// The bytes from `first` to before `last`; nothing when there are none.
std::optional<Bytes> part(const Bytes& bytes, int64_t first, int64_t last) {
    const auto size = int64_t(bytes.size());
    if (first < 0 || first >= std::min(last, size)) return {};
    return Bytes(bytes.begin() + ptrdiff_t(first), bytes.begin() + ptrdiff_t(std::min(last, size)));
}

TEST_F(SlicesTest, AreThePartInsideTheBlock) {
    Random random;
    GuardedBytes memory(10, GuardedBytes::kEnd, random);
    const Bytes all = memory.copy();
    for (const int32_t number : extremes(10)) {
        EXPECT_EQ(slice(view(memory), "MidZOR", {number}), part(all, number, 10)) << number;
        EXPECT_EQ(slice(view(memory), "LeftZOR", {number}), part(all, 0, number)) << number;
        EXPECT_EQ(slice(view(memory), "RightZOR", {number}),
                  part(all, std::max(0, 10 - std::max(number, 0)), 10))
            << number;
        for (const int32_t length : extremes(10)) {
            EXPECT_EQ(slice(view(memory), "MidZOR", {number, length}),
                      part(all, number, int64_t(number) + length))
                << number << ", " << length;
        }
    }
    EXPECT_EQ(memory.copy(), all);
}

TEST_F(SlicesTest, OfNothingAreNil) {
    GuardedBytes memory(10);
    const ObjectRef whole = view(memory);
    for (const ObjectRef& empty :
         {view(memory, 0), view(memory, -1), view(memory, INT32_MIN), host().new_view(nullptr, 10)}) {
        EXPECT_EQ(slice(empty, "MidZOR", {0}), std::nullopt);
        EXPECT_EQ(slice(empty, "MidZOR", {0, 1}), std::nullopt);
        EXPECT_EQ(slice(empty, "LeftZOR", {1}), std::nullopt);
        EXPECT_EQ(slice(empty, "RightZOR", {1}), std::nullopt);
        EXPECT_EQ(slice(empty, "AppendZOR", {view(memory, 0)}), std::nullopt);
        // With data, a block without a size is the empty end of another one; a size without data is neither.
        const auto appended = host().block_data(empty.get()) ? std::optional(memory.copy()) : std::nullopt;
        EXPECT_EQ(slice(empty, "AppendZOR", {whole}), appended);
        EXPECT_EQ(slice(whole, "AppendZOR", {empty}), appended);
    }
    const std::pair<const char*, std::vector<Value>> calls[] = {
        {"MidZOR", {-1}},  {"MidZOR", {0, 0}},           {"LeftZOR", {0}},
        {"RightZOR", {0}}, {"AppendZOR", {ObjectRef()}}, {"AppendZOR", {whole}}};
    for (const auto& [member, arguments] : calls) {
        EXPECT_EQ(raised([&, &name = member, &given = arguments] { call({}, name, given); }), kNilBlock)
            << member;
    }
    EXPECT_EQ(raised([&] { call(whole, "AppendZOR", {ObjectRef()}); }), kNilBlock);
}

TEST_F(SlicesTest, RightAsksForNoDataOfABlockWithoutBytes) {
    std::vector<std::string> asked;
    Options options;
    options.trace = [&](const minihost::OperationCall& call) { asked.emplace_back(call.key); };
    start(options);
    const ObjectRef empty = block("");
    asked.clear();
    EXPECT_EQ(slice(empty, "RightZOR", {1}), std::nullopt);
    EXPECT_EQ(std::ranges::count(asked, "memoryBlockGetSize"), 1);
    EXPECT_EQ(std::ranges::count(asked, "memoryBlockGetPtr"), 0);
}

TEST_F(SlicesTest, AppendedBlocksFollowOneAnother) {
    const ObjectRef abc = block("abc");
    GuardedBytes memory(4);
    EXPECT_EQ(slice(abc, "AppendZOR", {block("de")}), hex("61 62 63 64 65"));
    EXPECT_EQ(slice(abc, "AppendZOR", {abc}), hex("61 62 63 61 62 63"));
    // No block can hold these, so their bytes are not even looked at.
    EXPECT_EQ(slice(view(memory, INT32_MAX), "AppendZOR", {view(memory, INT32_MAX)}), std::nullopt);
    EXPECT_EQ(slice(view(memory, INT32_MAX - 1), "AppendZOR", {view(memory, 1)}), std::nullopt);
}

TEST_F(SlicesTest, ABlockThatCannotBeMadeIsReported) {
    GuardedBytes memory(10);
    const auto text = [&](int32_t size, const char* member, std::vector<Value> arguments) {
        return raised([&] { call(view(memory, size), member, arguments); });
    };
    const auto message = [](int32_t size) {
        return "OutOfMemoryException: Failed to allocate a memoryblock with " + std::to_string(size) +
               " bytes in size.";
    };
    EXPECT_EQ(text(INT32_MAX, "MidZOR", {0}), message(INT32_MAX));
    EXPECT_EQ(text(INT32_MAX, "LeftZOR", {INT32_MAX}), message(INT32_MAX));

    start(Options{.without = {"newMemoryBlock"}});
    EXPECT_EQ(text(10, "MidZOR", {3, 4}), message(4));
    EXPECT_EQ(text(10, "RightZOR", {99}), message(10));
    EXPECT_EQ(text(0, "AppendZOR", {view(memory)}), message(10));
    EXPECT_EQ(slice(view(memory), "AppendZOR", {view(memory)}), std::nullopt);

    // A new block without data is given back, which the accounts show.
    start(Options{.replace = {{"newMemoryBlock", reinterpret_cast<void*>(block_without_data)}}});
    EXPECT_EQ(slice(view(memory), "LeftZOR", {3}), std::nullopt);
    EXPECT_EQ(slice(view(memory), "AppendZOR", {view(memory)}), std::nullopt);
}

TEST_F(SlicesTest, AddressesReachToJustPastTheEnd) {
    GuardedBytes memory(10);
    for (const int32_t size : {10, 0, -1, INT32_MIN}) {
        const ObjectRef self = view(memory, size);
        EXPECT_EQ(get(self, "BytesZOR"), Value(size));
        for (const int64_t offset :
             {INT64_MIN, INT64_C(-1), INT64_C(0), INT64_C(10), INT64_C(11), INT64_C(1) << 32, INT64_MAX}) {
            const bool inside = offset >= 0 && (size <= 0 || offset <= size);
            const uintptr_t expected = inside ? uintptr_t(memory.data()) + uintptr_t(offset) : 0;
            EXPECT_EQ(call_for<uint64_t>(self, "AddressZOR", {offset}), expected) << size << ", " << offset;
            EXPECT_EQ(uintptr_t(call_for<Pointer>(self, "AddressPtrZOR", {offset}).address), expected)
                << size << ", " << offset;
        }
    }
    EXPECT_EQ(call_for<uint64_t>({}, "AddressZOR", {INT64_C(5)}), 0U);
    EXPECT_EQ(call_for<Pointer>({}, "AddressPtrZOR", {INT64_C(5)}), Pointer{});
    EXPECT_EQ(get({}, "BytesZOR"), Value(0));
    for (const int32_t address : {0, 1, INT32_MAX, INT32_MIN, -1}) {
        const Value made = host().call_global("NewMemoryBlockFromPtrZOR", std::vector<Value>{address});
        const ObjectRef result = std::get<ObjectRef>(made);
        EXPECT_EQ(result ? uintptr_t(host().block_data(result.get())) : 0, uint32_t(address));
    }
}

}  // namespace
