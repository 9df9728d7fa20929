#include <dlfcn.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>

#include "tests/support/system.h"

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

uint8_t* map_at(uintptr_t address, size_t size) {
    const int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE;
    void* page = mmap(reinterpret_cast<void*>(address), size, PROT_READ | PROT_WRITE, flags, -1, 0);
    return page == MAP_FAILED ? nullptr : static_cast<uint8_t*>(page);
}

uint8_t* map_tail(size_t size, size_t tail) {
    void* memory = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) return nullptr;
    auto* bytes = static_cast<uint8_t*>(memory);
    mprotect(bytes + size - tail, tail, PROT_READ | PROT_WRITE);
    return bytes;
}

void unmap(uint8_t* bytes, size_t size) { munmap(bytes, size); }

ptrdiff_t place_in_image(const void* address) {
    Dl_info info = {};
    if (!dladdr(address, &info)) return -2;
    return static_cast<const char*>(address) - static_cast<const char*>(info.dli_fbase);
}

void set_variable(const char* name, const char* value) {
    if (value) {
        setenv(name, value, 1);
    } else {
        unsetenv(name);
    }
}

namespace {

uint64_t exchange_limit(Limit::Resource resource, uint64_t most) {
    const auto kind = resource == Limit::kMemory ? RLIMIT_AS : RLIMIT_FSIZE;
    rlimit limit = {};
    getrlimit(kind, &limit);
    const uint64_t before = limit.rlim_cur;
    limit.rlim_cur = rlim_t(most);
    setrlimit(kind, &limit);
    return before;
}

}  // namespace

// What grows too much then fails, and no signal ends the program.
Limit::Limit(Resource resource, uint64_t most) : resource_(resource) {
    if (resource == kFileSize) std::signal(SIGXFSZ, SIG_IGN);
    before_ = exchange_limit(resource, most);
}
Limit::~Limit() {
    exchange_limit(resource_, before_);
    if (resource_ == kFileSize) std::signal(SIGXFSZ, SIG_DFL);
}
Limit::operator bool() const { return true; }
