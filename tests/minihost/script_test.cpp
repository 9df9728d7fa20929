// Scripts, run in this process: what they print, and what is said about mistakes.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "minihost/program/help.h"
#include "minihost/program/session.h"
#include "tests/support/bundle_test.h"

using namespace minihost;

namespace {

class Script : public BundleTest {
 protected:
    Script() { start(); }

    // What the script prints; behind that the error that ended it, if one did.
    std::string run(const std::string& text, const Settings& settings = {}) {
        std::ostringstream out;
        try {
            Session(host(), out, settings).run("s", text);
        } catch (const std::runtime_error& error) {
            out << error.what() << '\n';
        }
        return out.str();
    }
};

struct Case {
    const char* script;
    const char* output;
};

}  // namespace

TEST_F(Script, Prints) {
    const Case cases[] = {
        // Numbers: precedence, wrapping, division, and the host's types.
        {"Print 1 + 2 * 3; \" \"; (1 + 2) * 3; \" \"; -2 ^ 2; \" \"; 2 ^ -1", "7 9 -4 0.5"},
        {"Print 10 - 3 - 2; \" \"; 7 \\ 2; \" \"; -7 \\ 2; \" \"; -7 Mod 4; \" \"; 7 / 2", "5 3 -3 -3 3.5"},
        {"Print 2147483647 + 1; \" \"; 2147483648 + 1; \" \"; 65536 * 65536", "-2147483648 2147483649 0"},
        {"Dim a As Integer = -2147483647 - 1\nPrint a \\ -1; \" \"; a Mod -1; \" \"; Abs(a)",
         "-2147483648 0 -2147483648"},
        {"Print &hFF; \" \"; &b101; \" \"; &hFFFFFFFF; \" \"; &hFFFFFFFFFFFFFFFF",
         "255 5 4294967295 18446744073709551615"},
        {"Dim i As Integer = 2.9\nDim j As Integer = -2.9\nDim k As Integer = 1e30\nPrint i; j; \" \"; k",
         "2-2 2147483647"},
        {"Print 1 / 3; \" \"; 1e10; \" \"; 2.0; \" \"; 1.5e-3", "0.3333333 1e+10 2 0.0015"},
        {"Print 6 And 3; 6 Or 3; 6 Xor 3; \" \"; Not 0; \" \"; -(3)", "275 -1 -3"},
        {"Print -9223372036854775808; -1 < &hFFFFFFFFFFFFFFFF; &hFFFFFFFFFFFFFFFF > -1; "
         "&hFFFFFFFFFFFFFFFF = -1; &hFFFFFFFFFFFFFFFF = &hFFFFFFFFFFFFFFFF",
         "-9223372036854775808TrueTrueFalseTrue"},
        {"Print 1 < 2; 2 <= 1; 1 = 1.0; 1 <> 1; Not 1 = 2; True Xor True", "TrueFalseTrueFalseTrueFalse"},
        {"Print Min(3, 2); Max(3, 2.5); Min(1, 5000000000); Abs(-2.5); Floor(-1.5); Sqrt(9)", "2312.5-23"},
        // And and Or leave out what cannot matter.
        {"Dim b As MemoryBlock\nPrint b <> Nil And b.Size > 0; b Is Nil Or b.Size > 0", "FalseTrue"},
        // Strings and encodings.
        {"Print \"say \"\"A\"\"\" + Chr(66); \" \"; Len(\"\u00e9\u20ac\"); LenB(\"\u00e9\u20ac\"); \" \"; "
         "Asc(\"\u20ac\")",
         "say \"A\"B 25 8364"},
        {"Print \"abc\" = \"ABC\"; \"a\" < \"B\"; Chr(8364); Hex(255); Hex(-1); Val(\"2.5x\"); Str(7) + "
         "Str(True)",
         "TrueTrue\u20acFFFFFFFFFF2.57True"},
        {"Dim s As String = ConvertEncoding(\"\u00e9\", \"MacRoman\")\nPrint LenB(s); Encoding(s); s; Asc(s)",
         "1MacRoman\u00e9142"},
        {"Print Encoding(DefineEncoding(\"a\", \"US-ASCII\") + \"b\"); LenB(ConvertEncoding(\"\u00e9\", "
         "\"MacRoman\") + \"\u00e9\")",
         "US-ASCII2"},
        // Control flow.
        {"For i As Integer = 1 To 3\nPrint i\nNext\nFor i As Integer = 4 DownTo 1 Step 2\nPrint i\nNext i",
         "1\n2\n3\n4\n2"},
        {"For i As Integer = 3 To 1\nPrint i\nNext\nFor x As Double = 0 To 1 Step 0.5\nPrint x\nNext",
         "0\n0.5\n1"},
        {"Dim n As Integer\nFor i As Integer = 2147483646 To 2147483647\nn = n + 1\nNext\nPrint n", "2"},
        {"Dim i As Integer\nWhile True\ni = i + 1\nIf i = 2 Then Continue\nIf i > 4 Then Exit While\nPrint "
         "i\nWend",
         "1\n3\n4"},
        {"Dim n As Integer\nFor i As Integer = 2147483640 To 2147483650\nn = n + 1\nNext\nPrint n\n"
         "For n = 1 To 3\nNext\nPrint n",
         "8\n4"},
        {"For i As Integer = 1 To 3\nPrint i\nWhile True\nExit For\nWend\nNext\nPrint 9", "1\n9"},
        {"For i As Integer = 1 To 2\nWhile True\nContinue For\nWend\nNext\nPrint 9", "9"},
        {"If False Then Print 1 : Print 2 Else Print 3 : Print 4\nIf False Then Print 5 : Print 6", "3\n4"},
        {"Dim a As Integer = 3\nIf a = 1 Then\nPrint 1\nElseIf a = 3 Then\nPrint 3\nElse\nPrint 0\nEnd If",
         "3"},
        {"If False Then Print 1 Else Print 2\nIf True Then If False Then Print 3 Else Print 4", "2\n4"},
        {"For i As Integer = 1 To 2\nDim n As Integer\nn = n + i\nPrint n\nNext", "1\n2"},
        // Layout: comments, continued lines, several statements in a line, capitalisation.
        {"\xEF\xBB\xBFPrint 1", "1"},
        {"dIm X aS iNTEGER = 1 + _ ' one\n 2 // two\nPRINT x : Print X * 2 ' end", "3\n6"},
        {"Dim a, b As Integer = 2, c As String = \"x\"\nPrint a + b; c\nPrint", "4x\n"},
    };
    for (const Case& c : cases) EXPECT_EQ(run(c.script), std::string(c.output) + "\n") << c.script;
}

TEST_F(Script, WorksOnObjects) {
    const std::string setup = "Dim b As New MemoryBlock(8)\n";
    const Case cases[] = {
        {"b.Byte(0) = 2.7\nPrint b.Byte(0.9)", "2"},
        {"b.Byte(1) = 258\nPrint b.Byte(1); b.BytesZOR; b.Size", "288"},
        {"b.Int16Value(0) = -2\nPrint b.Int16Value(0); \" \"; b.UInt16Value(0); \" \"; b.Int8Value(1); \" "
         "\"; b.UInt8Value(1)",
         "-2 65534 -1 255"},
        {"b.Int32Value(4) = -1\nPrint b.UInt32Value(4); \" \"; b.Int64Value(0); \" \"; b.UInt64Value(0)",
         "4294967295 -4294967296 18446744069414584320"},
        {"b.SingleValue(0) = 0.5\nPrint b.SingleValue(0); b.DoubleValue(0) > 0\nb.DoubleValue(0) = "
         "2.25\nPrint b.DoubleValue(0)",
         "0.5True\n2.25"},
        {"b.StringValue(2, 3) = \"abcdef\"\nPrint b.StringValue(1, 5) = Chr(0) + \"abc\" + "
         "Chr(0)\nb.StringValue(2, 3) = \"x\"\nPrint b",
         "True\n00000000  00 00 78 00 00 00 00 00                           ..x....."},
        // A member that can be assigned, overloads, defaults, and calls without parentheses.
        {"b.OSTypeZOR(4) = \"TEXT\"\nPrint b.OSTypeZOR(4); b.MidZOR(6).Size; b.MidZOR(1, 2).Size", "TEXT22"},
        {"b.Byte(0) = 9\nb.MirrorBytesZOR\nPrint b.Byte(7)\nb.FillBytesZOR 0, 2, 7\nPrint b.Byte(1)", "9\n7"},
        {"Dim p As Ptr = b\nPrint p = b.AddressPtrZOR; p = b; b = p; p = Nil; Nil = p; b.MinZOR(b, b, 16)",
         "TrueTrueTrueFalseFalseTrue"},
        {"Dim c As MemoryBlock = b\nPrint c Is b; c = Nil; c <> New MemoryBlock(8)\nc = Nil\nPrint c",
         "TrueFalseTrue\nNil"},
        {"Dim m As New MemoryBlockZOR\nPrint m.Create(5); m.Size\nm.Memory.Byte(4) = 3\nPrint "
         "m.Memory.Byte(4)\nm.Close\nPrint m.Size",
         "True5\n3\n0"},
        {"Dim f As FolderItem = GetFolderItem(\"/etc/passwd\")\nPrint f.Name; f.Exists; "
         "GetFolderItem(\"/nix\").Exists; \" \"; f",
         "passwdTrueFalse /etc/passwd"},
        // Exceptions: the first clause that fits, superclasses, the next Try outside.
        {"Try\nb.Byte(8) = 1\nPrint 1\nCatch e As NilObjectException\nPrint 2\nCatch e As "
         "OutOfBoundsException\nPrint e.Message\nEnd Try",
         "offset 8, length 1, of a block of 8 bytes"},
        {"Try\nb = Nil\nb.FillBytesZOR(0, 0, 1)\nCatch e As RuntimeException\nPrint e.Message; "
         "e.ErrorNumber\nEnd Try\nPrint 3",
         "memoryblock is nil0\n3"},
        {"Try\nTry\nPrint 1 \\ 0\nCatch e As OutOfBoundsException\nPrint 1\nEnd Try\nCatch\nPrint 2\nEnd Try",
         "2"},
        {"For i As Integer = 1 To 3\nTry\nIf i = 2 Then Exit\nPrint i\nCatch\nEnd Try\nNext", "1"},
    };
    for (const Case& c : cases) EXPECT_EQ(run(setup + c.script), std::string(c.output) + "\n") << c.script;
}

TEST_F(Script, SaysWhatIsWrongAndWhere) {
    const Case cases[] = {
        {"Dim b As New MemoryBlock(4)\nPrint b.FindByteZOR(1, 2)",
         "s:2:9: FindByteZOR takes 3 arguments (srcOfs as Integer, numBytes as Integer, byteValue as "
         "integer), got 2"},
        {"Dim b As New MemoryBlock(4)\nb.MidZOR",
         "s:2:3: MidZOR takes 1 argument (offset as integer) or 2 arguments (offset As Integer, length As "
         "Integer), got 0"},
        {"Dim b As New MemoryBlock(4)\nb.MultiplyUInt8ZOR",
         "s:2:3: MultiplyUInt8ZOR takes 1 to 3 arguments (Factor as double, offsetByte as Integer = 0, "
         "lengthBytes as "
         "integer = 0), got 0"},
        {"Dim b As New MemoryBlock(4)\nb.FillBytesZOR(0, \"1\", 2)",
         "s:2:19: FillBytesZOR takes count as Integer, found String"},
        {"Dim b As New MemoryBlock(4)\nb.FillBytesZOR(0, 5000000000, 2)",
         "s:2:3: FillBytesZOR takes count as Integer, got Int64 5000000000"},
        {"Print ReadFile(\"/nix\")", "s:1: IOException: cannot read /nix: No such file or directory"},
        {"WriteFile \"/proc/nix\", BlockFromHex(\"00\")",
         "s:1: IOException: cannot write /proc/nix: No such file or directory"},
        {"WritePicture \"out\", BlockFromHex(\"00 00 00\"), 2, 1",
         "s:1: IOException: cannot write out: 3 bytes are no 1 to 4 samples for each of 2 x 1 pixels"},
        {"WriteFile \"out\", NewMemoryBlockFromPtrZOR(1)",
         "s:1: IOException: cannot write out: how many bytes the block has is unknown"},
        {"Print BlockFromHex(\"0g\")",
         "s:1: RuntimeException: BlockFromHex takes pairs of hexadecimal digits"},
        {"Dim picture As Integer\npictre = 1",
         "s:2:1: there is no variable or function pictre; did you mean picture?"},
        {"Dim b As MemoryBlock\nb.FndByteZOR(1)",
         "s:2:3: MemoryBlock has no member FndByteZOR; did you mean FindByteZOR?"},
        {"Dim x As Intger", "s:1:10: there is no type Intger; did you mean Integer?"},
        {"Dim x As Integer\nDim X As String", "s:2:5: X is declared already"},
        {"If True Then\nDim x As Integer\nEnd If\nx = 1", "s:4:1: there is no variable or function x"},
        {"Dim s As String = 5", "s:1:19: s takes String, found Integer"},
        {"Dim b As MemoryBlock = New MemoryBlockZOR", "s:1:28: b takes MemoryBlock, found MemoryBlockZOR"},
        {"Dim m As New MemoryBlockZOR\nDim x As Integer = m.Close",
         "s:2:22: x takes Integer, found a call without a result"},
        {"Dim b As New MemoryBlock(1)\nb.Size = 5", "s:2:3: expected what can be assigned, found \"Size\""},
        {"Print 1 + \"a\"", "s:1:9: \"+\" takes two numbers or two strings, found Integer and String"},
        {"Print 1.5 And 2.5 Or True",
         "s:1:19: \"Or\" takes two Booleans or two whole numbers, found Int64 and Boolean"},
        {"If 1 Then Print 1", "s:1:4: a condition takes Boolean, found Integer"},
        {"Print 1 +", "s:1:10: expected a value, found end of line"},
        {"Print \"\u00e9\" ! 2", "s:1:11: unexpected character \"!\""},
        {"Print \"abc", "s:1:7: the string has no closing quotation mark"},
        {"Print &hG", "s:1:7: expected digits of base 16, found \"&hG\""},
        {"Print &x1", "s:1:7: expected &h, &o or &b and digits, found \"&x1\""},
        {"Print 1 _ x", "s:1:11: expected the end of the line behind \"_\", found \"x\""},
        {"Print \u20ac", "s:1:7: unexpected character \"\u20ac\""},
        {"Print \x01", "s:1:7: unexpected character \\x01"},
        {"Print \xE2\x82", "s:1:7: unexpected character \\xE2"},
        {"Print 1\n  If True Then\nPrint 2",
         "s:2:3: If is not closed: expected \"End If\", found end of the script"},
        {"While True\nNext", "s:2:1: expected \"Wend\", found \"Next\""},
        {"Print 1\nEnd If", "s:2:1: expected a statement, found \"End\""},
        {"Exit", "s:1:1: Exit stands outside of loops"},
        {"5", "s:1:1: a value alone is no statement"},
        {"For i As String = 1 To 2\nNext", "s:1:5: For takes a variable of type Integer, Int64 or Double"},
        {"Try\nCatch e As MemoryBlock\nEnd Try", "s:2:12: MemoryBlock is no exception"},
        {"\nDim b As MemoryBlock\nb.FillBytesZOR(0, 1, 2)", "s:3: NilObjectException: memoryblock is nil"},
        {"Dim m As MemoryBlockZOR\nm.Close", "s:2: NilObjectException: Close of a nil MemoryBlockZOR"},
        {"Dim e As RuntimeException\nPrint e.Message",
         "s:2: NilObjectException: Message of a nil RuntimeException"},
        {"Dim b As MemoryBlock\nIf False Then\nElseIf b.Size = 1 Then\nEnd If",
         "s:3: NilObjectException: memoryblock is nil"},
        {"Print 1 + _\n1 \\ 0", "s:2: RuntimeException: division by zero"},
        {"Print New MemoryBlock(4294967297)",
         "s:1:11: MemoryBlock takes size as Integer, got Int64 4294967297"},
        {"Dim b As New MemoryBlock(4)\nb.Byte(4294967296) = 7",
         "s:2:3: Byte takes offset as Integer, got Int64 4294967296"},
        {"Dim b As New MemoryBlock(1)\nPrint Str(b.FillBytesZOR(0, 1, 1))",
         "s:2:13: Str takes value as Variant, found a call without a result"},
        {"WritePicture \"out\", New MemoryBlock(1073741824), 1, 1073741824",
         "s:1: IOException: cannot write out: 1 x 1073741824 pixels are too many for a picture"},
        {"Print ReadFile(\"/proc/self/mem\")",
         "s:1: IOException: cannot read /proc/self/mem: Input/output error"},
        {"Print Args(1)", "s:1: OutOfBoundsException: Args(1) of 0 arguments"},
    };
    for (const Case& c : cases) {
        // Nothing has run before a mistake was found that shows without running.
        EXPECT_EQ(run(c.script), std::string(c.output) + "\n") << c.script;
    }
}

TEST_F(Script, TurnsFailuresIntoHostExceptions) {
    std::ostringstream out;
    Runtime runtime{host(), out, {}, ".", HexDump(false)};
    const auto raised = [&](auto error) -> std::string {
        try {
            minihost::run({{1, [&](Runtime&) -> Flow { throw error; }}}, runtime);
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

TEST_F(Script, KnowsItsArgumentsAndFolder) {
    const Settings settings{.arguments = {"-x", "two"}, .script_folder = "/some/where"};
    EXPECT_EQ(run("Print ArgCount; Args(1); Args(2); ScriptFolder", settings), "2-xtwo/some/where\n");
}

TEST_F(Script, ReadsAndWritesFiles) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("minihost" + std::to_string(getpid()));
    const Settings settings{.script_folder = folder};
    EXPECT_EQ(run("WriteFile(ScriptFolder + \"/a/b\", BlockFromHex(\"00 ff\"))\nPrint ReadFile(ScriptFolder "
                  "+ \"/a/b\")",
                  settings),
              "00000000  00 FF                                             ..\n");
    EXPECT_EQ(std::filesystem::file_size(folder / "a/b"), 2u);
    EXPECT_EQ(run("Try\nPrint ReadFile(ScriptFolder)\nCatch e As IOException\nPrint e.Message\nEnd Try\n"
                  "Print ReadFile(ScriptFolder + \"/a/b\").Size",
                  settings),
              "cannot read " + folder.string() + ": Is a directory\n2\n");
    std::filesystem::remove_all(folder);
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

TEST_F(Script, ColoursTheBytesThatChanged) {
    const std::string script = "Dim b As New MemoryBlock(3)\nPrint b\nb.Byte(1) = 65\nPrint b\nPrint b";
    const std::string plain = "00000000  00 00 00                                          ...\n";
    const std::string changed = "00000000  00 41 00                                          .A.\n";
    const std::string marked =
        "00000000  00 \x1b[1;33m41\x1b[0m 00                                          .\x1b[1;33mA\x1b[0m.\n";
    EXPECT_EQ(run(script), plain + changed + changed);
    EXPECT_EQ(run(script, {.colour = true}), plain + marked + changed);
}

// A new block may come to lie where an old one lay.
TEST_F(Script, ColoursNothingInABlockThatIsNew) {
    const std::string dumps =
        run("For i As Integer = 1 To 5000\nDim b As New MemoryBlock(1)\nb.Byte(0) = i Mod 251\nPrint "
            "b\nNext",
            {.colour = true});
    EXPECT_EQ(dumps.find('\x1b'), std::string::npos);
}

TEST(HexDump, TakesABlockOfAnotherSizeForAnotherBlock) {
    std::ostringstream out;
    HexDump dump(true);
    const std::vector<uint8_t> bytes{1, 2, 3};
    dump.print(out, 1, std::span(bytes).first(1));
    dump.print(out, 1, bytes);
    EXPECT_EQ(out.str().find('\x1b'), std::string::npos) << out.str();
    EXPECT_NE(out.str().find("01 02 03 "), std::string::npos) << out.str();
}

TEST_F(Script, HelpsWithNames) {
    EXPECT_EQ(run("help OSTypeZOR"),
              "MemoryBlock\n  OSTypeZOR(offset as Integer) as String   (can be assigned)\n");
    EXPECT_EQ(run("help copybyteszor"),
              "MemoryBlock\n  CopyBytesZOR(srcOfs as Integer, numBytes as Integer, destOfs as Integer)\n"
              "  CopyBytesZOR(srcOfs as Integer, numBytes as Integer, destBlk as MemoryBlock, destOfs as "
              "Integer)\n");
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
    EXPECT_EQ(session.completions("Dim i As ", "Int"), (Names{"Int64", "Integer"}));
    EXPECT_EQ(session.completions("", "q"), (Names{"quit"}));
    session.run("prompt", "Dim large As New MemoryBlockZOR");
    EXPECT_EQ(session.completions("Print large.", "S"), (Names{"Size"}));
    EXPECT_EQ(session.completions("", "lar"), (Names{"large"}));
}
