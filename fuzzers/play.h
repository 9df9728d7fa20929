// Bytes as a game of calls: they choose a host, blocks, strings, and then member after member with its
// arguments.
#pragma once

#include "fuzzers/world.h"

namespace fuzz {

// What was wrong; empty when nothing was.
std::string play(World& world, std::span<const uint8_t> input);

}  // namespace fuzz
