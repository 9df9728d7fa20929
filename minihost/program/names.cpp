#include "minihost/program/names.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <utility>

namespace minihost {
namespace {

// The number of letters to insert, drop, replace, or swap with their neighbour to turn one name into the
// other (the optimal string alignment distance).
size_t edits(std::string_view a, std::string_view b) {
    std::vector<size_t> last;
    std::vector<size_t> above;
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < a.size(); ++i) {
        last = std::exchange(above, row);
        row[0] = i + 1;
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t replaced = above[j] + (a[i] == b[j] ? 0 : 1);
            row[j + 1] = std::min({replaced, row[j] + 1, above[j + 1] + 1});
            const bool swapped = i > 0 && j > 0 && a[i] == b[j - 1] && a[i - 1] == b[j];
            if (swapped) row[j + 1] = std::min(row[j + 1], last[j - 1] + 1);
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

std::string printable(std::string_view text) {
    std::string shown;
    for (const char c : text) {
        const auto code = uint8_t(c);
        if (code >= ' ' && code != 0x7F) {
            shown += c;
        } else {
            shown += "\\x";
            for (const int digit : {code >> 4, code & 15}) shown += "0123456789ABCDEF"[digit];
        }
    }
    return shown;
}

std::string suggestion(std::string_view name, const std::vector<std::string>& candidates) {
    const std::string wanted = lower(name);
    const std::string* best = nullptr;
    size_t fewest = wanted.size() < 3 ? 0 : std::max<size_t>(wanted.size() / 4, 1);  // that are near
    for (const std::string& candidate : candidates) {
        const std::string known = lower(candidate);
        // The start of a name counts as one edit.
        const size_t count = known.starts_with(wanted) ? 1 : edits(wanted, known);
        if (best ? count < fewest : count <= fewest) {
            fewest = count;
            best = &candidate;
        }
    }
    return best ? "; did you mean " + *best + "?" : "";
}

}  // namespace minihost
