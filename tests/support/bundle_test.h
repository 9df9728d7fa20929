// The set-up of tests that call members as a host program does.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "minihost/library/host.h"
#include "minihost/platform/files.h"
#include "tests/support/guarded.h"

using minihost::Host;
using minihost::ObjectRef;
using minihost::Options;
using minihost::Pointer;
using minihost::StringRef;
using minihost::Value;
// Narrow strings are paths of another encoding on Windows.
using minihost::platform::path_named;
using Bytes = std::vector<uint8_t>;

// A test with a host and a bundle. At its end no reference may be open and no fault recorded.
class BundleTest : public testing::Test {
 protected:
    // Starts a host and loads a bundle; ends the one before.
    void start(Options options = {}, const std::filesystem::path& bundle = path_named(MINIHOST_BUNDLE));
    // Ends the host after checking its accounts.
    void stop();
    void TearDown() override;

    Host& host() { return *host_; }

    ObjectRef block(std::string_view bytes) { return host_->new_block(bytes); }
    ObjectRef block(const Bytes& bytes);
    // A view of guarded bytes that reports their size, or another one.
    ObjectRef view(GuardedBytes& bytes);
    ObjectRef view(GuardedBytes& bytes, int32_t reported_size);
    Bytes bytes(const ObjectRef& block);

    StringRef text(std::string_view bytes, uint32_t encoding = kTextEncodingUnknown) {
        return host_->new_string(bytes, encoding);
    }

    // Calls a member of an object; a nil object stands for a nil MemoryBlock.
    Value call(const ObjectRef& self, std::string_view name, std::vector<Value> arguments = {});
    Value get(const ObjectRef& self, std::string_view property);
    void assign(const ObjectRef& self, std::string_view name, std::vector<Value> arguments,
                const Value& value);

    // The same, for the result that is expected.
    template <class Result>
    Result call_for(const ObjectRef& self, std::string_view name, std::vector<Value> arguments = {}) {
        const Value value = call(self, name, std::move(arguments));
        if (const auto* result = std::get_if<Result>(&value)) return *result;
        if constexpr (std::is_same_v<Result, ObjectRef> || std::is_same_v<Result, StringRef>) {
            if (std::holds_alternative<std::monostate>(value)) return {};
        }
        ADD_FAILURE() << name << " returned a value of another type";
        return {};
    }

    // The host exception that a call raised, as "Class: message"; "" when it raised none.
    template <class Call>
    std::string raised(Call&& call) {
        try {
            call();
        } catch (const minihost::HostException& exception) {
            EXPECT_EQ(exception.error_number, 0);
            return exception.what();
        }
        return "";
    }

 private:
    std::unique_ptr<Host> host_;
};

// A test of the bundle's members on an ordinary host.
class MemberTest : public BundleTest {
 protected:
    void SetUp() override { start(); }

    // For every declared parameter without a default a value of its type: numbers are `number`, blocks and
    // addresses those of `block`.
    std::vector<Value> arguments_for(const minihost::Method& method, const ObjectRef& block, int32_t number);
};

inline const uint32_t kUtf8 = *minihost::encoding_number("UTF-8");

// What members report.
inline constexpr const char* kNilBlock = "NilObjectException: memoryblock is nil";
inline constexpr const char* kNilPointer = "NilObjectException: ptr is nil";
inline constexpr const char* kNegativeOffset = "UnsupportedOperationException: offset < 0";

// The 32-bit numbers at which a range rule can go wrong, for a block of `size` units.
std::vector<int32_t> extremes(int32_t size);
