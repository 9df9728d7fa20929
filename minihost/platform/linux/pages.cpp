#include "minihost/platform/pages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>

namespace minihost::platform {
namespace {

size_t page_size() { return size_t(sysconf(_SC_PAGESIZE)); }

void* reserve(void* wish, size_t size, int flags) {
    return mmap(wish, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | flags, -1, 0);
}

// The first free place among some that programs seldom use.
void* reserve_low(size_t size) {
    constexpr uintptr_t kFirst = 0x10000000;
    constexpr uintptr_t kLast = 0x70000000;
    constexpr uintptr_t kStep = 0x00100000;
    for (uintptr_t address = kFirst; address < kLast; address += kStep) {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): a place in the address space
        void* wish = reinterpret_cast<void*>(address);
        void* found = reserve(wish, size, MAP_FIXED_NOREPLACE);
        if (found == wish) return found;
        if (found != MAP_FAILED) munmap(found, size);
    }
    return MAP_FAILED;
}

}  // namespace

GuardedPages::GuardedPages(size_t least, bool low) {
    const size_t page = page_size();
    size_ = (least + page - 1) / page * page;
    constexpr bool kAllFit = sizeof(void*) == 4;
    const size_t reserved = size_ + 2 * page;
    void* all = low && !kAllFit ? reserve_low(reserved) : reserve(nullptr, reserved, 0);
    if (all == MAP_FAILED) throw std::runtime_error("no memory between guards");
    data_ = static_cast<uint8_t*>(all) + page;
    if (mprotect(data_, size_, PROT_READ | PROT_WRITE) != 0)
        throw std::runtime_error("no memory between guards");
}

GuardedPages::~GuardedPages() { munmap(data_ - page_size(), size_ + 2 * page_size()); }

}  // namespace minihost::platform
