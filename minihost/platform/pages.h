// Memory at whose ends a touch too far is a crash.
#pragma once

#include <cstddef>
#include <cstdint>

namespace minihost::platform {

// Whole pages between two that cannot be touched; at first all zero. `low` ones lie where an address fits
// into 32 bits. Throws std::runtime_error without memory.
class GuardedPages {
 public:
    explicit GuardedPages(size_t least, bool low = false);
    ~GuardedPages();
    GuardedPages(const GuardedPages&) = delete;
    GuardedPages& operator=(const GuardedPages&) = delete;

    uint8_t* data() const { return data_; }
    size_t size() const { return size_; }

 private:
    uint8_t* data_;
    size_t size_;
};

}  // namespace minihost::platform
