// Read through the tables that the headers point to, with each place checked against the file's size.
#include "minihost/platform/image_file.h"

#include <windows.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <set>

#include "minihost/platform/image_bytes.h"

namespace minihost::platform {
namespace {

// Its places are given as those of the loaded image.
class File {
 public:
    explicit File(const std::filesystem::path& path) : bytes_(path) {
        const auto dos = bytes_.at<IMAGE_DOS_HEADER>(0);
        if (dos.e_magic != IMAGE_DOS_SIGNATURE || dos.e_lfanew < 0) refuse_image("image for this processor");
        head_ = bytes_.at<IMAGE_NT_HEADERS>(size_t(dos.e_lfanew));
        if (head_.Signature != IMAGE_NT_SIGNATURE || head_.FileHeader.Machine != IMAGE_FILE_MACHINE_AMD64 ||
            head_.OptionalHeader.Magic != IMAGE_NT_OPTIONAL_HDR_MAGIC)
            refuse_image("image for this processor");
        const size_t first = size_t(dos.e_lfanew) + offsetof(IMAGE_NT_HEADERS, OptionalHeader) +
                             head_.FileHeader.SizeOfOptionalHeader;
        for (size_t i = 0; i < head_.FileHeader.NumberOfSections; ++i)
            sections_.push_back(bytes_.at<IMAGE_SECTION_HEADER>(first + i * sizeof(IMAGE_SECTION_HEADER)));
    }

    // Where a table lies; 0 when there is none.
    DWORD table(size_t index) const { return head_.OptionalHeader.DataDirectory[index].VirtualAddress; }

    template <class Record>
    Record record(size_t address) const {
        return bytes_.at<Record>(offset_of(address));
    }

    std::string text(size_t address) const { return bytes_.text(offset_of(address)); }

 private:
    size_t offset_of(size_t address) const {
        for (const IMAGE_SECTION_HEADER& section : sections_) {
            if (address >= section.VirtualAddress && address - section.VirtualAddress < section.SizeOfRawData)
                return address - section.VirtualAddress + section.PointerToRawData;
        }
        refuse_image();
    }

    ImageBytes bytes_;
    IMAGE_NT_HEADERS head_;
    std::vector<IMAGE_SECTION_HEADER> sections_;
};

}  // namespace

ImageFile read_image_file(const std::filesystem::path& path) {
    const File file(path);
    ImageFile image;
    if (const DWORD table = file.table(IMAGE_DIRECTORY_ENTRY_EXPORT)) {
        const auto exports = file.record<IMAGE_EXPORT_DIRECTORY>(table);
        for (size_t i = 0; i < exports.NumberOfNames; ++i)
            image.exports.push_back(
                file.text(file.record<DWORD>(exports.AddressOfNames + i * sizeof(DWORD))));
    }
    if (size_t table = file.table(IMAGE_DIRECTORY_ENTRY_IMPORT)) {
        for (;; table += sizeof(IMAGE_IMPORT_DESCRIPTOR)) {
            const auto library = file.record<IMAGE_IMPORT_DESCRIPTOR>(table);
            if (library.Name == 0) break;
            image.needs.push_back(file.text(library.Name));
        }
    }
    std::ranges::sort(image.exports);
    return image;
}

bool is_system_library(const std::string& name) {
    static const std::set<std::string> kKnown = {"kernel32.dll", "msvcrt.dll", "ucrtbase.dll",
                                                 "vcruntime140.dll", "msvcp140.dll"};
    std::string lower = name;
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return kKnown.contains(lower) || lower.starts_with("api-ms-win-crt-");
}

}  // namespace minihost::platform
