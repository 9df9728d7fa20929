// Numbers in the form of a pattern.
#pragma once

#include <string>
#include <string_view>

namespace minihost {

// In the pattern 0 stands for a digit, # for a digit where there is one, and one . for the decimal point; a
// comma before it groups the digits by thousands; % multiplies by 100. All else stands for itself.
std::string format_number(double number, std::string_view pattern);

}  // namespace minihost
