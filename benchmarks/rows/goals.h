// How the goals are said.
#pragma once

#include "benchmarks/case.h"

namespace bench {

// From 4 KiB on: at least this part of the speed of the fastest of these.
inline Goal at_least(double part, std::vector<std::string> of) {
    return {.of = std::move(of), .least = part};
}

inline const std::vector<std::string> kLimits = {"limit, 16-byte vectors", "limit, 32-byte vectors",
                                                 "limit, 64-byte vectors"};
inline Goal of_limit(double part) { return at_least(part, kLimits); }

// A call with 16 bytes, the host's two calls included.
inline Goal small_call(int instructions) { return {.instructions = instructions, .from = 16, .to = 16}; }
inline const Goal kSmallCall = small_call(110);

}  // namespace bench
