// Runs scripts and the lines of a prompt, one after another, on the same variables.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "minihost/library/crashes.h"
#include "minihost/program/parser.h"
#include "minihost/program/runtime.h"

namespace minihost {

struct Settings {
    std::vector<std::string> arguments = {};    // of the script, without its name
    std::filesystem::path script_folder = ".";  // what ScriptFolder returns
    HexDump::Style dump = {};                   // how blocks are shown
    bool json = false;                          // Print writes JSON
    bool interactive = false;  // a prompt: values alone are shown, names can be declared anew
};

class Session {
 public:
    Session(Host& host, std::ostream& out, const Settings& settings = {});

    // Runs statements; `name` stands for them in messages. Throws std::runtime_error for all that ends them
    // early, with a text such as "tour.rbs:12:9: expected a value, found end of line", and Quit. Interactive
    // ones that need more lines to be whole are not run when such lines can come: the result is false.
    bool run(const std::string& name, std::string_view text, bool more_can_come = true);

    // Where the script is that runs now; nowhere when none does. Can be asked from a signal's handler.
    static Place running();

    // The names that begin with `word`, which stands after `before`: members after a dot, otherwise words,
    // functions and variables.
    std::vector<std::string> completions(std::string_view before, std::string_view word) const;

 private:
    std::string class_before(std::string_view dot) const;

    Runtime runtime_;
    Scopes scopes_;
    bool interactive_;
};

}  // namespace minihost
