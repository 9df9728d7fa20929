#include "minihost/program/prompt.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <optional>

#include "minihost/program/names.h"

#ifdef MINIHOST_LINE_EDITOR
#include <editline/readline.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#endif

namespace minihost {
namespace {

// Ctrl-C ends what runs and clears what is typed.
void interrupt(int) { Runtime::interrupted = 1; }

#ifdef MINIHOST_LINE_EDITOR

int interrupt_typing(int, int) {
    interrupt(SIGINT);
    rl_done = 1;
    return 0;
}

// While a line is typed, the keys that send signals are read like all others. Each line sets the terminal up
// anew.
int read_signal_keys() { return rl_parse_and_bind("setty -d -isig"); }

int suspend(int, int) { return kill(0, SIGTSTP); }

// The library calls back without a context.
const Session* completing = nullptr;
std::vector<std::string> found;

char* next_completion(const char* word, int index) {
    if (index == 0) {
        found = completing->completions(
            std::string_view(rl_line_buffer).substr(0, size_t(rl_point) - std::strlen(word)), word);
    }
    return size_t(index) < found.size() ? strdup(found[size_t(index)].c_str()) : nullptr;
}

char** complete(const char* word, int, int) {
    rl_attempted_completion_over = 1;  // no file names
    return rl_completion_matches(word, next_completion);
}

std::filesystem::path history_file() {
    const char* state = std::getenv("XDG_STATE_HOME");
    const char* home = std::getenv("HOME");
    if (state && *state) return std::filesystem::path(state) / "minihost_history";
    return home ? std::filesystem::path(home) / ".local/state/minihost_history" : std::filesystem::path();
}

class LineEditor {
 public:
    explicit LineEditor(const Session& session) : history_(history_file()) {
        completing = &session;
        // The text is UTF-8 also where the locale is none.
        std::setlocale(LC_CTYPE, "");
        if (MB_CUR_MAX == 1) std::setlocale(LC_CTYPE, "C.UTF-8");
        rl_initialize();
        rl_pre_input_hook = read_signal_keys;
        rl_add_defun("interrupt-typing", interrupt_typing, CTRL('c'));
        rl_add_defun("suspend", suspend, CTRL('z'));
        rl_attempted_completion_function = complete;
        rl_basic_word_break_characters = const_cast<char*>(" \t.,;:()=<>+-*/\\^\"");
        rl_completion_append_character = '\0';
        std::error_code error;
        if (!history_.empty()) std::filesystem::create_directories(history_.parent_path(), error);
        if (!history_.empty()) read_history(history_.c_str());
    }

    std::optional<std::string> read(const char* prompt) {
        const std::unique_ptr<char, decltype(&std::free)> line(readline(prompt), std::free);
        if (!line) return std::nullopt;
        if (*line) add_history(line.get());
        // Without a place to keep it, the history is lost.
        if (*line && !history_.empty()) write_history(history_.c_str());
        return line.get();
    }

 private:
    std::filesystem::path history_;
};

#else

class LineEditor {
 public:
    explicit LineEditor(const Session&) {}

    std::optional<std::string> read(const char* prompt) {
        std::cout << prompt << std::flush;
        std::string line;
        if (std::getline(std::cin, line)) return line;
        std::cin.clear();
        std::clearerr(stdin);
        return std::nullopt;
    }
};

#endif

std::string trimmed(const std::string& line) {
    const size_t first = std::min(line.find_first_not_of(" \t"), line.size());
    return line.substr(first, line.find_last_not_of(" \t") + 1 - first);
}

}  // namespace

void run_prompt(Session& session) {
    LineEditor editor(session);
    std::cout << "minihost: statements of the host's language. help lists what there is, quit ends.\n";
    struct sigaction action = {};
    action.sa_handler = interrupt;  // a read that waits does not go on
    sigaction(SIGINT, &action, nullptr);
    std::string text;
    for (;;) {
        if (Runtime::interrupted) std::cout.clear();  // what was being written is cut off
        Runtime::interrupted = 0;
        const auto line = editor.read(text.empty() ? "> " : ". ");
        if (Runtime::interrupted) {
            std::cout << '\n';
            text.clear();
            continue;
        }
        if (!line) break;
        const std::string word = trimmed(*line);
        if (text.empty() && (same_name(word, "quit") || same_name(word, "exit"))) return;
        text += *line + '\n';
        try {
            if (!session.run("prompt", text)) continue;
        } catch (const std::runtime_error& error) {
            std::cout << std::flush;
            std::cerr << error.what() << '\n';
        }
        text.clear();
    }
    std::cout << '\n';
}

}  // namespace minihost
