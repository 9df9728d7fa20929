// The manual, as the program carries it: the pages of docs/manual, read for the terminal.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace minihost {

// An entry is a second-level heading with what follows it.
struct ManualEntry {
    std::string page;     // the name of its page, such as "search"
    std::string name;     // the heading
    std::string summary;  // the first sentence of prose
    std::vector<std::string> tasks;
    std::string text;  // Markdown, without the heading
};

// All entries of all pages.
const std::vector<ManualEntry>& manual();

// The rows of the language page's tables that begin with a statement, type or function of that name; as
// Markdown.
std::string language_rows(std::string_view name);

// Markdown as lines of at most `width` columns: tables in columns, code indented, no marks of emphasis or
// links.
std::string for_terminal(std::string_view markdown, size_t width = 80);

}  // namespace minihost
