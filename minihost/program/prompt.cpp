#include "minihost/program/prompt.h"

#include <algorithm>
#include <iostream>

#include "minihost/platform/program.h"
#include "minihost/program/line_editor.h"
#include "minihost/program/names.h"

namespace minihost {
namespace {

// Ctrl-C ends what runs and clears what is typed.
void interrupt(int) { Runtime::interrupted = 1; }

std::string trimmed(const std::string& line) {
    const size_t first = std::min(line.find_first_not_of(" \t"), line.size());
    return line.substr(first, line.find_last_not_of(" \t") + 1 - first);
}

}  // namespace

void run_prompt(Session& session) {
    const auto editor = make_line_editor(session);
    std::cout << "minihost: statements of the host's language. help lists what there is, quit ends.\n";
    platform::on_interrupt(interrupt);
    std::string text;  // that is not whole yet
    for (;;) {
        if (Runtime::interrupted) std::cout.clear();  // what was being written is cut off
        Runtime::interrupted = 0;
        const auto line = editor->read(text.empty() ? "> " : ". ");
        if (Runtime::interrupted || !line) std::cout << '\n';
        if (!line && !Runtime::interrupted && text.empty()) return;
        if (Runtime::interrupted) {
            text.clear();
            continue;
        }
        if (text.empty() && same_name(trimmed(*line), "exit")) return;
        if (line) text += *line + '\n';
        try {
            if (!session.run("prompt", text, line.has_value())) continue;
        } catch (const std::runtime_error& error) {
            std::cout << std::flush;
            std::cerr << error.what() << '\n';
        }
        text.clear();
    }
}

}  // namespace minihost
