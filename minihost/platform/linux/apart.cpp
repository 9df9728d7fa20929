#include "minihost/platform/apart.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
#include <optional>
#include <stdexcept>

namespace minihost::platform {
namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void fail(const char* what) {
    throw std::runtime_error(std::string("no process for the work: ") + what + ": " + std::strerror(errno));
}

// In memory that both processes see.
class SharedNote : public Note {
 public:
    SharedNote() {
        void* memory = mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) fail("memory");
        text_ = static_cast<char*>(memory);
    }
    ~SharedNote() override { munmap(text_, kSize); }
    SharedNote(const SharedNote&) = delete;
    SharedNote& operator=(const SharedNote&) = delete;

    void set(std::string_view text) override {
        const size_t count = std::min(text.size(), kSize - sizeof count);
        std::memcpy(text_ + sizeof count, text.data(), count);
        std::memcpy(text_, &count, sizeof count);
    }
    std::string get() const {
        size_t count;
        std::memcpy(&count, text_, sizeof count);
        return {text_ + sizeof count, std::min(count, kSize - sizeof count)};
    }

 private:
    static constexpr size_t kSize = 65536;
    char* text_;
};

struct Descriptors {
    Descriptors() {
        if (pipe2(ends, O_CLOEXEC) != 0) fail("pipe");
    }
    ~Descriptors() {
        close_end(0);
        close_end(1);
    }
    Descriptors(const Descriptors&) = delete;
    Descriptors& operator=(const Descriptors&) = delete;
    void close_end(int end) {
        if (ends[end] >= 0) close(ends[end]);
        ends[end] = -1;
    }
    int ends[2];
};

void write_all(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;
        text.remove_prefix(size_t(written));
    }
}

// A result and a failure are told apart by their first byte; a last byte says that they are whole.
constexpr char kResult = 'R';
constexpr char kFailure = 'F';
constexpr char kWhole = '.';

[[noreturn]] void work_and_end(const std::function<std::string(Note&)>& work, Note& note, int out) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const rlimit no_core = {};
    setrlimit(RLIMIT_CORE, &no_core);
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nothing, standard);
    std::string answer(1, kResult);
    try {
        answer += work(note);
    } catch (const std::exception& error) {
        answer = kFailure + std::string(error.what());
    }
    write_all(out, answer + kWhole);
    _exit(0);
}

int milliseconds_until(Clock::time_point deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return int(std::clamp<int64_t>(left.count(), 0, 60'000));
}

// Up to the end of the text, or the deadline.
std::string read_until(int in, Clock::time_point deadline) {
    std::string text;
    char buffer[4096];
    pollfd readable = {.fd = in, .events = POLLIN, .revents = 0};
    for (int left; (left = milliseconds_until(deadline)) > 0;) {
        if (poll(&readable, 1, left) <= 0) continue;
        const ssize_t count = read(in, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        text.append(buffer, size_t(count));
    }
    return text;
}

// Nothing when the deadline came first.
std::optional<int> status_of(pid_t child, Clock::time_point deadline) {
    int status = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
        if (Clock::now() >= deadline) return std::nullopt;
        usleep(200);
    }
    return status;
}

std::string ending(int status) {
    if (!WIFSIGNALED(status)) return "exit status " + std::to_string(WEXITSTATUS(status));
    std::string name = strsignal(WTERMSIG(status));
    if (!name.empty() && name[0] >= 'A' && name[0] <= 'Z') name[0] = char(name[0] - 'A' + 'a');
    return name;
}

}  // namespace

Apart run_apart(const std::function<std::string(Note&)>& work, std::chrono::milliseconds limit) {
    SharedNote note;
    Descriptors pipe;
    std::cout.flush();
    std::fflush(nullptr);
    const auto deadline = Clock::now() + limit;
    const pid_t child = fork();
    if (child < 0) fail("fork");
    if (child == 0) {
        pipe.close_end(0);
        work_and_end(work, note, pipe.ends[1]);
    }
    setpgid(child, child);
    pipe.close_end(1);
    const std::string answer = read_until(pipe.ends[0], deadline);
    const auto status = status_of(child, deadline);
    kill(-child, SIGKILL);  // and what it may have started
    if (!status) {
        waitpid(child, nullptr, 0);
        return {"", no_end_within(limit), note.get()};
    }
    if (answer.size() < 2 || answer.back() != kWhole) return {"", ending(*status), note.get()};
    const std::string text = answer.substr(1, answer.size() - 2);
    if (answer[0] == kFailure) throw std::runtime_error(text);
    return {text, "", note.get()};
}

}  // namespace minihost::platform
