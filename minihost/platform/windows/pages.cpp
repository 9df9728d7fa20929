#include "minihost/platform/pages.h"

#include <windows.h>

#include <stdexcept>

namespace minihost::platform {
namespace {

size_t page_size() {
    SYSTEM_INFO system = {};
    GetSystemInfo(&system);
    return system.dwPageSize;
}

void* reserve(void* wish, size_t size) { return VirtualAlloc(wish, size, MEM_RESERVE, PAGE_NOACCESS); }

// The first free place among some that programs seldom use.
void* reserve_low(size_t size) {
    constexpr uintptr_t kFirst = 0x10000000;
    constexpr uintptr_t kLast = 0x70000000;
    constexpr uintptr_t kStep = 0x00100000;
    for (uintptr_t address = kFirst; address < kLast; address += kStep) {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): a place in the address space
        if (void* found = reserve(reinterpret_cast<void*>(address), size)) return found;
    }
    return nullptr;
}

}  // namespace

GuardedPages::GuardedPages(size_t least, bool low) {
    const size_t page = page_size();
    size_ = (least + page - 1) / page * page;
    const size_t reserved = size_ + 2 * page;
    void* all = low ? reserve_low(reserved) : reserve(nullptr, reserved);
    if (!all) throw std::runtime_error("no memory between guards");
    data_ = static_cast<uint8_t*>(all) + page;
    if (size_ > 0 && !VirtualAlloc(data_, size_, MEM_COMMIT, PAGE_READWRITE))
        throw std::runtime_error("no memory between guards");
}

GuardedPages::~GuardedPages() { VirtualFree(data_ - page_size(), 0, MEM_RELEASE); }

}  // namespace minihost::platform
