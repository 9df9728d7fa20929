// Read through the sections' table, with each place checked against the file's size.
#include "minihost/platform/image_file.h"

#include <link.h>

#include <algorithm>
#include <cstring>
#include <set>

#include "minihost/platform/image_bytes.h"

namespace minihost::platform {
namespace {

constexpr bool kWide = sizeof(void*) == 8;

class File {
 public:
    explicit File(const std::filesystem::path& path) : bytes_(path) {
        head_ = bytes_.at<ElfW(Ehdr)>(0);
        if (std::memcmp(head_.e_ident, ELFMAG, SELFMAG) != 0 ||
            head_.e_ident[EI_CLASS] != (kWide ? ELFCLASS64 : ELFCLASS32)) {
            refuse_image("image for this processor");
        }
    }

    std::vector<ElfW(Shdr)> sections(uint32_t type) const {
        std::vector<ElfW(Shdr)> found;
        for (size_t i = 0; i < head_.e_shnum; ++i) {
            const auto section = this->section(i);
            if (section.sh_type == type) found.push_back(section);
        }
        return found;
    }

    template <class Entry>
    std::vector<Entry> entries(const ElfW(Shdr) & section) const {
        std::vector<Entry> found;
        for (size_t i = 0; i < section.sh_size / sizeof(Entry); ++i)
            found.push_back(bytes_.at<Entry>(section.sh_offset + i * sizeof(Entry)));
        return found;
    }

    // From the table of strings that belongs to a section.
    std::string text(const ElfW(Shdr) & section, size_t offset) const {
        return bytes_.text(this->section(section.sh_link).sh_offset + offset);
    }

 private:
    ElfW(Shdr) section(size_t index) const {
        return bytes_.at<ElfW(Shdr)>(head_.e_shoff + index * sizeof(ElfW(Shdr)));
    }

    ImageBytes bytes_;
    ElfW(Ehdr) head_;
};

bool is_exported(const ElfW(Sym) & symbol) {
    const unsigned binding = symbol.st_info >> 4;
    const unsigned visibility = symbol.st_other & 3;
    return symbol.st_shndx != SHN_UNDEF &&
           (binding == STB_GLOBAL || binding == STB_WEAK || binding == STB_GNU_UNIQUE) &&
           (visibility == STV_DEFAULT || visibility == STV_PROTECTED);
}

}  // namespace

ImageFile read_image_file(const std::filesystem::path& path) {
    const File file(path);
    ImageFile image;
    for (const auto& section : file.sections(SHT_DYNSYM)) {
        for (const auto& symbol : file.entries<ElfW(Sym)>(section)) {
            if (is_exported(symbol)) image.exports.push_back(file.text(section, symbol.st_name));
        }
    }
    for (const auto& section : file.sections(SHT_DYNAMIC)) {
        for (const auto& entry : file.entries<ElfW(Dyn)>(section)) {
            if (entry.d_tag == DT_NEEDED) image.needs.push_back(file.text(section, entry.d_un.d_val));
        }
    }
    std::ranges::sort(image.exports);
    return image;
}

bool is_system_library(const std::string& name) {
    static const std::set<std::string> kKnown = {"libc",  "libm",     "libdl",    "libpthread",
                                                 "librt", "libgcc_s", "libstdc++"};
    return kKnown.contains(name.substr(0, name.find(".so"))) || name.starts_with("ld-linux");
}

}  // namespace minihost::platform
