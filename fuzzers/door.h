// Functions that a bundle under test exports besides its entry point.
#pragma once

#include <cstddef>

// The allocation of the bundle that fails, counted from 1; 0 for none.
using FailAllocation = void(int which);
// The name of an instruction-set level; "" where it cannot run here, nil after the last one.
using LevelName = const char*(size_t index);
using ChooseLevel = void(size_t index);
