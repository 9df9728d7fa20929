// Pages of memory from the system, for guarded bytes.
#pragma once

#include <cstddef>
#include <cstdint>

size_t page_size();

// Zeroed bytes, a multiple of the page's size, between two pages that cannot be touched. Throws std::system_error.
uint8_t* map_guarded(size_t size);
void unmap_guarded(uint8_t* bytes, size_t size);
