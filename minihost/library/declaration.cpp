#include "minihost/library/declaration.h"

#include <charconv>
#include <stdexcept>

#include "minihost/library/names.h"

namespace minihost {
namespace {

bool is_letter(char c) { return c == '_' || (lower_case(c) >= 'a' && lower_case(c) <= 'z'); }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

// A literal's value: Integer or Int64, Double, or Boolean.
std::optional<Value> literal_value(std::string_view text) {
    if (same_name(text, "true")) return true;
    if (same_name(text, "false")) return false;
    const char* end = text.data() + text.size();
    int64_t integer = 0;
    if (const auto [rest, error] = std::from_chars(text.data(), end, integer);
        error == std::errc() && rest == end)
        return integer;
    double number = 0;
    if (const auto [rest, error] = std::from_chars(text.data(), end, number);
        error == std::errc() && rest == end)
        return number;
    return std::nullopt;
}

// name [ "(" [ parameter { "," parameter } ] ")" ] [ "as" type ]
// parameter: name "as" type [ "=" literal ]
class Parser {
 public:
    explicit Parser(std::string_view text) : text_(text) {}

    Declaration declaration() {
        Declaration result{
            .text = std::string(text_), .name = name("a name"), .parameters = {}, .result = {}};
        if (take("(") && !take(")")) {
            do result.parameters.push_back(parameter());
            while (take(","));
            if (!take(")")) fail("\",\" or \")\"");
        }
        if (take("as")) result.result = parse_type(name("a type"));
        if (!next().empty()) fail("the end");
        return result;
    }

 private:
    Parameter parameter() {
        Parameter result{.name = name("a parameter's name"), .type = {}, .default_value = {}};
        if (!take("as")) fail("\"as\"");
        result.type = parse_type(name("a type"));
        if (take("=")) {
            const std::string_view text = next();
            const auto literal = literal_value(text);
            if (literal) result.default_value = convert_scalar(*literal, result.type.kind);
            if (!result.default_value) fail("a default value for " + to_string(result.type));
            at_ += text.size();
        }
        return result;
    }

    std::string name(const char* expected) {
        const std::string_view word = next();
        if (word.empty() || !is_letter(word[0])) fail(expected);
        at_ += word.size();
        return std::string(word);
    }

    bool take(std::string_view token) {
        if (!same_name(next(), token)) return false;
        at_ += token.size();
        return true;
    }

    // The name, number or other character that follows any blanks; empty at the end.
    std::string_view next() {
        while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\t')) ++at_;
        const std::string_view rest = text_.substr(at_);
        if (rest.empty()) return rest;
        size_t length = 0;
        const bool number = is_digit(rest[0]) || rest[0] == '-' || rest[0] == '.';
        while (length < rest.size() && (is_letter(rest[length]) || is_digit(rest[length]) ||
                                        (number && (rest[length] == '-' || rest[length] == '.')))) {
            ++length;
        }
        return rest.substr(0, std::max(length, size_t(1)));
    }

    [[noreturn]] void fail(const std::string& expected) {
        const std::string_view found = next();
        throw std::invalid_argument("\"" + std::string(text_) + "\", column " + std::to_string(at_ + 1) +
                                    ": expected " + expected + ", found " +
                                    (found.empty() ? "the end" : "\"" + std::string(found) + "\""));
    }

    std::string_view text_;
    size_t at_ = 0;
};

}  // namespace

size_t Declaration::required() const {
    size_t count = parameters.size();
    while (count > 0 && parameters[count - 1].default_value) --count;
    return count;
}

Declaration parse_declaration(std::string_view text) { return Parser(text).declaration(); }

}  // namespace minihost
