#include "minihost/program/names.h"

#include <algorithm>
#include <numeric>

namespace minihost {
namespace {

// The number of letters to insert, drop or replace to turn one name into the other (Levenshtein's distance).
size_t edits(std::string_view a, std::string_view b) {
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < a.size(); ++i) {
        size_t diagonal = row[0]++;
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string lower(std::string_view name) {
    std::string result(name);
    std::transform(result.begin(), result.end(), result.begin(), lower_case);
    return result;
}

std::string in_quotes(std::string_view name) { return '"' + std::string(name) + '"'; }

std::string suggestion(std::string_view name, const std::vector<std::string>& candidates) {
    const std::string* best = nullptr;
    size_t fewest = name.size() / 3 + 2;
    for (const std::string& candidate : candidates) {
        // A name without its suffix, or the start of one, counts as one edit.
        const std::string known = lower(candidate);
        const std::string wanted = lower(name);
        const size_t count = wanted.size() > 2 && known.starts_with(wanted) ? 1 : edits(wanted, known);
        if (count < fewest) {
            fewest = count;
            best = &candidate;
        }
    }
    return best ? "; did you mean " + *best + "?" : "";
}

}  // namespace minihost
