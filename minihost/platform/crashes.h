// What ends the program: invalid memory, illegal instructions, arithmetic faults, abort.
#pragma once

#include <string_view>

namespace minihost::platform {

// Calls `handler` with the crash's name before a crash ends the program, on a stack of its own. Where the
// handler returns, the program ends as it would without it.
void on_crash(void (*handler)(const char* name));

// Both may be used in a handler.
void write_error(std::string_view text);
[[noreturn]] void end_at_once(int status);

}  // namespace minihost::platform
