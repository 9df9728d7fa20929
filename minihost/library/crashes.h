// Crashes of bundles.
#pragma once

namespace minihost {

// Where a script is; without a file, nowhere.
struct Place {
    const char* file = nullptr;
    int line = 0;
};

// From here on a crash inside a bundle (its entry point, a member, a constructor, a destructor) ends the
// program with `status` and a line on standard error: "tour.rbs:12: x.so crashed in MinZOR (segmentation
// fault)". `place` is asked at the crash, may be nil, and may flush what the program has printed.
void report_crashes(int status, Place (*place)() = nullptr);

}  // namespace minihost
