// Names that a script's author wrote, or misspelt.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "minihost/library/names.h"

namespace minihost {

std::string lower(std::string_view name);

// The name in quotation marks.
std::string in_quotes(std::string_view name);

// The text with its control characters as \x0A and the like, so that a message stays in its line.
std::string printable(std::string_view text);

// "; did you mean FindByteZOR?" for the candidate that is nearest to `name`, or "" when none is near.
std::string suggestion(std::string_view name, const std::vector<std::string>& candidates);

}  // namespace minihost
