#include "minihost/program/hex_dump.h"

#include <algorithm>
#include <ostream>

namespace minihost {
namespace {

constexpr size_t kLine = 16;  // bytes
constexpr size_t kHead = 16 * kLine;
constexpr size_t kTail = 4 * kLine;
constexpr size_t kLongest = 24 * kLine;  // that is shown whole
constexpr size_t kRemembered = 256;      // blocks

constexpr const char* kMark = "\x1b[1;33m";
constexpr const char* kPlain = "\x1b[0m";

std::string hex(size_t number, int digits) {
    std::string text;
    for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4)
        text += "0123456789ABCDEF"[number >> shift & 15];
    return text;
}

std::string byte(char value) { return hex(uint8_t(value), 2); }
std::string text(char byte) { return {byte >= ' ' && byte <= '~' ? byte : '.'}; }

}  // namespace

void HexDump::print(std::ostream& out, uint64_t block, std::span<const uint8_t> bytes) {
    Shown now{bytes.size(), {}};
    const auto known = shown_.find(block);
    Shown before;
    if (known != shown_.end() && known->second.size == bytes.size()) before = known->second;

    const size_t tail = (bytes.size() - 1) / kLine * kLine - kTail + kLine;
    for (size_t offset = 0; offset < bytes.size(); offset += kLine) {
        if (bytes.size() > kLongest && offset == kHead) {
            out << "          ... " << tail - kHead << " bytes left out ...\n";
            offset = tail;
        }
        const auto part = bytes.subspan(offset, std::min(kLine, bytes.size() - offset));
        std::string& line = now.lines[offset] = std::string(part.begin(), part.end());
        const auto old = before.lines.find(offset);
        print_line(out, offset, line, old == before.lines.end() ? line : old->second);
    }
    if (colour_) shown_[block] = std::move(now);
    if (shown_.size() > kRemembered) shown_.erase(shown_.begin());
}

void HexDump::print_line(std::ostream& out, size_t offset, const std::string& line,
                         const std::string& before) const {
    // One column of the line; runs of changed bytes are marked as one.
    const auto column = [&](auto&& shown, bool spaced) {
        bool marked = false;
        for (size_t i = 0; i < line.size(); ++i) {
            const bool changed = line[i] != before[i];
            if (marked && !changed) out << kPlain;
            if (spaced) out << (i == 8 ? "  " : " ");
            if (!marked && changed) out << kMark;
            out << shown(line[i]);
            marked = changed;
        }
        if (marked) out << kPlain;
    };
    out << hex(offset, 8) << ' ';
    column(byte, true);
    out << std::string((kLine - line.size()) * 3 + (line.size() <= 8 ? 1 : 0) + 2, ' ');
    column(text, false);
    out << '\n';
}

}  // namespace minihost
