// Measuring one case: results first, then times.
#pragma once

#include <string>
#include <vector>

#include "benchmarks/case.h"

namespace bench {

struct Wrong {
    std::string contender;
    std::string what;
};

// The contenders that do not give what the rule gives.
std::vector<Wrong> check(Case& measured);

struct Effort {
    double sample;  // seconds that one sample of one contender takes at least
    int rounds;     // samples of each contender
    double
        most;  // seconds for a case, after which no further round starts, unless there are fewer than three
};

struct Time {
    double nanoseconds = 0;  // a call, median
    double spread = 0;       // from the first to the third quartile, as a part of the median
    double ratio = 0;        // to the first contender's time in the same round, median
};

// One for each contender. They take turns, so that what slows the machine down slows all of them.
std::vector<Time> measure(Case& measured, const Effort& effort);

// Machine instructions of a call, all that it calls included; 0 where they cannot be counted.
int instructions(const Contender& contender);

}  // namespace bench
