// There are no copies of a process: the work runs in a thread of its own, which is ended where it crashes or
// takes too long. What it does to the rest of the program stays done.
#include "minihost/platform/apart.h"

#include <windows.h>

#include <exception>
#include <stdexcept>

#include "minihost/platform/crashes.h"

namespace minihost::platform {
namespace {

struct OwnNote : Note {
    void set(std::string_view text) override { last = text; }
    std::string last;
};

struct Run {
    const std::function<std::string(Note&)>& work;
    OwnNote note;
    std::string result;
    std::string failure;
};

HANDLE crashed = nullptr;  // an event
const char* crash = nullptr;

// The thread of the crash waits for this to return, and so goes no further until it is ended from outside.
void stop(const char* name) {
    crash = name;
    SetEvent(crashed);
    ExitThread(0);
}

DWORD WINAPI run_work(void* data) {
    on_crash(stop);
    Run& run = *static_cast<Run*>(data);
    try {
        run.result = run.work(run.note);
    } catch (const std::exception& error) {
        run.failure = error.what();
        if (run.failure.empty()) run.failure = "unknown";
    }
    return 0;
}

}  // namespace

Apart run_apart(const std::function<std::string(Note&)>& work, std::chrono::milliseconds limit) {
    if (!crashed) crashed = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    ResetEvent(crashed);
    Run run{.work = work, .note = {}, .result = {}, .failure = {}};
    const HANDLE thread = CreateThread(nullptr, 0, run_work, &run, 0, nullptr);
    if (!thread) throw std::runtime_error("no thread for the work");
    const HANDLE ends[] = {thread, crashed};
    const DWORD end = WaitForMultipleObjects(2, ends, FALSE, DWORD(limit.count()));
    if (end != WAIT_OBJECT_0) {
        TerminateThread(thread, 0);
        WaitForSingleObject(thread, INFINITE);
    }
    CloseHandle(thread);
    if (end == WAIT_OBJECT_0 + 1) return {"", crash, run.note.last};
    if (end != WAIT_OBJECT_0) return {"", no_end_within(limit), run.note.last};
    if (!run.failure.empty()) throw std::runtime_error(run.failure);
    return {run.result, "", run.note.last};
}

}  // namespace minihost::platform
