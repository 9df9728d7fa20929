// What bundles do wrong, and what happens where memory runs out: nothing of it ends the program without a
// word.
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "minihost/library/crashes.h"
#include "minihost/library/trace.h"
#include "tests/minihost/failing_allocations.h"
#include "tests/minihost/host_operations.h"
#include "tests/support/system.h"

using namespace minihost;

namespace {

const std::string kHostile = HOSTILE_BUNDLE;

Place place_in_script() { return {"script.rbs", 12}; }

class HostileBundle : public testing::Test {
 protected:
    void load() { host_.load(path_named(kHostile)); }
    Host host_;
};

TEST_F(HostileBundle, CrashesNameBundleMemberAndPlace) {
    GTEST_FLAG_SET(death_test_style, "fast");
    load();
    const auto ends = [&](auto call, const std::string& message) {
        EXPECT_EXIT(
            {
                report_crashes(70, place_in_script);
                call();
            },
            testing::ExitedWithCode(70), "^script.rbs:12: " + kHostile + " crashed in " + message + "\n$");
    };
    ends([&] { host_.call_global("crash"); }, "Crash .segmentation fault.");
    ends([&] { host_.call_global("Abort"); }, "Abort .abort.");
    ends([&] { host_.call_global("OverflowStack"); }, "OverflowStack .segmentation fault.");
    ends([&] { host_.new_instance("CrashAtBirth"); }, "the constructor of CrashAtBirth .segmentation fault.");
    ends([&] { host_.new_instance("CrashAtDeath"); }, "the destructor of CrashAtDeath .segmentation fault.");
    ends(
        [&] {
            set_variable("HOSTILE", "crash");
            host_.load(path_named(kHostile));
        },
        "REALPluginMain .segmentation fault.");
#ifndef EMULATED  // an emulator has a word of its own to say
    // The host's own crashes are nobody else's.
    EXPECT_EXIT(
        {
            report_crashes(70, place_in_script);
            std::abort();
        },
        testing::KilledBySignal(SIGABRT), "^$");
#endif
}

TEST_F(HostileBundle, CppExceptionsAreCaughtAndNamed) {
    set_variable("HOSTILE", "throw");
    EXPECT_EQ(thrown<LoadError>([&] { load(); }),
              "REALPluginMain of " + kHostile + " threw a C++ exception of an unknown type");
    set_variable("HOSTILE", nullptr);
    load();
    EXPECT_EQ(thrown<BundleError>([&] { host_.call_global("ThrowNumber"); }),
              "ThrowNumber of " + kHostile + " threw a C++ exception of an unknown type");
    EXPECT_EQ(thrown<BundleError>([&] { host_.call_global("ThrowError"); }),
              "ThrowError of " + kHostile + " threw a C++ exception: no way");
    const std::string birth =
        "the constructor of ThrowAtBirth of " + kHostile + " threw a C++ exception: no way";
    EXPECT_EQ(thrown<BundleError>([&] { host_.new_instance("ThrowAtBirth"); }), birth);
    EXPECT_EQ(host_.faults(), std::vector<std::string>{});
    // A bundle that makes such an instance gets none.
    const auto make = operation<REALobject(const char*)>("PluginNewInstance");
    EXPECT_EQ(make("ThrowAtBirth"), nullptr);
    EXPECT_TRUE(host_.new_instance("ThrowAtDeath"));
    EXPECT_EQ(host_.faults(),
              (std::vector<std::string>{
                  "PluginNewInstance: " + birth,
                  "release: the destructor of ThrowAtDeath of " + kHostile + " threw a C++ exception: no way",
              }));
    EXPECT_EQ(host_.open_references(), std::vector<std::string>{});
    EXPECT_EQ(host_.state().running, nullptr);
}

TEST_F(HostileBundle, RegistersWhileItIsCalled) {
    load();
    const Method* first = &host_.globals().front();
    EXPECT_EQ(host_.call_global("RegisterGlobals", std::vector<Value>{1000}), Value(1000));
    EXPECT_EQ(&host_.globals().front(), first);
    EXPECT_EQ(first->declaration.name, "Crash");
    EXPECT_THROW(host_.call_global("Late"), BundleError);

    host_.call_global("ExtendUnknown");
    EXPECT_EQ(host_.faults(), std::vector<std::string>{"an extension: there is no class Nowhere"});
    for (const REALclassDefinition* record : host_.registered_classes())
        EXPECT_TRUE(host_.find_class(record->name)) << record->name;
}

// Each host operation, with each of its allocations failing in turn.
TEST(HostWithoutMemory, OperationsAnswerNilOrNothing) {
    Host host;
    const ObjectRef block = host.new_block("bytes");
    const StringRef text =
        host.new_string("text that is longer than a string's own room for bytes", *encoding_number("UTF-8"));
    const ObjectRef exception = host.new_instance("IOException");
    const auto new_block = operation<REALobject(int32_t)>("newMemoryBlock");
    const auto build = operation<REALstring(const char*, int32_t)>("REALBuildString");
    const auto convert = operation<REALstring(REALstring, uint32_t)>("REALConvertString");
    const auto make = operation<REALobject(const char*)>("PluginNewInstance");
    const auto unlock = operation<void(REALobject)>("REALUnlockObject");
    const auto string_data =
        operation<REALboolean(REALstring, uint32_t, REALstringData*)>("PluginGetStringData");
    const auto dispose = operation<void(REALstringData*)>("PluginDisposeStringData");
    const auto load_global = operation<void*(void*, const char*)>("REALLoadGlobalMethod");
    const auto from_spec = operation<REALobject(const FSSpec*)>("FolderItemFromFSSpec");
    const auto to_spec = operation<void(FSSpec*, REALobject)>("REALFSSpecFromFolderItem");
    const auto add_method = operation<void(REALmethodDefinition*)>("PluginRegisterMethod");
    const ObjectRef item = host.new_folder_item("/a/path/that/is/longer/than/a/string/keeps/itself");
    FSSpec spec = {};
    to_spec(&spec, item.get());
    REALmethodDefinition record = {reinterpret_cast<void (*)()>(+[] {}),
                                   nullptr,
                                   "WithAnUncommonlyLongName(number as Integer)",
                                   4,
                                   nullptr,
                                   0};
    const char16_t message[] = u"a message that is longer than a string keeps in itself";

    // Whether it could do its work; what it made is given back.
    const std::pair<const char*, std::function<bool()>> operations[] = {
        {"newMemoryBlock", [&] { return bool(ObjectRef::adopt(new_block(8))); }},
        {"REALBuildString",
         [&] {
             return bool(
                 StringRef::adopt(build(reinterpret_cast<const char*>(message), int32_t(sizeof message))));
         }},
        {"REALConvertString",
         [&] { return bool(StringRef::adopt(convert(text.get(), kTextEncodingMacRoman))); }},
        {"PluginNewInstance", [&] { return bool(ObjectRef::adopt(make("IOException"))); }},
        {"PluginGetStringData",
         [&] {
             REALstringData data = {};
             if (!string_data(text.get(), kTextEncodingMacRoman, &data)) return false;
             dispose(&data);
             return true;
         }},
        {"REALLoadGlobalMethod",
         [&] { return load_global(nullptr, "LenB( s as string ) as integer") != nullptr; }},
        {"FolderItemFromFSSpec", [&] { return bool(ObjectRef::adopt(from_spec(&spec))); }},
        {"REALFSSpecFromFolderItem",
         [&] {
             FSSpec written = {};
             to_spec(&written, item.get());
             return written.bytes[0] != 0;
         }},
        {"PluginRegisterMethod",
         [&] {
             const size_t before = host.globals().size();
             add_method(&record);
             return host.globals().size() == before + 1;
         }},
    };
    for (const auto& [key, work] : operations) {
        bool done = false;
        int failing = 0;
        for (; !done && failing < 200; ++failing) {
            allocations_left = failing;
            done = work();
            allocations_left = -1;
        }
        EXPECT_TRUE(done) << key;
        EXPECT_GT(failing, 1) << key << " allocates";
    }
    // A fault that cannot be written down is lost.
    const size_t faults = host.faults().size();
    allocations_left = 0;
    unlock(nullptr);
    allocations_left = -1;
    EXPECT_EQ(host.faults().size(), faults);
    EXPECT_EQ(host.open_references().size(), 4u);
}

// Addresses differ from run to run, and are the only hexadecimal numbers with a small x.
std::string without_addresses(std::string text) {
    for (size_t at = 0; (at = text.find("0x", at)) != text.npos;) {
        const size_t end = text.find_first_not_of("0123456789abcdef", at + 2);
        text.replace(at, end - at, "ADDRESS");
    }
    return text;
}

TEST(HostTrace, NamesObjectsStringsEncodingsAndRecords) {
    std::ostringstream out;
    Options options;
    options.trace = trace_to(out);
    Host host(std::move(options));
    host.load(path_named(kHostile));
    out.str("");
    const auto make = operation<REALobject(const char*)>("PluginNewInstance");
    const auto lock = operation<void(REALobject)>("REALLockObject");
    const auto unlock = operation<void(REALobject)>("REALUnlockObject");
    const auto build = operation<REALstring(const char*, int32_t)>("REALBuildString");
    const auto encode = operation<void(REALstring, uint32_t)>("REALSetStringEncoding");
    const REALobject exception = make("IOException");
    lock(exception);
    unlock(exception);
    unlock(exception);
    unlock(exception);
    make(nullptr);
    const StringRef text = StringRef::adopt(build("a\nb", 3));
    encode(text.get(), kTextEncodingUS_ASCII);
    encode(text.get(), kTextEncodingUnknown);
    operation<double()>("REALGetRBVersion")();
    EXPECT_EQ(host.call_global("RegisterGlobals", std::vector<Value>{1}), Value(1));
    EXPECT_EQ(without_addresses(out.str()),
              "trace: PluginNewInstance(\"IOException\") = IOException#1\n"
              "trace: REALLockObject(IOException#1)\n"
              "trace: REALUnlockObject(IOException#1)\n"
              "trace: REALUnlockObject(IOException#1)\n"
              "trace: REALUnlockObject(ADDRESS)\n"
              "trace: PluginNewInstance(nil) = nil\n"
              "trace: REALBuildString(ADDRESS, 3) = String \"a\\x0Ab\"\n"
              "trace: REALSetStringEncoding(String \"a\\x0Ab\", US-ASCII)\n"
              "trace: REALSetStringEncoding(String \"a\\x0Ab\", no encoding)\n"
              "trace: REALGetRBVersion() = 2013.04\n"
              "trace: RegisterGlobals: PluginRegisterMethod(\"Late\")\n");
}

// More hosts than descriptors, each with static data of its own.
TEST(HostImages, AreFreshEachTime) {
    for (int round = 0; round < 100; ++round) {
        Host host;
        host.load(path_named(PROBE_BUNDLE));
        ASSERT_EQ(host.globals().size(), 6u);
    }
}

}  // namespace
