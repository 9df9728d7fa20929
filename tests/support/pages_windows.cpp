#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <system_error>

#include "tests/support/pages.h"

size_t page_size() {
    SYSTEM_INFO system = {};
    GetSystemInfo(&system);
    return system.dwPageSize;
}

uint8_t* map_guarded(size_t size) {
    const size_t page = page_size();
    void* pages = VirtualAlloc(nullptr, size + 2 * page, MEM_RESERVE, PAGE_NOACCESS);
    void* first =
        pages ? VirtualAlloc(static_cast<uint8_t*>(pages) + page, size, MEM_COMMIT, PAGE_READWRITE) : nullptr;
    if (!first) throw std::system_error(int(GetLastError()), std::system_category(), "guarded memory");
    return static_cast<uint8_t*>(first);
}

void unmap_guarded(uint8_t* bytes, size_t) { VirtualFree(bytes - page_size(), 0, MEM_RELEASE); }
