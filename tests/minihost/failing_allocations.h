// Memory that runs out when a test wants it to.
#pragma once

// How many allocations by `new` still succeed; below 0 all do.
extern int allocations_left;
