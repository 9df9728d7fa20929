#include <cstdio>
#include <iostream>

#include "minihost/program/line_editor.h"

namespace minihost {
namespace {

class PlainLineEditor : public LineEditor {
 public:
    std::optional<std::string> read(const char* prompt) override {
        std::cout << prompt << std::flush;
        std::string line;
        if (std::getline(std::cin, line)) return line;
        std::cin.clear();
        std::clearerr(stdin);
        return std::nullopt;
    }
};

}  // namespace

std::unique_ptr<LineEditor> make_line_editor(const Session&) { return std::make_unique<PlainLineEditor>(); }

}  // namespace minihost
