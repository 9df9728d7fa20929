// What no member can beat: passes that load and store the bytes that it must load and store, with the widest
// vectors, and do nothing else. Compiled once for each vector width (limit.cpp).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace bench {

struct Limit {
    const char* name;
    bool (*runs_here)();
    void (*read)(const uint8_t* data, size_t n);
    void (*read_two)(const uint8_t* first, const uint8_t* second, size_t n);
    void (*write)(uint8_t* data, size_t n);
    void (*update)(uint8_t* data, size_t n);           // loads and stores in place, forwards
    void (*update_mirrored)(uint8_t* data, size_t n);  // the same from both ends to the middle
    void (*combine)(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t n);
    // Loads all of the source while it stores all of the destination.
    void (*transfer)(uint8_t* destination, size_t stored, const uint8_t* source, size_t loaded);
};

// Those that this machine can run.
std::span<const Limit> limits();

}  // namespace bench
