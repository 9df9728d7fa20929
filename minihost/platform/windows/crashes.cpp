// A thread waits for a crash, and has a stack of its own to handle it on: that of the crash may be used up.
#include "minihost/platform/crashes.h"

#include <io.h>
#include <windows.h>

#include <csignal>
#include <cstdlib>

namespace minihost::platform {
namespace {

void (*handle)(const char* name) = nullptr;

HANDLE asked = nullptr;  // events
HANDLE answered = nullptr;
const char* crash = nullptr;
bool waits = false;  // the thread does

DWORD WINAPI wait_for_crash(void*) {
    WaitForSingleObject(asked, INFINITE);
    handle(crash);
    SetEvent(answered);
    return 0;
}

void hand_over(const char* name) {
    if (!waits) return;
    waits = false;
    crash = name;
    SetEvent(asked);
    WaitForSingleObject(answered, INFINITE);
}

// Nil for what is no crash.
const char* name_of(DWORD code) {
    switch (code) {
        case EXCEPTION_ACCESS_VIOLATION:
        case EXCEPTION_IN_PAGE_ERROR:
        case EXCEPTION_STACK_OVERFLOW:
            return "segmentation fault";
        case EXCEPTION_DATATYPE_MISALIGNMENT:
            return "bus error";
        case EXCEPTION_ILLEGAL_INSTRUCTION:
        case EXCEPTION_PRIV_INSTRUCTION:
            return "illegal instruction";
        case EXCEPTION_INT_DIVIDE_BY_ZERO:
        case EXCEPTION_INT_OVERFLOW:
        case EXCEPTION_FLT_DIVIDE_BY_ZERO:
        case EXCEPTION_FLT_INVALID_OPERATION:
            return "arithmetic fault";
        default:
            return nullptr;
    }
}

// What nobody handles comes here.
LONG WINAPI on_exception(EXCEPTION_POINTERS* exception) {
    if (const char* name = name_of(exception->ExceptionRecord->ExceptionCode)) hand_over(name);
    return EXCEPTION_CONTINUE_SEARCH;
}

// Before anybody else is asked, for what needs more stack than there is left.
LONG WINAPI on_first_sight(EXCEPTION_POINTERS* exception) {
    const bool overflow = exception->ExceptionRecord->ExceptionCode == EXCEPTION_STACK_OVERFLOW;
    return overflow ? on_exception(exception) : EXCEPTION_CONTINUE_SEARCH;
}

void on_abort(int) { hand_over("abort"); }

void install() {
    asked = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    answered = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    AddVectoredExceptionHandler(TRUE, on_first_sight);
    SetUnhandledExceptionFilter(on_exception);
}

}  // namespace

void on_crash(void (*handler)(const char* name)) {
    if (!handle) install();
    // Of this thread's stack, for an exception that is raised where the rest is used up.
    ULONG room = 64 * 1024;
    SetThreadStackGuarantee(&room);
    handle = handler;
    std::signal(SIGABRT, on_abort);
    if (waits) return;
    const HANDLE thread = CreateThread(nullptr, 0, wait_for_crash, nullptr, 0, nullptr);
    waits = thread != nullptr;
    if (thread) CloseHandle(thread);
}

void write_error(std::string_view text) {
    while (!text.empty()) {
        const int written = _write(2, text.data(), unsigned(text.size()));
        if (written <= 0) return;
        text.remove_prefix(size_t(written));
    }
}

void end_at_once(int status) { _exit(status); }

}  // namespace minihost::platform
