// What runs in a handler writes into memory that is there already.
#include "minihost/library/crashes.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "minihost/library/state.h"
#include "minihost/platform/crashes.h"

namespace minihost {
namespace {

int exit_status = 0;
Place (*find_place)() = nullptr;

class Line {
 public:
    Line& operator<<(std::string_view text) {
        const size_t count = std::min(text.size(), sizeof text_ - size_);
        std::memcpy(text_ + size_, text.data(), count);
        size_ += count;
        return *this;
    }
    Line& operator<<(int number) {
        char digits[16];
        const char* end = std::to_chars(digits, digits + sizeof digits, number).ptr;
        return *this << std::string_view(digits, size_t(end - digits));
    }
    std::string_view text() const { return {text_, size_}; }

 private:
    char text_[2048];
    size_t size_ = 0;
};

// A crash of the host itself is left to the system.
void report(const char* crash) {
    const Running* running = Host::State::current ? Host::State::current->running : nullptr;
    if (!running) return;
    Line line;
    const Place place = find_place ? find_place() : Place();
    if (place.file) line << place.file << ":" << place.line << ": ";
    const Callee& callee = running->callee();
    line << (callee.bundle ? std::string_view(*callee.bundle) : "the bundle") << " crashed in " << callee.part
         << *callee.name << " (" << crash << ")\n";
    platform::write_error(line.text());
    platform::end_at_once(exit_status);
}

}  // namespace

void report_crashes(int status, Place (*place)()) {
    exit_status = status;
    find_place = place;
    platform::on_crash(report);
}

}  // namespace minihost
