#include "minihost/program/hex_dump.h"

#include <algorithm>
#include <ostream>

#include "minihost/program/runtime.h"

namespace minihost {
namespace {

constexpr size_t kHead = 16;         // lines of a long block that come first
constexpr size_t kTail = 4;          // and last
constexpr size_t kLongest = 24;      // lines that are shown whole
constexpr size_t kRemembered = 256;  // blocks

constexpr const char* kMark = "\x1b[1;33m";
constexpr const char* kPlain = "\x1b[0m";

std::string hex(size_t number, int digits) {
    std::string text;
    for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4)
        text += "0123456789ABCDEF"[number >> shift & 15];
    return text;
}

std::string byte(uint8_t value) { return hex(value, 2); }
std::string text(uint8_t value) { return {value >= ' ' && value <= '~' ? char(value) : '.'}; }

HexDump::Bytes line_at(HexDump::Bytes bytes, size_t offset, size_t line) {
    if (offset >= bytes.size()) return {};
    return bytes.subspan(offset, std::min(line, bytes.size() - offset));
}

// The lines of a long dump whose middle is left out: those from `first` to `last` are. None by default.
struct Gap {
    size_t first = SIZE_MAX;
    size_t last = SIZE_MAX;

    Gap(size_t size, size_t line, size_t most) {
        const size_t lines = (size + line - 1) / line;
        if (lines <= most) return;
        first = kHead * line;
        last = (lines - kTail) * line;
    }
    // Goes from the gap's start to its end.
    size_t pass(std::ostream& out, size_t offset) const {
        if (offset != first) return offset;
        out << "          ... " << last - first << " bytes left out ...\n";
        return last;
    }
};

}  // namespace

size_t HexDump::line_for(int columns) {
    constexpr int kPerByte = 4;
    constexpr int kOthers = 14;
    return columns >= 32 * kPerByte + kOthers ? 32 : columns >= 16 * kPerByte + kOthers ? 16 : 8;
}

void HexDump::print(std::ostream& out, uint64_t block, Bytes bytes) {
    Shown now{bytes.size(), {}};
    const auto known = shown_.find(block);
    Shown before;
    if (known != shown_.end() && known->second.size == bytes.size()) before = known->second;
    const Gap gap(bytes.size(), style_.line, kLongest);
    for (size_t offset = 0; offset < bytes.size(); offset += style_.line) {
        offset = gap.pass(out, offset);
        const Bytes line = line_at(bytes, offset, style_.line);
        const auto old = before.lines.find(offset);
        const std::string copy =
            old == before.lines.end() ? std::string(line.begin(), line.end()) : old->second;
        print_line(out, hex(offset, 8) + ' ', line,
                   {reinterpret_cast<const uint8_t*>(copy.data()), copy.size()});
        now.lines[offset] = std::string(line.begin(), line.end());
    }
    if (style_.colour) shown_[block] = std::move(now);
    if (shown_.size() > kRemembered) shown_.erase(shown_.begin());
}

void HexDump::dump(std::ostream& out, Bytes bytes, size_t offset) const {
    const Gap gap(bytes.size(), style_.line, style_.most);
    Bytes above;
    bool squeezed = false;
    for (size_t at = 0; at < bytes.size(); at += style_.line) {
        if (Runtime::interrupted) throw Interrupted();
        at = gap.pass(out, at);
        const Bytes line = line_at(bytes, at, style_.line);
        const bool last = at + style_.line >= bytes.size();
        const bool equal = !last && std::ranges::equal(line, above);
        if (!equal) print_line(out, hex(offset + at, 8) + ' ', line, line);
        if (equal && !squeezed) out << "*\n";
        squeezed = equal;
        above = line;
    }
}

void HexDump::changes(std::ostream& out, Bytes before, Bytes after) const {
    const size_t size = std::max(before.size(), after.size());
    size_t count = size - std::min(before.size(), after.size());
    for (size_t offset = 0; offset < size; offset += style_.line) {
        if (Runtime::interrupted) throw Interrupted();
        const Bytes old = line_at(before, offset, style_.line);
        const Bytes now = line_at(after, offset, style_.line);
        if (std::ranges::equal(old, now)) continue;
        for (size_t i = 0; i < std::min(old.size(), now.size()); ++i) {
            if (old[i] != now[i]) ++count;
        }
        if (!old.empty()) print_line(out, hex(offset, 8) + " -", old, now);
        if (!now.empty()) print_line(out, hex(offset, 8) + " +", now, old);
    }
    out << count << (count == 1 ? " byte differs\n" : " bytes differ\n");
}

void HexDump::print_line(std::ostream& out, const std::string& head, Bytes line, Bytes before) const {
    // One column of the line; runs of changed bytes are marked as one.
    const auto column = [&](auto&& shown, bool spaced) {
        bool marked = false;
        for (size_t i = 0; i < line.size(); ++i) {
            const bool changed = style_.colour && (i >= before.size() || line[i] != before[i]);
            if (marked && !changed) out << kPlain;
            if (spaced) out << (i > 0 && i % 8 == 0 ? "  " : " ");
            if (!marked && changed) out << kMark;
            out << shown(line[i]);
            marked = changed;
        }
        if (marked) out << kPlain;
    };
    const auto width = [](size_t bytes) { return bytes * 3 + (bytes == 0 ? 0 : (bytes - 1) / 8); };
    out << head;
    column(byte, true);
    out << std::string(width(style_.line) - width(line.size()) + 2, ' ');
    column(text, false);
    out << '\n';
}

}  // namespace minihost
