// Shows the bytes of blocks, and what has changed in them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <span>
#include <string>

namespace minihost {

class HexDump {
 public:
    using Bytes = std::span<const uint8_t>;
    static constexpr size_t kNoLimit = SIZE_MAX;

    struct Style {
        bool colour = false;     // changed bytes stand out by the escape sequences of terminals
        size_t line = 16;        // bytes in a line
        size_t most = kNoLimit;  // lines of a dump; of a longer one the middle is left out
    };
    // As many bytes in a line as so many columns hold: 8, 16 or 32.
    static size_t line_for(int columns);

    explicit HexDump(const Style& style) : style_(style) {}

    // Lines of offset, hexadecimal, text. Of a long block the middle is left out. With colour, what has
    // changed since the block was last shown stands out; `block` identifies it, and newer ones have larger
    // numbers.
    void print(std::ostream& out, uint64_t block, Bytes bytes);

    // The same of a part that begins at `offset`. A "*" stands for lines that are equal to the one above.
    void dump(std::ostream& out, Bytes bytes, size_t offset) const;

    // The lines in which two blocks differ, the one with "-" above the other with "+", and how many bytes do.
    void changes(std::ostream& out, Bytes before, Bytes after) const;

 private:
    struct Shown {
        size_t size = 0;
        std::map<size_t, std::string> lines;  // by offset
    };

    void print_line(std::ostream& out, const std::string& head, Bytes line, Bytes before) const;

    Style style_;
    std::map<uint64_t, Shown> shown_;  // the newest blocks, only with colour
};

}  // namespace minihost
