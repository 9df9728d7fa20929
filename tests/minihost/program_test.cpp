// The executable, started as people start it: options, standard input, exit statuses, and the prompt.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "minihost/library/host.h"

namespace fs = std::filesystem;
using namespace std::string_literals;

namespace {

std::string read(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// As one word of the shell.
std::string quoted(const std::string& text) {
    std::string word = "'";
    word += text;
    word += '\'';
    return word;
}

// Runs in a folder of its own.
class Program : public testing::Test {
 protected:
    Program() { fs::create_directories(folder_); }
    ~Program() override { fs::remove_all(folder_); }

    void write(const std::string& name, const std::string& text) {
        std::ofstream(folder_ / name, std::ios::binary) << text;
    }

    // The arguments are the shell's. Standard output, error output and exit status, one after the other.
    std::string run(const std::string& arguments, const std::string& input = "") {
        write("in", input);
        const std::string command =
            "cd " + folder_.string() +
            " && <in >out.txt 2>err.txt '" MINIHOST_PROGRAM "' --plugin '" MINIHOST_BUNDLE "' " + arguments;
        const int status = std::system(command.c_str());  // NOLINT(cert-env33-c): the tests' own commands
        return read(folder_ / "out.txt") + read(folder_ / "err.txt") + std::to_string(WEXITSTATUS(status));
    }

    const fs::path folder_ = fs::temp_directory_path() / ("minihost_program" + std::to_string(getpid()));
};

}  // namespace

TEST_F(Program, RunsWhatTheCommandLineSays) {
    write("script.rbs", "Print ScriptFolder; ArgCount; Args(1); Args(2)");
    fs::create_directories(folder_ / "sub");
    write("sub/fails.rbs", "Dim b As MemoryBlock\nPrint 1\nb.MirrorBytesZOR\nPrint 2");
    const std::string kNoVersion = "minihost: --host-version takes a number above 0 or none, found ";
    const struct {
        const char* arguments;
        const char* input;
        std::string result;
    } cases[] = {
        {"script.rbs --plugin -e", "", ".2--plugin-e\n0"},
        {"sub/fails.rbs", "", "1\nsub/fails.rbs:3:3: NilObjectException: memoryblock is nil\n1"},
        {"-e 'Print Args(1) : Print 2' -- -x", "", "-x\n2\n0"},
        {"", "Print 1\nIf True Then\nPrint 2\nEnd If\n", "1\n2\n0"},
        {"--without REALGetRBVersion script.rbs 1 2", "", ".212\n0"},
        {"", "Print 1\nPrnt 2\n", "stdin:2:1: there is no variable or function Prnt; did you mean Print?\n1"},
        {"- a", "#!/usr/bin/env minihost\nPrint Args(1)\nquit\nPrint 2", "a\n0"},
        {"-e 'Try : Quit 3 : Catch : End Try'", "", "3"},
        {"-e 'Quit 256'", "", "-e:1:1: OutOfBoundsException: an exit status is 0 to 255\n1"},
        {"--json -e 'Print 1 : Print 0.5; True; Nil; \"a\"\"\u00e9\"; BlockFromHex(\"00fF\") : Print "
         "DefineEncoding(Chr(9) "
         "+ BlockFromHex(\"ff41\").StringValue(0, 2), \"UTF-8\")'",
         "", "1\n[0.5, true, null, \"a\\\"\u00e9\", \"00ff\"]\n\"\\u0009\\ufffdA\"\n0"},
        {"</", "", "cannot read standard input: Is a directory\n1"},
        {"<&-", "", "cannot read standard input: Bad file descriptor\n1"},
        {"missing.rbs", "", "cannot read missing.rbs: No such file or directory\n1"},
        {"--bogus script.rbs", "", "minihost: unknown option --bogus; see minihost --help\n2"},
        {"--host-version '' script.rbs", "", kNoVersion + "\"\"\n2"},
        {"--host-version new script.rbs", "", kNoVersion + "\"new\"\n2"},
        {"--host-version nan script.rbs", "", kNoVersion + "\"nan\"\n2"},
        {"--host-version -1 script.rbs", "", kNoVersion + "\"-1\"\n2"},
        {"--host-version inf script.rbs", "", kNoVersion + "\"inf\"\n2"},
        {"--host-version 2013x script.rbs", "", kNoVersion + "\"2013x\"\n2"},
        {"--plugin '' script.rbs", "", "minihost: --plugin takes a file, found \"\"\n2"},
        {"--without REALLockObjct script.rbs", "",
         "minihost: --without takes a key of the host, found \"REALLockObjct\"; did you mean "
         "REALLockObject?\n2"},
        {"-e", "", "-e: 1 required STATEMENTS missing\nRun with --help for more information.\n2"},
        {"--host-version 2011.5 -e 'Dim b As New MemoryBlock(2) : b.SetStringZOR(\"ab\", 0) : Print "
         "b.GetStringZOR(1, 1)'",
         "", "b\n0"},
        {"--host-version none -e 'Print BlockFromHex(\"0102\").FindByteZOR(0, 2, 2)'", "", "1\n0"},
        {"--json -e 'Print False; 0 / 0; 4294967296; &hFFFFFFFFFFFFFFFF; New MemoryBlockZOR'", "",
         "[false, null, 4294967296, 18446744073709551615, \"MemoryBlockZOR\"]\n0"},
        {"-e 'Print 1' >/dev/full", "", "cannot write to standard output\n1"},
        // What the bundle cannot give back is told, and makes a good script fail.
        {"--without REALUnlockObject -e 'Dim m As New MemoryBlockZOR : Print m.Create(4)'", "",
         "True\nnot given back: MemoryBlock of 0 bytes: 1 reference\n1"},
        // Without its size a block's size is 0, and a slice of it is nothing.
        {"--without memoryBlockGetSize --without REALGetRBVersion -e 'Print "
         "BlockFromHex(\"0102\").LeftZOR(1) Is Nil'",
         "", "True\n0"},
    };
    for (const auto& c : cases) EXPECT_EQ(run(c.arguments, c.input), c.result) << c.arguments;
    const std::string help = run("--help");
    EXPECT_TRUE(help.starts_with("Runs scr")) << help;
    for (const std::string& key : minihost::Host::keys()) EXPECT_NE(help.find("  " + key + '\n'), help.npos);
}

TEST_F(Program, RefusesWhatIsNoBundle) {
    const auto refused = [&](const std::string& file) {
        const std::string result = run("--plugin " + quoted(file) + " -e 'Print 1'");
        EXPECT_TRUE(result.starts_with(file)) << result;
        EXPECT_TRUE(result.ends_with("\n1")) << result;
        return result;
    };
    write("text.so", "no bundle");
    refused("text.so");
    refused("nix.so");
    EXPECT_NE(refused(NO_ENTRY_BUNDLE).find("REALPluginMain"), std::string::npos);
    EXPECT_EQ(run("--version >/dev/null && '" MINIHOST_PROGRAM "' check nix.so 2>err.txt"),
              "minihost check: there is no bundle nix.so\n2");
}

#ifndef EMULATED
TEST_F(Program, SaysHowToNameTheBundleThatIsNotBesideIt) {
    fs::copy(MINIHOST_PROGRAM, folder_ / "alone");
    const fs::path alone = fs::canonical(folder_ / "alone");
    const int status = std::system((quoted(alone.string()) + " -e 'Print 1' 2>" +  // NOLINT(cert-env33-c)
                                    quoted((folder_ / "err.txt").string()))
                                       .c_str());
    const std::string message = read(folder_ / "err.txt");
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_TRUE(message.starts_with("there is no bundle /")) << message;
    EXPECT_TRUE(message.ends_with("; --plugin FILE says where another one is\n")) << message;
}
#endif

TEST_F(Program, SaysWhereTheBundleCrashes) {
    write("crash.rbs", "Print 1\nCrash\nPrint 2");
    EXPECT_EQ(run("--plugin " + quoted(HOSTILE_BUNDLE) + " crash.rbs"),
              "1\ncrash.rbs:2: " HOSTILE_BUNDLE " crashed in Crash (segmentation fault)\n70");
}

// On the error output, after what the script has printed so far.
TEST_F(Program, TracesHostOperations) {
    const std::string result =
        run("--trace -e 'Print 1 : Dim b As New MemoryBlock(3) : Print b.BytesZOR' 2>&1");
    EXPECT_TRUE(result.starts_with("trace: REALPluginMain: ")) << result;
    EXPECT_TRUE(result.ends_with("1\ntrace: BytesZOR: memoryBlockGetSize(MemoryBlock#1) = 3\n3\n0"))
        << result;
}

TEST_F(Program, GivesTheTour) {
    const std::string script = quoted(SOURCE_DIR "/examples/tour.rbs");
    EXPECT_EQ(run(script), read(SOURCE_DIR "/tests/minihost/tour.txt") + "0");
    EXPECT_TRUE(fs::exists(folder_ / "out/tour-negative.png"));
    EXPECT_TRUE(fs::exists(folder_ / "out/tour-brighter.png"));
}

TEST_F(Program, RunsEveryExample) {
    for (const auto& entry : fs::directory_iterator(SOURCE_DIR "/examples")) {
        if (entry.path().extension() != ".rbs" || entry.path().stem() == "large") continue;
        const std::string result = run(quoted(entry.path().string()));
        EXPECT_TRUE(result.ends_with("\n0")) << entry.path() << result;
        EXPECT_EQ(result.find("no copy"), std::string::npos);
    }
    EXPECT_EQ(fs::file_size(folder_ / "out/chimes.wav"),
              fs::file_size(SOURCE_DIR "/examples/data/chimes.au") + 20);
    // The signature, and the head with width, height, 8 bits for each sample, and grey.
    EXPECT_TRUE(read(folder_ / "out/expanded.png")
                    .starts_with("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\xC0\0\0\0\x80\x8\0"s));
}

// Types at a prompt of its own, and awaits what it shows.
class Prompt : public Program {
 protected:
    struct Terminal {
        int descriptor = -1;
        pid_t child = -1;
    };

    // Starts the program in the test's folder, its history in a folder there or where HOME says.
    Terminal open(const char* state = "state") {
        Terminal terminal;
        const winsize size = {.ws_row = 24, .ws_col = 142, .ws_xpixel = 0, .ws_ypixel = 0};
        terminal.child = forkpty(&terminal.descriptor, nullptr, nullptr, &size);
        if (terminal.child == 0) {
            if (chdir(folder_.c_str()) != 0) _exit(127);
            setenv("XDG_STATE_HOME", *state ? (folder_ / state).c_str() : "", 1);
            setenv("HOME", "", 1);
            setenv("TERM", "dumb", 1);
            execl(MINIHOST_PROGRAM, MINIHOST_PROGRAM, "--plugin", MINIHOST_BUNDLE, nullptr);
            _exit(127);
        }
        type(terminal, "", "> ");
        return terminal;
    }

    static void type(const Terminal& terminal, const std::string& typed, const std::string& awaited) {
        // A line editor shows its prompt and then switches the terminal, which drops what came in between.
        usleep(300'000);
        EXPECT_EQ(::write(terminal.descriptor, typed.data(), typed.size()), ssize_t(typed.size()));
        std::string shown;
        char buffer[256];
        pollfd readable = {.fd = terminal.descriptor, .events = POLLIN, .revents = 0};
        while (shown.find(awaited) == std::string::npos && poll(&readable, 1, 60'000) > 0) {
            const ssize_t count = ::read(terminal.descriptor, buffer, sizeof buffer);
            if (count <= 0) break;
            shown.append(buffer, size_t(count));
        }
        EXPECT_NE(shown.find(awaited), std::string::npos) << shown;
    }

    // Ends with the given line, and returns the exit status.
    int close(const Terminal& terminal, const std::string& typed) {
        type(terminal, typed, "\r\n");
        if (HasFailure()) kill(terminal.child, SIGKILL);
        int status = -1;
        waitpid(terminal.child, &status, 0);
        ::close(terminal.descriptor);
        return WEXITSTATUS(status);
    }
};

TEST_F(Prompt, RunsWhatIsTyped) {
    const Terminal terminal = open();
    type(terminal, "nonsense\n", "prompt:1:1: there is no variable or function nonsense\r\n> ");
    type(terminal, "Dim x As Integer = 20\nIf x = 20 Then\nx = x + 1\nEnd If\nx * 2\n", "42\r\n> ");
    type(terminal, "Print \"\u00e9\"\n", "\u00e9\r\n> ");
    type(terminal, "New MemoryBlock(32)\n", "................................\r\n> ");
    // Ctrl-C clears what is typed and ends what runs.
#ifdef MINIHOST_LINE_EDITOR
    type(terminal, "If True Then\n", "\n. ");
    type(terminal, "Pri\t", "nt");
    type(terminal, "\x03", "\n> ");
#endif
    type(terminal, "While True : Print x : Wend\n", "21\r");
    type(terminal, "\x03", "prompt:1: interrupted\r\n> ");
    type(terminal, "Print 5 : Print ReadFile(\"/dev/zero\")\n", "5\r\n");
    type(terminal, "\x03", "prompt:1: interrupted\r\n> ");
    // Ctrl-D does not drop what is open without a word.
    type(terminal, "While True\n", "\n. ");
    type(terminal, "\x04", "While is not closed: expected \"Wend\", found end of the script\r\n> ");
    EXPECT_EQ(close(terminal, "quit 7\n"), 7);
    EXPECT_EQ(close(open(), "exit \n"), 0);
    EXPECT_EQ(close(open(), "\x04"), 0);
}

#ifdef MINIHOST_LINE_EDITOR
TEST_F(Prompt, SharesItsHistoryWithOthers) {
    const Terminal first = open();
    const Terminal second = open();
    type(first, "Print 1001\n", "1001\r\n> ");
    type(second, "Print 1002\n", "1002\r\n> ");
    type(first, "Print 1003\n", "1003\r\n> ");
    EXPECT_EQ(close(second, "quit\n"), 0);
    EXPECT_EQ(close(first, "quit\n"), 0);
    const std::string history = read(folder_ / "state/minihost_history");
    for (const char* number : {"1001", "1002", "1003"})
        EXPECT_NE(history.find(number), history.npos) << history;
    const Terminal third = open();
    type(third, "\x10\x10", "Print 1003");
    EXPECT_EQ(close(third, "\x15quit\n"), 0);

    const Terminal homeless = open("");
    type(homeless, "Print 1004\n", "1004\r\n> ");
    EXPECT_EQ(close(homeless, "quit\n"), 0);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 1)
        << "more than the folder with the history";
}
#endif
