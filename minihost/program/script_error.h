// What is wrong with a script, and where.
#pragma once

#include <stdexcept>
#include <string>

namespace minihost {

// Both count from 1; columns count characters. Column 0 stands for the line as a whole.
struct Position {
    int line = 1;
    int column = 0;
    bool operator==(const Position&) const = default;
};

// A script that cannot be parsed or cannot go on; `what()` says why.
struct ScriptError : std::runtime_error {
    ScriptError(Position position, const std::string& text) : std::runtime_error(text), at(position) {}
    Position at;
};

// The text ends inside a statement or a block: more of it may make it whole.
struct IncompleteScript : ScriptError {
    using ScriptError::ScriptError;
};

}  // namespace minihost
