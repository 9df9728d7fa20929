// The prompt: statements typed at a terminal.
#pragma once

#include "minihost/program/session.h"

namespace minihost {

// Reads and runs statements until `quit` or the end of the input. Errors are shown and end nothing.
void run_prompt(Session& session);

}  // namespace minihost
