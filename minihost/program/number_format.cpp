#include "minihost/program/number_format.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace minihost {
namespace {

std::string fixed(double number, size_t decimals) {
    const int length = std::snprintf(nullptr, 0, "%.*f", int(decimals), number);
    std::string text(size_t(length) + 1, '\0');
    std::snprintf(text.data(), text.size(), "%.*f", int(decimals), number);
    text.pop_back();
    return text;
}

size_t count_of(std::string_view text, char c) { return size_t(std::ranges::count(text, c)); }

}  // namespace

std::string format_number(double number, std::string_view pattern) {
    constexpr std::string_view kDigits = "0#,.";
    constexpr size_t kMostDecimals = 100;
    const size_t first = std::min(pattern.find_first_of(kDigits), pattern.size());
    const size_t last = std::min(pattern.find_first_not_of(kDigits, first), pattern.size());
    const std::string_view digits = pattern.substr(first, last - first);
    const size_t point = std::min(digits.find('.'), digits.size());
    const std::string_view whole = digits.substr(0, point);
    const std::string_view fraction = digits.substr(std::min(point + 1, digits.size()));
    if (pattern.find('%') != pattern.npos) number *= 100;
    if (!std::isfinite(number)) return std::isnan(number) ? "nan" : number < 0 ? "-inf" : "inf";

    const size_t decimals = std::min(count_of(fraction, '0') + count_of(fraction, '#'), kMostDecimals);
    const std::string text = fixed(std::fabs(number), decimals);
    const std::string_view all = text;
    const size_t end = std::min(all.find('.'), all.size());
    std::string_view integer = all.substr(0, end);
    std::string_view places = all.substr(std::min(end + 1, all.size()));
    while (places.size() > count_of(fraction, '0') && places.back() == '0') places.remove_suffix(1);
    if (integer == "0" && count_of(whole, '0') == 0) integer = {};

    std::string result;
    if (number < 0 && all.find_first_of("123456789") != all.npos) result.push_back('-');
    result.append(pattern.substr(0, first));
    const size_t length = std::max(integer.size(), count_of(whole, '0'));
    const bool groups = count_of(whole, ',') > 0;
    for (size_t left = length; left > 0; --left) {
        if (groups && left < length && left % 3 == 0) result.push_back(',');
        result.push_back(left > integer.size() ? '0' : integer[integer.size() - left]);
    }
    if (!places.empty()) result.push_back('.');
    result.append(places);
    return result.append(pattern.substr(last));
}

}  // namespace minihost
