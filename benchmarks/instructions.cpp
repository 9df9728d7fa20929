// Counts by single steps: a child process makes the call between two breakpoints, and its parent steps from
// the first to the second.
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "benchmarks/measure.h"

namespace bench {

#if defined(__x86_64__) || defined(__i386__)

namespace {

void breakpoint() { asm volatile("int3" : : : "memory"); }

[[noreturn]] void run_child(const std::function<int64_t()>& call) {
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    keep(call());  // resolves what is resolved at a first call
    breakpoint();
    keep(call());
    breakpoint();
    _exit(0);
}

// Waits for the child to stop. False when it ended.
bool stopped(pid_t child) {
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFSTOPPED(status) && WSTOPSIG(status) == SIGTRAP;
}

bool at_breakpoint(pid_t child) {
    siginfo_t info = {};
    return ptrace(PTRACE_GETSIGINFO, child, nullptr, &info) == 0 && info.si_code == SI_KERNEL;
}

int count(const std::function<int64_t()>& call) {
    const pid_t child = fork();
    if (child < 0) return 0;
    if (child == 0) run_child(call);
    int steps = 0;
    if (stopped(child)) {
        do {
            ++steps;
            ptrace(PTRACE_SINGLESTEP, child, nullptr, nullptr);
        } while (stopped(child) && !at_breakpoint(child));
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    return steps;
}

}  // namespace

// What an empty call takes is the harness's.
int instructions(const Contender& contender) {
    static const int kEmpty = count([] { return int64_t{0}; });
    const int all = count(contender.call);
    return all > kEmpty ? all - kEmpty : 0;
}

#else

int instructions(const Contender&) { return 0; }

#endif

}  // namespace bench
