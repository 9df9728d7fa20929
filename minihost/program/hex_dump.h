// Shows the bytes of blocks, and what has changed in them since they were last shown.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <span>
#include <string>

namespace minihost {

class HexDump {
 public:
    // With `colour`, changed bytes stand out by the escape sequences of terminals.
    explicit HexDump(bool colour) : colour_(colour) {}

    // Writes 16 bytes to a line: offset, hexadecimal, text. Of a long block the middle is left out. `block`
    // only identifies the block from one call to the next; the newer block has the larger number.
    void print(std::ostream& out, uint64_t block, std::span<const uint8_t> bytes);

 private:
    struct Shown {
        size_t size = 0;
        std::map<size_t, std::string> lines;  // by offset
    };

    void print_line(std::ostream& out, size_t offset, const std::string& line,
                    const std::string& before) const;

    bool colour_;
    std::map<uint64_t, Shown> shown_;  // the newest blocks, only with colour
};

}  // namespace minihost
