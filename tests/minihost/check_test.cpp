// The checks of bundles: each of them fails for its fault and for no other, and the command.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <sstream>

#include "minihost/check/apart.h"
#include "minihost/check/catalogue.h"
#include "minihost/check/command.h"
#include "minihost/program/session.h"
#include "tests/support/system.h"

using namespace minihost;
using namespace minihost::check;

namespace {

using Outcomes = std::map<std::string, Outcome>;

Outcomes outcomes(const Subject& subject) {
    std::vector<const Check*> checks;
    for (const Check& check : catalogue()) checks.push_back(&check);
    Outcomes found;
    run(subject, checks, [&](const Check& check, const Outcome& outcome) { found[check.name] = outcome; });
    return found;
}

// "calls: Sum: segmentation fault", a line for each finding and for each check that was skipped.
std::string failures(const Outcomes& outcomes) {
    std::string lines;
    for (const auto& [name, outcome] : outcomes) {
        if (!outcome.skipped.empty()) lines += name + " skipped\n";
        for (const Finding& finding : outcome.findings) lines += name + ": " + finding.text + '\n';
    }
    return lines;
}

std::string outcome_of(const char* fault) {
    set_variable("FAULT", fault);
    Subject subject{.bundle = path_named(FAULTY_BUNDLE), .calls = 60};
    if (std::string(fault) == "hang") subject.limit = std::chrono::milliseconds(1000);
    const std::string lines = failures(outcomes(subject));
    set_variable("FAULT", nullptr);
    return lines;
}

// The sanitizers end a crash in their own way, and a great allocation too.
class CheckBundles : public testing::Test {
 protected:
    void SetUp() override {
#ifdef SANITIZED
        GTEST_SKIP() << "crashes are the sanitizers' here";
#endif
    }
};

TEST_F(CheckBundles, FailTheirCheckAndNoOther) {
#ifdef _WIN32
    GTEST_SKIP()
        << "NOT TESTED: crashes by the dozen want processes of their own; windows.sh has some, in one each";
#endif
    const struct {
        const char* fault;
        std::string checks;   // that fail, no others
        std::string finding;  // that it has
    } cases[] = {
        {"key", "keys",
         "asks for \"memoryBlockGetSzie\", which minihost does not know; did you mean memoryBlockGetSize?"},
        {"announcement", "versions", "host version none: announces no version word"},
        {"version word", "versions", "host version 2012: announces 12 to a host that knows up to 10"},
        {"record version", "versions",
         "host version 2013: announces 11, but the record of MemoryBlock has 10"},
        {"duplicate", "duplicates", "registers Clear twice with the same parameters"},
        {"constructor", "instances", "an object of Own: segmentation fault"},
        {"destructor", "instances",
         "the destructor of Own of " FAULTY_BUNDLE " threw a C++ exception: never dies"},
        {"crash", "calls", "Sum: segmentation fault"},
        {"hang", "calls", "Sum: no end within 1 s"},
        {"exception", "calls", "Sum of " FAULTY_BUNDLE " threw a C++ exception: no block"},
        {"end", "calls", "Sum: exit status 3"},
        {"read behind", "bounds", "Sum: segmentation fault"},
        {"write in front", "bounds", "Clear: wrote at offset -1 of a block of"},
        {"write behind", "bounds", "Clear: segmentation fault"},
        {"lock", "references", "Clear: not given back: MemoryBlock"},
        {"repeat", "repeat", "Sum: another result, exception or content of a block for the same call"},
        {"old hosts", "old-hosts", "--host-version 2009.5: Sum: segmentation fault"},
        {"missing", "missing, late", "--without REALLockObject: Eight: segmentation fault"},
        {"late", "late", "REALUnlockString at the second request only: Sum: segmentation fault"},
        {"failing", "failing, missing, late", "newMemoryBlock giving nothing: Eight: segmentation fault"},
    };
    EXPECT_EQ(outcome_of(""), "");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const std::string found = outcome_of(c.fault);
        EXPECT_NE(found.find(c.finding), found.npos) << found;
        std::istringstream lines(found);
        for (std::string line; std::getline(lines, line);)
            EXPECT_NE(c.checks.find(line.substr(0, line.find(':'))), c.checks.npos) << line;
    }
}

// A reference that is given back too often takes the object from the caller: every later use is a fault too.
TEST_F(CheckBundles, AReferenceGivenBackTooOften) {
    const std::string found = outcome_of("unlock");
    EXPECT_NE(found.find("references: Clear: "), found.npos) << found;
}

TEST_F(CheckBundles, ABundleThatDoesNotLoadSkipsTheRest) {
    const std::string crashed = outcome_of("entry");
    EXPECT_TRUE(crashed.starts_with(
        "bounds skipped\ncalls skipped\ndeclarations: REALPluginMain: segmentation fault\nduplicates "
        "skipped\nentry: REALPluginMain: segmentation fault\nfailing skipped\n"))
        << crashed;
    const std::string declarations = outcome_of("declarations");
    EXPECT_NE(declarations.find(
                  "declarations: a global method: \"Broken(\", column 8: expected a parameter's name, "
                  "found the end\ndeclarations: a global method: \"5\", column 1: "),
              declarations.npos)
        << declarations;
    EXPECT_EQ(declarations.find("entry"), declarations.npos) << declarations;

    const std::string none = failures(outcomes({.bundle = path_named(NO_ENTRY_BUNDLE)}));
    EXPECT_NE(none.find("entry: " NO_ENTRY_BUNDLE ": no bundle, it has no entry point"), none.npos) << none;
    EXPECT_NE(none.find("exports: exports no_entry_point\nexports: does not export REALPluginMain\n"),
              none.npos)
        << none;
#ifdef _WIN32
    const char* needed = "libraries: needs WINMM.dll";
#else
    const char* needed = "libraries: needs libffi";
#endif
    EXPECT_NE(none.find(needed), none.npos) << none;
    const std::string text = failures(outcomes({.bundle = path_named(SOURCE_DIR "/README.md")}));
    EXPECT_NE(text.find("exports: the file is no whole image for this processor\n"), text.npos) << text;
}

// The scripts in findings are made of the same calls.
TEST_F(CheckBundles, CallsCanBePastedAsScripts) {
    Host host;
    host.load(path_named(MINIHOST_BUNDLE));
    std::ostringstream out;
    size_t run_scripts = 0;
    for (const Member& member : members_of(host)) {
        for (uint64_t seed = 0; seed < 40; ++seed) {
            const Call call = make_call(host, member, check::Random(seed));
            const std::string script = script_of(member, call);
            if (script.find("stands for") != script.npos) continue;
            try {
                Session(host, out).run("line", script);
            } catch (const std::exception& error) {  // which the member may raise
                EXPECT_NE(std::string(error.what()).find("Exception: "), std::string::npos)
                    << error.what() << '\n'
                    << script;
            }
            ++run_scripts;
        }
    }
    EXPECT_GT(run_scripts, 1500u);
}

TEST(CheckCalls, AreTheSameForTheSameSeed) {
    Host host;
    host.load(path_named(MINIHOST_BUNDLE));
    const Member member = members_of(host).front();
    const auto script = [&](uint64_t seed) {
        return script_of(member, make_call(host, member, check::Random(seed)));
    };
    EXPECT_EQ(script(7), script(7));
    EXPECT_EQ(check::Random(1).next(), 0x910A2DEC89025CC1u);
}

// Exit status and output.
std::pair<int, std::string> command(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "check");
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = run_command(int(pointers.size()), pointers.data());
    return {status, testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr()};
}

TEST_F(CheckBundles, TheBundlePassesWithNothingSkipped) {
    const auto [status, output] = command({MINIHOST_BUNDLE});
    EXPECT_EQ(status, 0) << output;
    EXPECT_NE(output.find("\n16 passed, 0 failed, 0 skipped in "), output.npos) << output;
    EXPECT_NE(output.find("\nok       bounds: 53 members, 200 calls each\n"), output.npos) << output;
}

TEST_F(CheckBundles, CommandChoosesChecksAndRefusesMistakes) {
    using Result = std::pair<int, std::string>;
    EXPECT_EQ(command({"--json", "--seed", "5", "--include", "dup*", "--include", "e*s", MINIHOST_BUNDLE,
                       "--exclude", "exports"}),
              Result(0, "{\"bundle\": \"" MINIHOST_BUNDLE
                        "\", \"seed\": 5, \"passed\": 1, \"failed\": 0, \"skipped\": 0, \"checks\": [\n"
                        "  {\"name\": \"duplicates\", \"result\": \"ok\", \"findings\": []}\n]}\n"));
    EXPECT_EQ(command({MINIHOST_BUNDLE, "--include", "cals"}),
              Result(2, "minihost check: --include \"cals\" names no check; did you mean calls?\n"));
    EXPECT_EQ(command({}), Result(2, "minihost check: BUNDLE is missing; see minihost check --help\n"));
    EXPECT_EQ(command({"nix.so"}), Result(2, "minihost check: there is no bundle nix.so\n"));
    EXPECT_EQ(command({MINIHOST_BUNDLE, "--exclude", "*"}), Result(2, "minihost check: no check is left\n"));
    const auto [status, list] = command({"--list"});
    EXPECT_EQ(status, 0);
    for (const Check& check : catalogue()) EXPECT_NE(list.find(check.description), list.npos);
    EXPECT_EQ(command({"--help"}).first, 0);
    EXPECT_EQ(
        command({"--calls", "0", MINIHOST_BUNDLE}),
        Result(2, "--calls: Value 0 not in range 1 to 10000000\nRun with --help for more information.\n"));
    const auto failed = command({"--include", "exports", "--json", NO_ENTRY_BUNDLE});
    EXPECT_EQ(failed.first, 1);
    EXPECT_NE(failed.second.find(
                  "\"result\": \"failed\", \"findings\": [{\"text\": \"exports no_entry_point\"}, {"),
              failed.second.npos)
        << failed.second;
}

// A line for each check, and below it what does not fit there: further findings, and the scripts that show
// them.
TEST_F(CheckBundles, CommandSaysWhatFailedAndWhatIsSkipped) {
    const std::string entry = NO_ENTRY_BUNDLE ": no bundle, it has no entry point REALPluginMain\n";
    const auto [status, text] =
        command({"--include", "entry", "--include", "exports", "--include", "calls", NO_ENTRY_BUNDLE});
    EXPECT_EQ(status, 1);
    EXPECT_TRUE(text.starts_with("FAILED   entry: " + entry +
                                 "FAILED   exports: 2 findings\n         - exports no_entry_point\n"
                                 "         - does not export REALPluginMain\n"
                                 "skipped  calls: the bundle cannot be loaded: " +
                                 entry + "0 passed, 2 failed, 1 skipped in "))
        << text;
    const auto skipped = command({"--include", "calls", "--json", NO_ENTRY_BUNDLE});
    EXPECT_EQ(skipped.first, 1);
    EXPECT_NE(skipped.second.find("\"result\": \"skipped\", \"reason\": \"the bundle cannot"), text.npos);
#ifndef _WIN32
    set_variable("FAULT", "exception");
    for (const bool json : {false, true}) {
        std::vector<std::string> arguments = {"--include", "calls", "--calls", "60", FAULTY_BUNDLE};
        if (json) arguments.emplace_back("--json");
        const std::string found = command(arguments).second;
        EXPECT_NE(found.find(json ? "\"script\": \"Dim " : "\n             Dim "), found.npos) << found;
    }
    set_variable("FAULT", nullptr);
#endif
}

}  // namespace
