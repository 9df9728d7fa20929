#include "minihost/platform/memory.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace minihost::platform {
namespace {

struct Pipe {
    Pipe() {
        if (pipe2(ends_, O_CLOEXEC) != 0) throw std::runtime_error("there is no pipe to be had");
        for (int& end : ends_) end = away_from_standard(end);
    }

    // The kernel's call, and not the library's, whose arguments AddressSanitizer checks.
    bool takes(const char* byte) const { return syscall(SYS_write, ends_[1], byte, size_t{1}) == 1; }
    void clear() const {
        char taken;
        while (read(ends_[0], &taken, 1) < 0 && errno == EINTR) {
        }
    }

 private:
    // Where standard input is closed, its number is free, and somebody may yet read from that.
    static int away_from_standard(int descriptor) {
        const int other = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        if (other < 0) throw std::runtime_error("there is no descriptor to be had");
        close(descriptor);
        return other;
    }

    int ends_[2];
};

// A pipe takes a byte from readable memory, and refuses one from any other.
bool is_readable_byte(const char* byte) {
    static const Pipe pipe;
    if (!pipe.takes(byte)) return false;
    pipe.clear();
    return true;
}

// Bytes from an address to the end of its page.
size_t rest_of_page(const char* address) {
    static const auto page = size_t(sysconf(_SC_PAGESIZE));
    return page - reinterpret_cast<uintptr_t>(address) % page;
}

}  // namespace

bool is_readable(const void* bytes, size_t size) {
    const char* at = static_cast<const char*>(bytes);
    if (size > UINTPTR_MAX - reinterpret_cast<uintptr_t>(at)) return false;
    while (size > 0) {
        if (!is_readable_byte(at)) return false;
        const size_t count = std::min(rest_of_page(at), size);
        at += count;
        size -= count;
    }
    return true;
}

std::optional<size_t> readable_length(const char* text) {
    for (const char* at = text; is_readable_byte(at); at += rest_of_page(at)) {
        if (const void* end = std::memchr(at, 0, rest_of_page(at)))
            return size_t(static_cast<const char*>(end) - text);
    }
    return std::nullopt;
}

}  // namespace minihost::platform
