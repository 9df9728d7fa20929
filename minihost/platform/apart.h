// Work that may crash, hang or end the program, apart from it.
#pragma once

#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

namespace minihost::platform {

// What the work is about to do. It outlives the process.
class Note {
 public:
    virtual ~Note() = default;
    virtual void set(std::string_view text) = 0;
};

struct Apart {
    std::string result;  // what the work returned
    std::string end;     // empty when it returned, or what happened: "segmentation fault", "exit status 3"
    std::string note;    // the last one
};

// The end of work that took longer than it may.
inline std::string no_end_within(std::chrono::milliseconds limit) {
    char text[48];
    std::snprintf(text, sizeof text, "no end within %g s", double(limit.count()) / 1000);
    return text;
}

// Runs the work in a copy of this process, which is ended after `limit`. It has no standard input, and what
// it prints is dropped. Where a system has no such copies, the work runs in this process and is ended in it,
// which leaves all that it holds as it was then. Throws std::runtime_error with the text of what the work
// throws, and where there is no process to be had.
Apart run_apart(const std::function<std::string(Note&)>& work, std::chrono::milliseconds limit);

}  // namespace minihost::platform
