#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstdlib>
#include <system_error>

#include "tests/support/system.h"

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

uint8_t* map_at(uintptr_t address, size_t size) {
    void* wish = reinterpret_cast<void*>(address);
    return static_cast<uint8_t*>(VirtualAlloc(wish, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
}

uint8_t* map_tail(size_t size, size_t tail) {
    auto* bytes = static_cast<uint8_t*>(VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS));
    if (bytes) VirtualAlloc(bytes + size - tail, tail, MEM_COMMIT, PAGE_READWRITE);
    return bytes;
}

void unmap(uint8_t* bytes, size_t) { VirtualFree(bytes, 0, MEM_RELEASE); }

ptrdiff_t place_in_image(const void* address) {
    HMODULE image = nullptr;
    const DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (!GetModuleHandleExW(flags, static_cast<const wchar_t*>(address), &image)) return -2;
    return static_cast<const char*>(address) - reinterpret_cast<const char*>(image);
}

void set_variable(const char* name, const char* value) { _putenv_s(name, value ? value : ""); }

Limit::Limit(Resource resource, uint64_t) : resource_(resource) {}
Limit::~Limit() = default;
Limit::operator bool() const { return false; }
