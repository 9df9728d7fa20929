#include "minihost/platform/program.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <csignal>

namespace minihost::platform {

void begin_program(int&, char**&) {}

std::filesystem::path program_file() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error);
}

bool is_terminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }

std::optional<int> terminal_columns(std::FILE* stream) {
    winsize size = {};
    const bool known = ioctl(fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? std::optional<int>(size.ws_col) : std::nullopt;
}

void on_interrupt(void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    sigaction(SIGINT, &action, nullptr);
}

}  // namespace minihost::platform
