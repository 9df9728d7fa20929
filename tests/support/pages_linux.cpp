#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "tests/support/pages.h"

size_t page_size() { return size_t(sysconf(_SC_PAGESIZE)); }

uint8_t* map_guarded(size_t size) {
    const size_t page = page_size();
    void* pages =
        mmap(nullptr, size + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (pages == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "guarded memory");
    uint8_t* first = static_cast<uint8_t*>(pages) + page;
    if (mprotect(first, size, PROT_READ | PROT_WRITE) != 0) {
        throw std::system_error(errno, std::generic_category(), "guarded memory");
    }
    return first;
}

void unmap_guarded(uint8_t* bytes, size_t size) { munmap(bytes - page_size(), size + 2 * page_size()); }
