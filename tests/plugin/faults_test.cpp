// A table of faults, made and not written out: every host version x each host operation missing, late or failing x
// every member, on blocks of known, unknown and negative size, overlapping ones, one without data, and nil; and every
// member with each of its allocations failing in turn. The model says what each call must return, raise, write and
// leave behind (fuzzers/model.h).
#include <gtest/gtest.h>
#ifdef SANITIZED
#include <sanitizer/lsan_interface.h>
#endif

#include "fuzzers/world.h"

using fuzz::Answer;
using fuzz::Argument;
using fuzz::HostKind;
using fuzz::Member;
using fuzz::Operation;
using fuzz::World;
using minihost::Kind;

namespace {

const std::vector<uint8_t> kBytes = [] {
    std::vector<uint8_t> bytes(160);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = uint8_t(i * i + i / 7);
    return bytes;
}();

#ifdef SANITIZED
// A bundle is put back by its static data, and so forgets what the start allocated.
using Forgetful = __lsan::ScopedDisabler;
#else
struct Forgetful {};
#endif

class Faults : public testing::Test, Forgetful {
 protected:
    void begin(const HostKind& kind) {
        world_.begin(kind);
        world_.slot(0).fill(kBytes, true);
        world_.slot(1).fill(std::span(kBytes).subspan(3, 90), false);
        world_.set_block(0, 0, 0, kBytes.size(), int32_t(kBytes.size()));
        world_.set_block(1, 1, 0, 90, 0);
        world_.set_block(2, 0, 40, 100, -1);
        world_.set_text(0, "wxyz", kTextEncodingUnknown);
        world_.set_text(1, "\xE9-\xE9-", kTextEncodingUnknown);
        world_.set_text(2, "\xC3\xA9xyz", *minihost::encoding_number("UTF-8"));
    }

    // The n-th argument of a call: small numbers, or one that is refused; each text, each block, nil now and then.
    Argument argument(const minihost::Parameter& parameter, size_t n, size_t variant) {
        Argument result;
        switch (parameter.type.kind) {
            case Kind::Integer:
                if (parameter.name.ends_with("Handle")) return world_.handle_argument(variant % 4);
                if (parameter.name == "BitSize") return World::integer(variant % 2 ? 16 : 32);
                return World::integer(variant % 5 == 4 ? -1 : int32_t((n + variant) % 3 + (n % 2) * 4));
            case Kind::Int64:
                result.word.int64 = variant % 5 == 4 ? -1 : 16;
                return result;
            case Kind::Double:
                result.word.number = 1.5;
                return result;
            case Kind::Boolean:
                result.word.boolean = variant % 2;
                return result;
            case Kind::Ptr:
                return world_.address_argument(variant % 7 == 6 ? World::kSlots : n % World::kSlots, 1);
            case Kind::String:
                return world_.text_argument(variant % (World::kTexts + 1));
            default:
                if (parameter.type.class_name == "FolderItem")
                    return world_.item_argument(variant % (World::kItems + 1));
                return world_.block_argument((variant + 1) % (World::kBlocks + 1));
        }
    }

    std::string call(const Member& member, size_t variant, size_t failing_allocation = 0) {
        std::vector<Argument> arguments;
        for (size_t n = 0; n < member.parameters.size(); ++n)
            arguments.push_back(argument(member.parameters[n], n, variant));
        const fuzz::Block* self = world_.block_argument(variant % (World::kBlocks + 1)).block;
        std::string wrong = world_.call(member, self, arguments, failing_allocation);
        made_ += !world_.skipped();
        return wrong;
    }

    static constexpr size_t kVariants = 20;  // each block and nil with each text and nil

    World world_{FUZZED_BUNDLE};
    size_t made_ = 0;
};

TEST_F(Faults, OfHostOperations) {
    for (size_t version = 0; version < std::size(fuzz::kVersions); ++version) {
        for (size_t operation = 0; operation < fuzz::kOperations; ++operation) {
            for (const Answer answer : {Answer::kMissing, Answer::kLate, Answer::kFailing}) {
                HostKind kind{.version = version};
                kind.answers[operation] = answer;
                for (size_t member = 0; member < world_.members().size(); ++member) {
                    for (size_t variant = 0; variant < kVariants; ++variant) {
                        // What is late is late for each of the first calls.
                        if (variant == 0 || answer == Answer::kLate) begin(kind);
                        ASSERT_EQ(call(world_.members()[member], variant), "");
                    }
                    ASSERT_EQ(world_.end(), "");
                }
            }
        }
    }
    EXPECT_GT(made_, 200000u);
}

TEST_F(Faults, OfAllocations) {
    size_t failures = 0;
    for (size_t version = 0; version < std::size(fuzz::kVersions); ++version) {
        for (const Answer data : {Answer::kWorks, Answer::kMissing}) {
            HostKind kind{.version = version};
            kind[Operation::kGetData] = data;
            for (size_t member = 0; member < world_.members().size(); ++member) {
                for (size_t variant = 0; variant < kVariants; ++variant) {
                    for (size_t failing = 1;; ++failing) {
                        begin(kind);
                        ASSERT_EQ(call(world_.members()[member], variant, failing), "");
                        ASSERT_EQ(world_.end(), "");
                        if (world_.skipped() || world_.allocations() < int(failing)) break;
                        ++failures;
                    }
                }
            }
        }
    }
    EXPECT_GT(failures, 100u);
}

}  // namespace
