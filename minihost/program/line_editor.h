// Reads the lines that are typed at the prompt.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "minihost/program/session.h"

namespace minihost {

class LineEditor {
 public:
    virtual ~LineEditor() = default;
    // A line without its end; nothing at the end of the input (Ctrl-D), or when it is interrupted.
    virtual std::optional<std::string> read(const char* prompt) = 0;
};

// With history and completion where the build has libedit, otherwise a plain one.
std::unique_ptr<LineEditor> make_line_editor(const Session& session);

}  // namespace minihost
