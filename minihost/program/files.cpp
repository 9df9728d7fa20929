#include "minihost/program/files.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "minihost/program/names.h"
#include "minihost/program/runtime.h"

namespace minihost {
namespace {

namespace fs = std::filesystem;

constexpr size_t kPiece = size_t{1} << 20;  // bytes between two looks at the interrupt

int keep_open(std::FILE*) { return 0; }

[[noreturn]] void fail(const char* what, const std::string& name, const std::string& why) {
    if (Runtime::interrupted) throw Interrupted();
    throw FileError(std::string(what) + ' ' + printable(name) + ": " + why);
}
[[noreturn]] void fail(const char* what, const std::string& name) { fail(what, name, std::strerror(errno)); }

void write_to(const fs::path& target, const char* mode, std::string_view bytes, const fs::path& path) {
    platform::File file = platform::open_file(target, mode);
    if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size())
        fail("cannot write", path.string());
    if (std::fclose(file.release()) != 0) fail("cannot write", path.string());
}

}  // namespace

InputFile::InputFile(const fs::path& path) : file_(platform::open_file(path, "rb")), name_(path.string()) {
    if (!file_) fail("cannot read", name_);
}

InputFile::InputFile(std::FILE* file, std::string name) : file_(file, keep_open), name_(std::move(name)) {}

std::optional<int64_t> InputFile::size() const { return platform::regular_size(file_.get()); }

void InputFile::skip(int64_t count) {
    if (size()) {
        if (!platform::seek(file_.get(), count)) fail("cannot read", name_);
        return;
    }
    std::string ignored(kPiece, '\0');
    while (count > 0) {
        const size_t wanted = size_t(std::min<int64_t>(count, kPiece));
        if (read(std::span(ignored).first(wanted)) < wanted) return;
        count -= int64_t(wanted);
    }
}

size_t InputFile::read(std::span<char> buffer) {
    size_t total = 0;
    while (total < buffer.size()) {
        const size_t wanted = std::min(buffer.size() - total, kPiece);
        const size_t count = std::fread(buffer.data() + total, 1, wanted, file_.get());
        total += count;
        if (Runtime::interrupted) throw Interrupted();
        if (count == wanted) continue;
        if (std::ferror(file_.get())) fail("cannot read", name_);
        break;
    }
    return total;
}

std::string InputFile::read_rest(int64_t largest) {
    std::vector<std::string> pieces;
    int64_t total = 0;
    do {
        std::string& piece = pieces.emplace_back(kPiece, '\0');
        piece.resize(read(piece));
        total += std::ssize(piece);
        if (total > largest) fail_too_large();
    } while (pieces.back().size() == kPiece);
    std::string all = std::move(pieces.front());
    all.reserve(size_t(total));
    for (size_t i = 1; i < pieces.size(); ++i) {
        all += pieces[i];
        pieces[i] = {};
    }
    return all;
}

void InputFile::fail_too_large() const {
    fail("cannot read", name_,
         "it has more than the " + std::to_string(kLargestBlock) + " bytes that a block holds");
}

void write_file(const fs::path& path, std::string_view bytes) {
    std::error_code error;
    const auto check = [&] {
        if (error) fail("cannot write", path.string(), error.message());
    };
    if (path.has_parent_path()) fs::create_directories(path.parent_path(), error);
    check();
    // A link stays a link, and a device is no file to be replaced.
    const fs::path target = fs::is_symlink(path, error) ? fs::weakly_canonical(path, error) : path;
    const fs::file_status old = fs::status(target, error);
    if (fs::exists(old) && !fs::is_regular_file(old)) return write_to(target, "wb", bytes, path);

    const fs::path beside = platform::name_beside(target);
    struct Removed {
        const fs::path& file;
        ~Removed() {
            std::error_code ignored;
            fs::remove(file, ignored);
        }
    };
    const Removed removed{beside};
    write_to(beside, "wb", bytes, path);
    error.clear();
    if (fs::exists(old)) fs::permissions(beside, old.permissions(), error);
    if (!error) fs::rename(beside, target, error);
    check();
}

}  // namespace minihost
