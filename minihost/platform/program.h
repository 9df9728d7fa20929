// The program as the system has started it.
#pragma once

#include <cstdio>
#include <filesystem>
#include <optional>

namespace minihost::platform {

// Called first: from here on the arguments are UTF-8, and the standard streams pass bytes as they are.
void begin_program(int& argc, char**& argv);

std::filesystem::path program_file();

bool is_terminal(std::FILE* stream);
// The width of a terminal, where it is known.
std::optional<int> terminal_columns(std::FILE* stream);

// Calls `handler` at Ctrl-C, maybe in another thread, instead of ending the program; a read that waits does
// not go on.
void on_interrupt(void (*handler)(int));

}  // namespace minihost::platform
