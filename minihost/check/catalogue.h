// What is checked of a bundle.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace minihost::check {

// What the checks work on. All that runs a bundle's code runs in a process of its own.
struct Subject {
    std::filesystem::path bundle;
    uint64_t seed = 1;                       // of the calls that are made up
    size_t calls = 200;                      // of each member, in a check
    std::chrono::milliseconds limit{10000};  // for one process
    // The signatures of members that crash, hang or throw on an ordinary host already: those are told once.
    std::set<std::string> broken = {};
};

// One thing that is wrong, and a script that shows it where one call does.
struct Finding {
    std::string text;
    std::string script = "";
};

struct Outcome {
    std::vector<Finding> findings = {};
    std::string extent = "";             // what was looked at: "49 members, 200 calls each"
    std::string skipped = "";            // why nothing could be looked at
    std::set<std::string> members = {};  // the signatures of those with a finding
};

struct Check {
    const char* name;
    const char* description;
    Outcome (*run)(const Subject&);
    bool needs_bundle;  // that has been loaded
};

std::span<const Check> catalogue();

// Runs checks in order; each outcome is handed over as soon as it is there.
void run(Subject subject, std::span<const Check* const> checks,
         const std::function<void(const Check&, const Outcome&)>& done);

}  // namespace minihost::check
