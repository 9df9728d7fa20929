// Each allocation of the bundle at its start fails in turn: what then is missing, and that nothing else is.
#include <dlfcn.h>

#include <cstdlib>
#include <cstring>

#include "tests/support/bundle_test.h"

#ifndef SANITIZED  // the sanitizer has an allocator of its own, which ends the program

namespace {

int until_failure = 0;  // allocations of bundles; the one that reaches 0 fails
bool asked = false;     // whether this program's calloc is the one that is called

// Whether code of a bundle is asking: neither this program with its host nor the system's libraries.
bool from_bundle(const void* caller) {
    Dl_info asking = {};
    Dl_info here = {};
    if (!dladdr(caller, &asking) || !dladdr(&until_failure, &here)) return false;
    const std::string_view file = asking.dli_fname;
    return asking.dli_fbase != here.dli_fbase && file.find("/ld-linux") == std::string_view::npos &&
           file.find("/libc.so") == std::string_view::npos;
}

bool fails(const void* caller) { return until_failure > 0 && from_bundle(caller) && --until_failure == 0; }

template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// In the place of the C library's, for this program and all that it loads.
extern "C" void* calloc(size_t count, size_t size) noexcept {
    static auto* const real = next<void*(size_t, size_t)>("calloc");
    asked = true;
    return fails(__builtin_return_address(0)) ? nullptr : real(count, size);
}

extern "C" void* realloc(void* memory, size_t size) noexcept {
    static auto* const real = next<void*(void*, size_t)>("realloc");
    return fails(__builtin_return_address(0)) ? nullptr : real(memory, size);
}

namespace {

class AllocationTest : public BundleTest {
 protected:
    void SetUp() override {
        asked = false;
        void* volatile memory = std::calloc(1, 1);
        std::free(memory);
        if (!asked) GTEST_SKIP() << "allocations go past this program, as under Valgrind";
    }

    // Runs something while its `n`th allocation fails. False when there are fewer.
    template <class Action>
    bool failing(int n, Action&& action) {
        until_failure = n;
        action();
        return std::exchange(until_failure, 0) == 0;
    }
};

TEST_F(AllocationTest, OlderRecordsLackWhatCannotBeAllocated) {
    // For each class its record, its properties and its methods.
    for (int n = 1; n <= 6; ++n) {
        SCOPED_TRACE(n);
        EXPECT_TRUE(failing(n, [&] { start({.version = 2011.0}); }));
        const auto classes = host().registered_classes();
        std::map<std::string, std::pair<int32_t, int32_t>> counts;
        for (const REALclassDefinition* record : classes) {
            counts[record->name] = {record->propertyCount, record->methodCount};
            EXPECT_EQ(record->properties != nullptr, record->propertyCount > 0);
            EXPECT_EQ(record->methods != nullptr, record->methodCount > 0);
        }
        std::map<std::string, std::pair<int32_t, int32_t>> expected = {{"MemoryBlock", {1, 43}},
                                                                       {"MemoryBlockZOR", {3, 3}}};
        const char* name = n <= 3 ? "MemoryBlock" : "MemoryBlockZOR";
        if (n % 3 == 1) expected.erase(name);
        if (n % 3 == 2) expected[name].first = 0;
        if (n % 3 == 0) expected[name].second = 0;
        EXPECT_EQ(counts, expected);
        EXPECT_EQ(host().registered_globals().size(), 1u);
    }
    EXPECT_FALSE(failing(7, [&] { start({.version = 2011.0}); }));
}

}  // namespace

#endif
