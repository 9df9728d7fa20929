// In a file of its own: a compiler that sees both sides takes malloc and delete for a mistake.
#include "tests/minihost/failing_allocations.h"

#include <cstdlib>
#include <new>

int allocations_left = -1;

void* operator new(size_t size) {
    if (allocations_left == 0) throw std::bad_alloc();
    if (allocations_left > 0) --allocations_left;
    if (void* memory = std::malloc(size > 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }
