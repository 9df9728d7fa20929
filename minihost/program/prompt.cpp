#include "minihost/program/prompt.h"

#include <iostream>
#include <optional>

#include "minihost/program/names.h"

#ifdef MINIHOST_LINE_EDITOR
#include <editline/readline.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#endif

namespace minihost {
namespace {

#ifdef MINIHOST_LINE_EDITOR

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
        rl_initialize();
        rl_attempted_completion_function = complete;
        rl_basic_word_break_characters = const_cast<char*>(" \t.,;:()=<>+-*/\\^\"");
        rl_completion_append_character = '\0';
        std::error_code error;
        if (!history_.empty()) std::filesystem::create_directories(history_.parent_path(), error);
        if (!history_.empty()) read_history(history_.c_str());
    }
    // Without a place to keep it, the history is lost.
    ~LineEditor() {
        if (!history_.empty()) write_history(history_.c_str());
    }
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    std::optional<std::string> read(const char* prompt) {
        const std::unique_ptr<char, decltype(&std::free)> line(readline(prompt), std::free);
        if (!line) return std::nullopt;
        if (*line) add_history(line.get());
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
        return std::getline(std::cin, line) ? std::optional(line) : std::nullopt;
    }
};

#endif

}  // namespace

void run_prompt(Session& session) {
    LineEditor editor(session);
    std::cout << "minihost: statements of the host's language. help lists what there is, quit ends.\n";
    std::string text;
    while (const auto line = editor.read(text.empty() ? "> " : ". ")) {
        if (text.empty() && same_name(*line, "quit")) return;
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
