#include "minihost/platform/crashes.h"

#include <unistd.h>

#include <csignal>

namespace minihost::platform {
namespace {

struct Crash {
    int signal;
    const char* name;
    struct sigaction before = {};
};
Crash crashes[] = {{SIGSEGV, "segmentation fault"},
                   {SIGBUS, "bus error"},
                   {SIGILL, "illegal instruction"},
                   {SIGFPE, "arithmetic fault"},
                   {SIGABRT, "abort"}};

void (*handle)(const char* name) = nullptr;

// A fault happens again when this returns, and is then handled as it was before.
void on_signal(int signal, siginfo_t* info, void*) {
    for (const Crash& crash : crashes) sigaction(crash.signal, &crash.before, nullptr);
    for (const Crash& crash : crashes) {
        if (crash.signal == signal) handle(crash.name);
    }
    const bool sent = info->si_code <= 0;
    if (sent) raise(signal);
}

}  // namespace

void on_crash(void (*handler)(const char* name)) {
    static char stack[64 * 1024];
    const bool installed = handle != nullptr;
    handle = handler;
    if (installed) return;
    stack_t own_stack = {};
    own_stack.ss_sp = stack;
    own_stack.ss_size = sizeof stack;
    sigaltstack(&own_stack, nullptr);
    struct sigaction action = {};
    action.sa_sigaction = on_signal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    for (Crash& crash : crashes) sigaction(crash.signal, &action, &crash.before);
}

void write_error(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
        if (written <= 0) return;
        text.remove_prefix(size_t(written));
    }
}

void end_at_once(int status) { _exit(status); }

}  // namespace minihost::platform
