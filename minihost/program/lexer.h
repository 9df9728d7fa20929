// Cuts the text of a script into tokens.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "minihost/library/value.h"
#include "minihost/program/script_error.h"

namespace minihost {

struct Token {
    enum class Kind { Name, Number, String, Symbol, LineEnd, End };

    Kind kind;
    std::string text;  // as written; of a string its content
    Position at;
    Value number = {};  // of a number: int32_t, int64_t, uint64_t or double
};

// The tokens of `text`, with a LineEnd after the last statement and an End after that. Comments, a first line
// that names an interpreter (#!), and continued lines are gone. Throws ScriptError.
std::vector<Token> tokenize(std::string_view text);

// What an error message calls a token, such as `"Then"` or `end of line`.
std::string to_string(const Token& token);

}  // namespace minihost
