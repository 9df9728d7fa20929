// The instruction-set levels: for each one a table of all operations. The functions of the families go to the
// level that is chosen; before any choice that is the one every processor of the architecture runs.
#pragma once

#include <span>

#include "kernels/table.h"

namespace kernels {

struct Level {
    const char* name;
    bool (*runs_here)();  // whether processor and operating system support its instructions
    const Kernels* kernels;
};

// All levels that were built, the best first. The last one is "plain": the rules themselves, byte by byte.
std::span<const Level> levels();

// The first level that runs here. REALPluginMain chooses it.
const Level& best_level();
void choose_level(const Level& level);

}  // namespace kernels
