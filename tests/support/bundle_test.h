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
#include "tests/support/guarded.h"

// A test with a host and a bundle. At its end no reference may be open and no fault recorded.
class BundleTest : public testing::Test {
 protected:
    // Starts a host and loads a bundle; ends the one before.
    void start(minihost::Options options = {}, const std::filesystem::path& bundle = MINIHOST_BUNDLE);
    // Ends the host after checking its accounts.
    void stop();
    void TearDown() override;

    minihost::Host& host() { return *host_; }

    minihost::ObjectRef block(std::string_view bytes) { return host_->new_block(bytes); }
    minihost::ObjectRef block(const std::vector<uint8_t>& bytes);
    // A view of guarded bytes that reports their size, or another one.
    minihost::ObjectRef view(GuardedBytes& bytes);
    minihost::ObjectRef view(GuardedBytes& bytes, int32_t reported_size);
    std::vector<uint8_t> bytes(const minihost::ObjectRef& block);

    minihost::StringRef text(std::string_view bytes, uint32_t encoding = kTextEncodingUnknown) {
        return host_->new_string(bytes, encoding);
    }

    // Calls a member of an object; a nil object stands for a nil MemoryBlock.
    minihost::Value call(const minihost::ObjectRef& self, std::string_view name,
                         std::vector<minihost::Value> arguments = {});
    minihost::Value get(const minihost::ObjectRef& self, std::string_view property);
    void assign(const minihost::ObjectRef& self, std::string_view name,
                std::vector<minihost::Value> arguments, const minihost::Value& value);

    // The same, for the result that is expected.
    template <class Result>
    Result call_for(const minihost::ObjectRef& self, std::string_view name,
                    std::vector<minihost::Value> arguments = {}) {
        const minihost::Value value = call(self, name, std::move(arguments));
        if (const auto* result = std::get_if<Result>(&value)) return *result;
        if constexpr (std::is_same_v<Result, minihost::ObjectRef> ||
                      std::is_same_v<Result, minihost::StringRef>) {
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
    std::unique_ptr<minihost::Host> host_;
};

inline const uint32_t kUtf8 = *minihost::encoding_number("UTF-8");

// What members report.
inline constexpr const char* kNilBlock = "NilObjectException: memoryblock is nil";
inline constexpr const char* kNilPointer = "NilObjectException: ptr is nil";
inline constexpr const char* kNegativeOffset = "UnsupportedOperationException: offset < 0";

// The 32-bit numbers at which a range rule can go wrong, for a block of `size` units.
std::vector<int32_t> extremes(int32_t size);
