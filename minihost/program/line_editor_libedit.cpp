#include <editline/readline.h>

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "minihost/program/line_editor.h"

namespace minihost {
namespace {

int interrupt_typing(int, int) {
    Runtime::interrupted = 1;
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

// Empty when there is no place to keep it.
std::filesystem::path history_file() {
    const auto variable = [](const char* name) {
        const char* value = std::getenv(name);
        return std::filesystem::path(value ? value : "");
    };
    const auto state = variable("XDG_STATE_HOME");
    const auto home = variable("HOME");
    if (!state.empty()) return state / "minihost_history";
    return home.empty() ? home : home / ".local/state/minihost_history";
}

class LibeditLineEditor : public LineEditor {
 public:
    explicit LibeditLineEditor(const Session& session) : history_(history_file()) {
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
        if (history_.empty()) return;
        std::error_code error;
        std::filesystem::create_directories(history_.parent_path(), error);
        read_history(history_.c_str());
    }

    std::optional<std::string> read(const char* prompt) override {
        const std::unique_ptr<char, decltype(&std::free)> line(readline(prompt), std::free);
        if (!line) return std::nullopt;
        if (*line) keep(line.get());
        return std::string(line.get());
    }

 private:
    // Other prompts may append to the same file.
    void keep(const char* line) {
        add_history(line);
        if (!history_.empty()) append_history(1, history_.c_str());
    }

    std::filesystem::path history_;
};

}  // namespace

std::unique_ptr<LineEditor> make_line_editor(const Session& session) {
    return std::make_unique<LibeditLineEditor>(session);
}

}  // namespace minihost
