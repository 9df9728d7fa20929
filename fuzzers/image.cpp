#include "fuzzers/image.h"

#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

namespace fuzz {
namespace {

// Past the sanitizer, which holds the gaps between variables to be untouchable. The empty instruction keeps
// the compiler from calling a function that the sanitizer watches.
__attribute__((no_sanitize("address"))) void copy(uint8_t* to, const uint8_t* from, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        to[i] = from[i];
        asm volatile("");
    }
}

struct Search {
    uintptr_t address;
    std::vector<std::span<uint8_t>>& parts;
    std::vector<std::span<uint8_t>>& zero_parts;
};

// Writable segments, without the part that is only written while the image is linked.
int look(dl_phdr_info* image, size_t, void* data) {
    const uintptr_t address = static_cast<Search*>(data)->address;
    auto& [unused, parts, zero_parts] = *static_cast<Search*>(data);
    const std::span headers(image->dlpi_phdr, image->dlpi_phnum);
    const auto holds = [&](const ElfW(Phdr) & header) {
        return header.p_type == PT_LOAD && address - image->dlpi_addr - header.p_vaddr < header.p_memsz;
    };
    if (std::ranges::none_of(headers, holds)) return 0;
    ElfW(Addr) fixed = 0;
    const auto page = ElfW(Addr)(sysconf(_SC_PAGESIZE));
    for (const auto& header : headers) {
        if (header.p_type == PT_GNU_RELRO) fixed = (header.p_vaddr + header.p_memsz) / page * page;
    }
    for (const auto& header : headers) {
        if (header.p_type != PT_LOAD || (header.p_flags & PF_W) == 0) continue;
        const ElfW(Addr) first = std::max(header.p_vaddr, fixed);
        const ElfW(Addr) zeros = std::max(header.p_vaddr + header.p_filesz, fixed);
        const ElfW(Addr) end = header.p_vaddr + header.p_memsz;
        if (first < zeros)
            parts.emplace_back(reinterpret_cast<uint8_t*>(image->dlpi_addr + first), zeros - first);
        if (zeros < end)
            zero_parts.emplace_back(reinterpret_cast<uint8_t*>(image->dlpi_addr + zeros), end - zeros);
    }
    return 1;
}

}  // namespace

Image::Image(const void* address) {
    Search search{uintptr_t(address), parts_, zero_parts_};
    if (dl_iterate_phdr(look, &search) == 0) throw std::runtime_error("there is no image at this address");
    parts_.insert(parts_.end(), zero_parts_.begin(), zero_parts_.end());
}

std::vector<uint8_t> Image::data() const {
    std::vector<uint8_t> data;
    for (const auto part : parts_) {
        data.resize(data.size() + part.size());
        copy(data.data() + data.size() - part.size(), part.data(), part.size());
    }
    return data;
}

void Image::put_back(std::span<const uint8_t> data) const {
    for (const auto part : parts_) {
        copy(part.data(), data.data(), part.size());
        data = data.subspan(part.size());
    }
}

Image Image::changing(std::span<const std::vector<uint8_t>> states) const {
    Image result;
    result.parts_ = result.zero_parts_ = zero_parts_;
    const auto differs = [&](size_t i) {
        return std::ranges::any_of(states, [&](const auto& state) { return state[i] != states.front()[i]; });
    };
    size_t at = 0;
    for (const auto part : std::span(parts_).first(parts_.size() - zero_parts_.size())) {
        for (size_t i = 0; i < part.size(); ++i) {
            if (!differs(at + i)) continue;
            const size_t first = i;
            while (i < part.size() && differs(at + i)) ++i;
            result.parts_.push_back(part.subspan(first, i - first));
        }
        at += part.size();
    }
    return result;
}

}  // namespace fuzz
