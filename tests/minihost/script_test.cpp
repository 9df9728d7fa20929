// Scripts, run in this process: what they print, and what is said about mistakes.
#include <gtest/gtest.h>
#include <unistd.h>

#include <bit>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory_resource>
#include <sstream>

#include "minihost/program/files.h"
#include "minihost/program/help.h"
#include "minihost/program/json.h"
#include "minihost/program/picture.h"
#include "minihost/program/session.h"
#include "tests/minihost/host_operations.h"
#include "tests/support/bundle_test.h"
#include "tests/support/system.h"

using namespace minihost;
using namespace std::string_literals;
namespace fs = std::filesystem;

namespace {

// Runs in a folder of its own.
class Script : public BundleTest {
 protected:
    Script() {
        start();
        fs::create_directories(folder_);
        fs::current_path(folder_);
    }
    ~Script() override {
        fs::current_path(before_);
        fs::remove_all(folder_);
    }

    // What the script prints; after that the error that ended it, if one did.
    std::string run(const std::string& text, const Settings& settings = {}) {
        std::ostringstream out;
        try {
            Session(host(), out, settings).run("s", text);
        } catch (const std::runtime_error& error) {
            out << error.what() << '\n';
        }
        return out.str();
    }

    const fs::path before_ = fs::current_path();
    const fs::path folder_ = fs::temp_directory_path() / ("minihost_script" + std::to_string(getpid()));
};

}  // namespace

// Each paragraph of these files is a script. Its lines that begin with '> are the output that it should have.
// One file is for each system's own paths and messages.
TEST_F(Script, PrintsWhatStandsBesideIt) {
    const std::string_view mark = "'>";
#ifdef _WIN32
    const std::string_view other_system = "linux";
#else
    const std::string_view other_system = "windows";
#endif
    size_t count = 0;
    for (const auto& entry : fs::directory_iterator(path_named(SOURCE_DIR "/tests/minihost/scripts"))) {
        if (entry.path().stem() == other_system) continue;
        std::ifstream file(entry.path());
        std::string script;
        std::string expected;
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with(mark)) {
                expected += line.substr(std::min(line.size(), mark.size() + 1)) + '\n';
            } else if (!line.empty()) {
                script += line + '\n';
            }
            if (!line.empty() && file.peek() != EOF) continue;
            EXPECT_EQ(run(script, {.arguments = {"-x", "two"}}), expected) << entry.path() << '\n' << script;
            if (!script.empty()) ++count;
            script.clear();
            expected.clear();
        }
    }
    EXPECT_GT(count, 100u);
}

TEST_F(Script, TakesAnyBytes) {
    EXPECT_EQ(run("\xEF\xBB\xBFPrint 1"), "1\n");
    EXPECT_EQ(run("Print \x01"), "s:1:7: unexpected character \\x01\n");
    for (const char* cut : {"\xE2\x82", "\xC3", "\x80", "\xF0\x9F\x98", "\xF5\x80\x80\x80"}) {
        char shown[8];
        std::snprintf(shown, sizeof shown, "\\x%02X", unsigned(uint8_t(cut[0])));
        EXPECT_EQ(run("Print "s + cut), "s:1:7: unexpected character "s + shown + '\n');
    }
    EXPECT_EQ(run("Print \U0001F600"), "s:1:7: unexpected character \"\U0001F600\"\n");
    EXPECT_EQ(run("Print \x7F"), "s:1:7: unexpected character \\x7F\n");
    EXPECT_EQ(run("Print \"abc"), "s:1:7: the string has no closing quotation mark\n");
    EXPECT_EQ(run("Print 1\r\n"), "1\n");
}

TEST_F(Script, NamesTheRangeThatANumberLeaves) {
    const std::string integer = "Integer (-2147483648 to 2147483647)";
    const std::string int64 = "Int64 (-9223372036854775808 to 9223372036854775807)";
    const std::string uint64 = "UInt64 (0 to 18446744073709551615)";
    const std::pair<std::string, std::string> cases[] = {
        {"Dim i As Integer = 3000000000", "20: i takes " + integer + ", got 3000000000"},
        {"Dim i As Integer : i = 1e30", "24: i takes " + integer + ", got 1e+30"},
        {"Dim i As Int64 = 0 / 0", "20: i takes " + int64 + ", got nan"},
        {"Dim i As Int64 = 18446744073709551615", "18: i takes " + int64 + ", got 18446744073709551615"},
        {"Dim i As UInt64 = -1", "19: i takes " + uint64 + ", got -1"},
        {"Print 9223372036854775807 + 1", "27: 9223372036854775807 + 1 is outside " + int64},
        {"Print 2147483647 - -1", "18: 2147483647 - -1 is outside " + integer},
        {"Print 65536 * 65536", "13: 65536 * 65536 is outside " + integer},
        {"Dim a As Integer = -2147483648 : Print a \\ -1", "42: -2147483648 \\ -1 is outside " + integer},
        {"Dim a As Integer = -2147483648 : Print -a", "40: --2147483648 is outside " + integer},
        {"Print -18446744073709551615", "7: -18446744073709551615 is outside " + int64},
        {"Print 18446744073709551615 + -1", "28: 18446744073709551615 + -1 is outside " + uint64},
        {"Print 1e30 Mod 2", "12: 1e+30 Mod 2 is outside " + int64},
        {"Print 1e30 And 1", "12: 1e+30 And 1 is outside " + int64},
        {"Print Abs(-9223372036854775807 - 1)", "7: the result of Abs is outside " + int64},
        {"For i As Double = 1 To 2 : Next : For i As Integer = 1 To 1e30 : Next",
         "59: For takes " + int64 + ", got 1e+30"},
    };
    for (const auto& [script, message] : cases) EXPECT_EQ(run(script), "s:1:" + message + '\n') << script;
}

TEST_F(Script, PrintsDoublesThatReadBackTheSame) {
    Random random;
    for (int i = 0; i < 1000; ++i) {
        const double number =
            std::bit_cast<double>(uint64_t{random()} << 33 ^ uint64_t{random()} << 11 ^ random());
        std::string text = run("Dim b As New MemoryBlock(8)\nb.UInt64Value(0) = " +
                               std::to_string(std::bit_cast<uint64_t>(number)) + "\nPrint b.DoubleValue(0)");
        text.pop_back();
        if (!std::isnan(number)) {
            EXPECT_EQ(std::strtod(text.c_str(), nullptr), number) << text;
        }
    }
}

TEST_F(Script, TurnsFailuresIntoHostExceptions) {
    std::ostringstream out;
    Runtime runtime{host(), out, {}, ".", HexDump({})};
    const auto raised = [&](auto error) -> std::string {
        try {
            minihost::run({{{1, 0}, [&](Runtime&) -> Flow { throw error; }}}, runtime);
        } catch (const HostException& exception) {
            return exception.class_name;
        }
        return "";
    };
    EXPECT_EQ(raised(std::bad_alloc()), "OutOfMemoryException");
    EXPECT_EQ(raised(std::length_error("")), "OutOfMemoryException");
    EXPECT_EQ(raised(std::filesystem::filesystem_error("", std::error_code())), "IOException");
}

TEST_F(Script, LimitsNestingAndLength) {
    const auto repeated = [](const std::string& text, int count) {
        std::string all;
        while (count-- > 0) all += text;
        return all;
    };
    EXPECT_EQ(run("Print " + repeated("(", 100) + "1" + repeated(")", 100)), "1\n");
    EXPECT_EQ(run("Print " + repeated("(", 9999)), "s:1:207: more than 200 levels inside each other\n");
    EXPECT_EQ(run("Print " + repeated("- ", 9999)), "s:1:407: more than 200 levels inside each other\n");
    EXPECT_EQ(run("Print 1" + repeated("+1", 9999)), "s:1:2007: more than 1000 operands in one statement\n");
    EXPECT_EQ(run(repeated("If True Then ", 9999)), "s:1:2604: more than 200 levels inside each other\n");
}

TEST_F(Script, BoundsWhatItReads) {
    std::ofstream("large").close();
    fs::resize_file("large", 3'000'000'000);  // without bytes on the disk
    EXPECT_EQ(
        run("Print ReadFile(\"large\").Size"),
        "s:1:7: IOException: cannot read large: it has more than the 2147483646 bytes that a block holds\n");
    if (!fs::exists("/dev/zero")) GTEST_SKIP() << "NOT TESTED: this system has no file without an end";
    EXPECT_THROW(InputFile("/dev/zero").read_rest(5'000'000), FileError);
    Runtime::interrupted = 1;
    EXPECT_THROW(InputFile("/dev/zero").read_rest(), Interrupted);
    Runtime::interrupted = 0;
}

TEST_F(Script, LeavesTheOldFileWhenWritingFails) {
    run("WriteFile(\"old\", BlockFromHex(\"41\"))");
    std::string file;
    std::string picture;
    {
        const Limit small(Limit::kFileSize, 10000);
        if (!small) GTEST_SKIP() << "NOT TESTED: this system has no limits of files";
        file = run("WriteFile(\"old\", New MemoryBlock(20000))");
        picture =
            run("Dim b As New MemoryBlock(90000)\nFor i As Integer = 0 To 22000\n"
                "b.Int32Value(i * 4) = i * i + i\nNext\nWritePicture(\"old\", b, 300, 300)");
    }
    EXPECT_EQ(file, "s:1:1: IOException: cannot write old: File too large\n");
    EXPECT_EQ(picture, "s:5:1: IOException: cannot write old: File too large\n");
    EXPECT_EQ(run("WriteFile(\"old/new\", New MemoryBlock(1))"),
              "s:1:1: IOException: cannot write old/new: Not a directory\n");
    EXPECT_EQ(run("Print ReadFile(\"old\").Byte(0)"), "65\n");
    EXPECT_EQ(std::distance(fs::directory_iterator("."), {}), 1);
}

TEST_F(Script, KeepsLinksAndPermissions) {
    run("WriteFile(\"old\", BlockFromHex(\"41\"))");
    fs::permissions("old", fs::perms::owner_all);
    std::error_code error;
    fs::create_symlink("old", "link", error);
    if (error) GTEST_SKIP() << "NOT TESTED: no links can be made here";
    EXPECT_EQ(run("WriteFile(\"link\", BlockFromHex(\"42\"))\nPrint ReadFile(\"old\").Byte(0)"), "66\n");
    EXPECT_TRUE(fs::is_symlink("link"));
    EXPECT_EQ(fs::status("old").permissions(), fs::perms::owner_all);
}

#ifdef MINIHOST_SOUND
TEST_F(Script, ReadsTheSamplesThatItWrote) {
    EXPECT_EQ(run("Dim s As MemoryBlock = BlockFromHex(\"01 00 FF 7F 00 80 FE FF\")\n"
                  "WriteSound(\"s.wav\", s, 2, 8000)\n"
                  "Print SoundChannels(\"s.wav\"); SoundRate(\"s.wav\"); "
                  "ReadSound(\"s.wav\").BytesEqualZOR(0, 8, s, 0)\n"
                  "Print SoundRate(\"" SOURCE_DIR "/examples/data/chimes.au\")\n"
                  "WriteSound(\"s.wav\", s, 3, 8000)"),
              "28000True\n11025\n"
              "s:5:1: IOException: cannot write s.wav: 8 bytes are no 16-bit samples of 3 channels, 8000 a "
              "second\n");
    for (const std::string wrong : {"0, 8000", "-1, 8000", "1, 0", "1025, 8000"}) {
        EXPECT_NE(run("WriteSound(\"s.wav\", New MemoryBlock(2050), " + wrong + ")")
                      .find("2050 bytes are no 16-bit "),
                  std::string::npos)
            << wrong;
    }
    EXPECT_EQ(run("Print ReadFile(\"s.wav\").Size; ReadSound(\"s.wav\").Size"), "528\n");
    EXPECT_EQ(run("WriteFile(\"s\", New MemoryBlock(9)) : Print ReadSound(\"s\")"),
              "s:1:44: IOException: cannot read s: it is no sound\n");
}
#endif

// What is no UTF-8 becomes the character for that, byte by byte.
TEST(Json, IsUtf8) {
    EXPECT_EQ(json_string("\\ \u00e9\u0800\u20ac\U0001F600\xED\x9F\xBF\xF4\x8F\xBF\xBF"),
              "\"\\\\ \u00e9\u0800\u20ac\U0001F600\xED\x9F\xBF\xF4\x8F\xBF\xBF\"");
    for (const std::string bytes : {"\x80", "\xC1\x81", "\xC3", "\xC3(", "\xE0\x9F\x80", "\xED\xA0\x80",
                                    "\xE2\x82", "\xF0\x8F\x80\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80"}) {
        std::string expected;
        for (const char c : bytes) expected += c == '(' ? "(" : "\\ufffd";
        EXPECT_EQ(json_string(bytes), '"' + expected + '"');
    }
}

TEST(Picture, GivesBackWhatItHoldsWhenMemoryRunsOut) {
    class Limited : public std::pmr::memory_resource {
     public:
        int64_t held = 0;
        int left = 0;

     private:
        void* do_allocate(size_t size, size_t alignment) override {
            if (left-- == 0) throw std::bad_alloc();
            held += int64_t(size);
            return std::pmr::new_delete_resource()->allocate(size, alignment);
        }
        void do_deallocate(void* bytes, size_t size, size_t alignment) override {
            held -= int64_t(size);
            std::pmr::new_delete_resource()->deallocate(bytes, size, alignment);
        }
        bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }
    };
    Random random;
    std::vector<uint8_t> samples(100 * 60);
    for (uint8_t& sample : samples) sample = uint8_t(random());
    Limited memory;
    int failures = 0;
    std::string picture;
    for (int allocations = 0; picture.empty(); allocations += allocations / 4 + 1) {
        memory.left = allocations;
        try {
            picture = png(samples.data(), 100, 60, 1, memory);
        } catch (const std::bad_alloc&) {
            ++failures;
        }
        ASSERT_EQ(memory.held, 0) << failures;
    }
    EXPECT_GT(failures, 10);
    EXPECT_EQ(picture, png(samples.data(), 100, 60, 1));
}

TEST_F(Script, CutsLongBlocksInTheMiddle) {
    const std::string dump = run("Dim b As New MemoryBlock(1001)\nb.Byte(1000) = 65\nPrint b");
    EXPECT_NE(dump.find("000000F0  00"), std::string::npos) << dump;
    EXPECT_NE(dump.find("\n          ... 688 bytes left out ...\n000003B0  00"), std::string::npos) << dump;
    EXPECT_TRUE(dump.ends_with("000003E0  00 00 00 00 00 00 00 00  41                       ........A\n"))
        << dump;
    EXPECT_EQ(run("Print New MemoryBlock(0)"), "MemoryBlock of 0 bytes\n");
    EXPECT_EQ(run("Print NewMemoryBlockFromPtrZOR(1)"), "MemoryBlock without a known size\n");
}

// As wide as the terminal is.
TEST_F(Script, DumpsInLinesOf8Or16Or32Bytes) {
    for (const auto& [columns, bytes] : {std::pair(77, 8), {78, 16}, {141, 16}, {142, 32}}) {
        const std::string dump =
            run("Print New MemoryBlock(33)", {.dump = {.line = HexDump::line_for(columns)}});
        EXPECT_LE(dump.find('\n'), size_t(columns)) << dump;
        EXPECT_EQ(std::count(dump.begin(), dump.end(), '\n'), 32 / bytes + 1) << dump;
    }
}

TEST_F(Script, ColoursTheBytesThatChanged) {
    const std::string script = "Dim b As New MemoryBlock(3)\nPrint b\nb.Byte(1) = 65\nPrint b\nPrint b";
    const std::string plain = "00000000  00 00 00                                          ...\n";
    const std::string changed = "00000000  00 41 00                                          .A.\n";
    const std::string marked =
        "00000000  00 \x1b[1;33m41\x1b[0m 00                                          .\x1b[1;33mA\x1b[0m.\n";
    EXPECT_EQ(run(script), plain + changed + changed);
    EXPECT_EQ(run(script, {.dump = {.colour = true}}), plain + marked + changed);
    // Also those that the other block lacks.
    EXPECT_EQ(
        run("DumpChanges(BlockFromHex(\"41\"), BlockFromHex(\"41 42\"))", {.dump = {.colour = true}}),
        "00000000 - 41                                                A\n"
        "00000000 + 41 \x1b[1;33m42\x1b[0m                                             A\x1b[1;33mB\x1b[0m\n"
        "1 byte differs\n");
}

// A new block may come to lie where an old one lay.
TEST_F(Script, ColoursNothingInABlockThatIsNew) {
    const std::string dumps =
        run("For i As Integer = 1 To 5000\nDim b As New MemoryBlock(1)\nb.Byte(0) = i Mod 251\nPrint "
            "b\nNext",
            {.dump = {.colour = true}});
    EXPECT_EQ(dumps.find('\x1b'), std::string::npos);
}

TEST(HexDump, TakesABlockOfAnotherSizeForAnotherBlock) {
    std::ostringstream out;
    HexDump dump({.colour = true});
    const std::vector<uint8_t> bytes{1, 2, 3};
    dump.print(out, 1, std::span(bytes).first(1));
    dump.print(out, 1, bytes);
    EXPECT_EQ(out.str().find('\x1b'), std::string::npos) << out.str();
    EXPECT_NE(out.str().find("01 02 03 "), std::string::npos) << out.str();
}

TEST_F(Script, HelpsWithNames) {
    const std::string entry = run("help ostypezor");
    EXPECT_TRUE(entry.starts_with("OSTypeZOR\nOSTypeZOR(offset as Integer) as String\n")) << entry;
    EXPECT_NE(entry.find("\n  prints\n    00000000  54 58 45 54 20 20 62 61 "), entry.npos) << entry;
    std::istringstream lines(entry);
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 82U) << line;
    EXPECT_NE(run("help sweep").find("_CalcLogSweepTableZOR     Computes a "), std::string::npos);
    EXPECT_NE(run("help language").find("\nBuilt-ins\n"), std::string::npos);
    // Where the first column leaves little room for the second, that one stands below.
    EXPECT_NE(run("help language").find("\n  WriteFile(path, block)\n      Writes a file;"),
              std::string::npos);
    EXPECT_EQ(run("help while"), "  While test … Wend  As long as the test is true.\n");
    const std::string sound = run("help readsound");
    EXPECT_TRUE(
        sound.starts_with("Functions\n  ReadSound(path as String) as MemoryBlock\n  ReadSound(path), "))
        << sound;
    EXPECT_EQ(run("help soudn"), "there is nothing called soudn; did you mean sound?\n");
    EXPECT_EQ(run("help Message"), "RuntimeException\n  Message as String   (read only)\n");
    EXPECT_EQ(run("help IOException"), "IOException\n  is a RuntimeException\n");
    EXPECT_EQ(run("help FindByteZR"), "there is nothing called FindByteZR; did you mean FindByteZOR?\n");
    const std::string all = run("help");
    EXPECT_TRUE(all.starts_with("MemoryBlock\n  BytesZOR as Integer   (read only)\n")) << all;
    for (const Class* type : host().classes()) {
        for (const Method& method : type->methods)
            EXPECT_NE(all.find("  " + method.declaration.text), std::string::npos);
    }
    EXPECT_EQ(run("Dim help As Integer = 3\nhelp = 4\nPrint help"), "4\n");
}

TEST_F(Script, ReportsReferences) {
    EXPECT_EQ(run("Dim b As New MemoryBlock(7)\nDim c As MemoryBlock = b\nreferences"),
              "not given back: MemoryBlock of 7 bytes: 2 references\n");
    EXPECT_EQ(run("references"), "nothing is held, nothing went wrong\n");
    std::ostringstream report;
    EXPECT_FALSE(report_references(host(), report)) << report.str();
    const ObjectRef held = host().new_block(5);
    EXPECT_TRUE(report_references(host(), report));
    EXPECT_EQ(report.str(), "not given back: MemoryBlock of 5 bytes: 1 reference\n");
}

TEST(Report, TellsFaults) {
    Host host;
    operation<void(REALobject)>("REALUnlockObject")(nullptr);
    std::ostringstream report;
    EXPECT_TRUE(report_references(host, report));
    EXPECT_EQ(report.str(), "fault: REALUnlockObject: the object is nil\n");
}

TEST_F(Script, PromptGoesOnAfterErrorsAndIncompleteBlocks) {
    std::ostringstream out;
    Session session(host(), out, {.interactive = true});
    EXPECT_TRUE(session.run("prompt", "Dim b As New MemoryBlock(2)"));
    EXPECT_THROW(session.run("prompt", "b.Byte(9) = 1"), std::runtime_error);
    EXPECT_FALSE(session.run("prompt", "If True Then\n"));
    EXPECT_FALSE(session.run("prompt", "Print 1 + _\n"));
    EXPECT_TRUE(session.run("prompt", "If True Then\nb.Byte(0) = 7\nEnd If\n"));
    EXPECT_TRUE(session.run("prompt", "b.Byte(0) + 1"));
    EXPECT_TRUE(session.run("prompt", "b.FindByteZOR 0, 2, 7"));
    EXPECT_TRUE(session.run("prompt", "-b.Byte(0)"));
    EXPECT_TRUE(session.run("prompt", "Dim b As String = \"new\" : b"));
    EXPECT_THROW(session.run("prompt", "Dim b As Integer = nix"), std::runtime_error);
    EXPECT_TRUE(session.run("prompt", "b"));
    EXPECT_EQ(out.str(), "8\n0\n-7\nnew\nnew\n");

    using Names = std::vector<std::string>;
    EXPECT_EQ(session.completions("x.", "findby"), (Names{"FindByteZOR", "FindBytesZOR"}));
    EXPECT_EQ(session.completions("", "El"), (Names{"Else", "ElseIf"}));
    EXPECT_EQ(session.completions("Dim i As ", "Int"), (Names{"Int32", "Int64", "Integer"}));
    EXPECT_EQ(session.completions("", "q"), (Names{"Quit"}));
    session.run("prompt", "Dim large As New MemoryBlockZOR");
    EXPECT_EQ(session.completions("Print large.", "S"), (Names{"Size"}));
    EXPECT_EQ(session.completions("", "lar"), (Names{"large"}));
}
