// What tests ask of the operating system.
#pragma once

#include <cstddef>
#include <cstdint>

size_t page_size();

// Zeroed bytes, a multiple of the page's size, between two pages that cannot be touched. Throws
// std::system_error.
uint8_t* map_guarded(size_t size);
void unmap_guarded(uint8_t* bytes, size_t size);

// Pages at an address; nil where some are taken.
uint8_t* map_at(uintptr_t address, size_t size);
// Room for `size` bytes, of which only the last `tail` can be touched; nil where there is none.
uint8_t* map_tail(size_t size, size_t tail);
void unmap(uint8_t* bytes, size_t size);

// Where something lies in the image of a program or a library that it belongs to; -2 when it belongs to none.
ptrdiff_t place_in_image(const void* address);

// Of the environment; nil takes it out.
void set_variable(const char* name, const char* value);

// While it lives, the process has no more of something. False where the system has no such limits.
class Limit {
 public:
    enum Resource { kMemory, kFileSize };
    Limit(Resource resource, uint64_t most);
    ~Limit();
    Limit(const Limit&) = delete;
    Limit& operator=(const Limit&) = delete;
    explicit operator bool() const;

 private:
    [[maybe_unused]] Resource resource_;
    [[maybe_unused]] uint64_t before_ = 0;
};
