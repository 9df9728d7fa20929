#include "minihost/platform/memory.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace minihost::platform {
namespace {

// Bytes from an address to the end of the pages around it that are alike; 0 where they cannot be read.
size_t readable_from(const char* address) {
    MEMORY_BASIC_INFORMATION pages = {};
    if (VirtualQuery(address, &pages, sizeof pages) == 0 || pages.State != MEM_COMMIT ||
        (pages.Protect & (PAGE_NOACCESS | PAGE_EXECUTE | PAGE_GUARD)) != 0) {
        return 0;
    }
    return size_t(static_cast<const char*>(pages.BaseAddress) + pages.RegionSize - address);
}

}  // namespace

bool is_readable(const void* bytes, size_t size) {
    const char* at = static_cast<const char*>(bytes);
    if (size > UINTPTR_MAX - reinterpret_cast<uintptr_t>(at)) return false;
    while (size > 0) {
        const size_t count = std::min(readable_from(at), size);
        if (count == 0) return false;
        at += count;
        size -= count;
    }
    return true;
}

std::optional<size_t> readable_length(const char* text) {
    const char* at = text;
    while (const size_t count = readable_from(at)) {
        if (const void* end = std::memchr(at, 0, count)) return size_t(static_cast<const char*>(end) - text);
        at += count;
    }
    return std::nullopt;
}

}  // namespace minihost::platform
