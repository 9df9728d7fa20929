#include "minihost/program/manual.h"

#include <algorithm>
#include <span>
#include <sstream>

#include "minihost/program/manual_pages.h"
#include "minihost/program/names.h"

namespace minihost {
namespace {

std::vector<std::string> split(const std::string& text, const std::string& separator) {
    std::vector<std::string> parts;
    size_t from = 0;
    for (size_t at; (at = text.find(separator, from)) != text.npos; from = at + separator.size()) {
        parts.push_back(text.substr(from, at - from));
    }
    parts.push_back(text.substr(from));
    return parts;
}

// Without emphasis, backticks and the targets of links. What stands between backticks is kept as it is.
std::string without_marks(const std::string& text) {
    std::string plain;
    bool code = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '`') {
            code = !code;
        } else if (!code && c == ']' && text.compare(i, 2, "](") == 0) {
            i = text.find(')', i);
            if (i == text.npos) break;
        } else if (code || (c != '*' && c != '[' && !(c == '!' && text.compare(i, 2, "![") == 0))) {
            plain += c;
        }
    }
    return plain;
}

// Columns of a text in UTF-8.
size_t columns(const std::string& text) {
    return size_t(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

// The words of a text, from `indent` on, broken before `width`; the first line is `begun` columns long
// already.
void wrap(std::string& out, const std::string& text, size_t begun, size_t indent, size_t width) {
    std::istringstream words(text);
    size_t at = begun;
    bool first = true;
    for (std::string word; words >> word; first = false) {
        if (!first && at + 1 + columns(word) > width) {
            out += '\n' + std::string(indent, ' ');
            at = indent;
        } else if (!first) {
            out += ' ';
            ++at;
        }
        out += word;
        at += columns(word);
    }
    out += '\n';
}

std::vector<std::string> cells(const std::string& row) {
    std::vector<std::string> found = split(row.substr(1, row.rfind('|') - 1), "|");
    for (std::string& cell : found) {
        cell = without_marks(cell);
        cell.erase(0, cell.find_first_not_of(' '));
        cell.erase(cell.find_last_not_of(' ') + 1);
    }
    return found;
}

bool has_word(const std::string& text, std::string_view word) {
    constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    size_t begin = 0;
    while ((begin = text.find_first_of(kLetters, begin)) != text.npos) {
        const size_t end = std::min(text.find_first_not_of(kLetters, begin), text.size());
        if (same_name(text.substr(begin, end - begin), word)) return true;
        begin = end;
    }
    return false;
}

// A table without its rule: all columns but the last as wide as their widest cell, the last one wrapped, or
// below the others where they leave it too little room.
void print_table(std::string& out, const std::vector<std::vector<std::string>>& rows, size_t width) {
    constexpr size_t kLeastRoom = 32;
    std::vector<size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], columns(row[i]));
    }
    size_t last_column = 2;
    for (size_t i = 0; i + 1 < widths.size(); ++i) last_column += widths[i] > 0 ? widths[i] + 2 : 0;
    const bool below = last_column + kLeastRoom > width;
    for (const auto& row : rows) {
        std::string line = "  ";
        for (size_t i = 0; i + 1 < row.size(); ++i) {
            line += row[i] + std::string(widths[i] - columns(row[i]) + (widths[i] > 0 ? 2 : 0), ' ');
        }
        if (below || row.back().empty()) line.erase(line.find_last_not_of(' ') + 1);
        if (below) {
            out += "  ";
            wrap(out, line, 2, 6, width);
            line = std::string(6, ' ');
            if (row.back().empty()) continue;
        }
        out += line;
        wrap(out, row.back(), columns(line), columns(line), width);
    }
}

std::vector<ManualEntry> read_pages() {
    std::vector<ManualEntry> entries;
    for (const ManualPage& page : std::span(kManualPages, kManualPageCount)) {
        const std::vector<std::string> parts = split(page.markdown, "\n## ");
        for (const std::string& part : std::span(parts).subspan(1)) {
            ManualEntry entry{
                page.name, part.substr(0, part.find('\n')), "", {}, part.substr(part.find('\n') + 1)};
            for (const std::string& paragraph : split(entry.text, "\n\n")) {
                const size_t begin = paragraph.find_first_not_of('\n');
                if (begin == paragraph.npos ||
                    std::string_view("`|").find(paragraph[begin]) != std::string_view::npos) {
                    continue;
                }
                entry.summary = without_marks(split(paragraph.substr(begin), ". ").front());
                break;
            }
            constexpr std::string_view kTasks = "\n**Tasks:** ";
            if (const size_t at = entry.text.find(kTasks); at != entry.text.npos) {
                const size_t from = at + kTasks.size();
                entry.tasks = split(entry.text.substr(from, entry.text.find('\n', from) - from), ", ");
            }
            entries.push_back(std::move(entry));
        }
    }
    return entries;
}

}  // namespace

const std::vector<ManualEntry>& manual() {
    static const std::vector<ManualEntry> entries = read_pages();
    return entries;
}

std::string language_rows(std::string_view name) {
    std::string rows;
    for (const ManualEntry& entry : manual()) {
        if (entry.page != "language") continue;
        for (const std::string& line : split(entry.text, "\n")) {
            if (line.starts_with("| `") && has_word(cells(line).front(), name)) rows += line + '\n';
        }
    }
    return rows;
}

std::string for_terminal(std::string_view markdown, size_t width) {
    std::string out;
    std::vector<std::vector<std::string>> table;
    bool code = false;
    std::istringstream lines{std::string(markdown)};
    for (std::string line; std::getline(lines, line);) {
        if (!table.empty() && !line.starts_with("|")) {
            print_table(out, table, width);
            table.clear();
        }
        if (line.starts_with("```")) {
            code = !code;
            if (code && line == "```output") out += "  prints\n";
        } else if (code) {
            out += "    " + line + '\n';
        } else if (line.starts_with("|--")) {
            continue;
        } else if (line.starts_with("|")) {
            table.push_back(cells(line));
        } else if (line.empty()) {
            if (!out.empty() && !out.ends_with("\n\n")) out += '\n';
        } else {
            wrap(out, without_marks(line), 0, 0, width);
        }
    }
    if (!table.empty()) print_table(out, table, width);
    return out;
}

}  // namespace minihost
