#include "minihost/program/lexer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <functional>
#include <limits>

#include "minihost/program/names.h"

namespace minihost {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool is_name(char c) { return is_letter(c) || is_digit(c); }
bool continues_character(char c) { return (uint8_t(c) & 0xC0) == 0x80; }
bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

// The narrowest of the host's types that holds the number.
Value integer(uint64_t number) {
    if (number <= uint64_t(std::numeric_limits<int32_t>::max())) return int32_t(number);
    if (number <= uint64_t(std::numeric_limits<int64_t>::max())) return int64_t(number);
    return number;
}

class Lexer {
    using Kind = Token::Kind;

 public:
    explicit Lexer(std::string_view text) : text_(text) {
        constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
        if (text_.starts_with(kByteOrderMark)) text_.remove_prefix(kByteOrderMark.size());
    }

    std::vector<Token> run() {
        if (text_.starts_with("#!")) skip_comment();
        while (at_ < text_.size()) next();
        add(Kind::LineEnd, 0);
        add(Kind::End, 0);
        return std::move(tokens_);
    }

 private:
    char peek(size_t ahead = 0) const { return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0'; }
    size_t length_while(bool (*wanted)(char), size_t from = 0) const {
        while (at_ + from < text_.size() && wanted(text_[at_ + from])) ++from;
        return from;
    }

    // Counts only the characters since the last call.
    Position position() {
        const std::string_view passed = text_.substr(counted_, at_ - counted_);
        column_ += int(std::count_if(passed.begin(), passed.end(), std::not_fn(continues_character)));
        counted_ = at_;
        return {line_, column_};
    }

    [[noreturn]] void fail(const std::string& what) { throw ScriptError(position(), what); }

    Token& add(Kind kind, size_t length) {
        tokens_.push_back({kind, std::string(text_.substr(at_, length)), position()});
        at_ += length;
        return tokens_.back();
    }

    void next() {
        const char c = peek();
        if (c == '\n') return end_line();
        if (is_blank(c)) return void(++at_);
        if (c == '\'' || (c == '/' && peek(1) == '/')) return skip_comment();
        if (c == '_' && !is_name(peek(1))) return continue_line();
        if (c == '"') return string();
        if (c == '&') return based_number();
        if (is_digit(c) || (c == '.' && is_digit(peek(1)))) return number();
        if (is_letter(c)) return void(add(Kind::Name, length_while(is_name)));
        symbol();
    }

    // The next character, as a message shows it: whole, or its first byte where that is nothing to show.
    std::string character() const {
        const auto first = uint8_t(peek());
        const size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
        const bool printable = first < 0x80 ? first >= ' ' && first != 0x7F : first >= 0xC2 && first < 0xF5;
        if (printable && (length == 1 || length_while(continues_character, 1) >= length))
            return in_quotes(text_.substr(at_, length));
        std::array<char, 8> buffer{};
        std::snprintf(buffer.data(), buffer.size(), "\\x%02X", unsigned(first));
        return buffer.data();
    }

    void start_line() {
        ++at_;
        ++line_;
        counted_ = at_;
        column_ = 1;
    }

    void end_line() {
        add(Kind::LineEnd, 0);
        start_line();
    }

    void skip_comment() { at_ = std::min(text_.find('\n', at_), text_.size()); }

    void continue_line() {
        const Position start = position();
        ++at_;
        at_ += length_while(is_blank);
        if (peek() == '\'' || (peek() == '/' && peek(1) == '/')) skip_comment();
        if (at_ < text_.size() && peek() != '\n')
            fail("expected the end of the line after \"_\", found " + character());
        if (at_ + 1 >= text_.size())
            throw IncompleteScript(start, "expected a line after \"_\", found end of the script");
        start_line();
    }

    void string() {
        const Position start = position();
        std::string content;
        for (++at_; peek() != '"' || peek(1) == '"'; ++at_) {
            if (at_ >= text_.size() || peek() == '\n')
                throw ScriptError(start, "the string has no closing quotation mark");
            if (peek() == '"') ++at_;
            content += peek();
        }
        ++at_;
        tokens_.push_back({Kind::String, content, start});
    }

    void based_number() {
        const char letter = char(peek(1) | 0x20);
        const int base = letter == 'h' ? 16 : letter == 'o' ? 8 : letter == 'b' ? 2 : 0;
        if (base == 0)
            fail("expected &h, &o or &b and digits, found " +
                 in_quotes(text_.substr(at_, length_while(is_name, 1))));
        Token& token = add(Kind::Number, length_while(is_name, 2));
        token.number = parse_integer(token, 2, base);
    }

    void number() {
        size_t length = length_while(is_digit);
        const size_t digits = length;
        if (peek(length) == '.' && is_digit(peek(length + 1))) length = length_while(is_digit, length + 1);
        if ((peek(length) | 0x20) == 'e') {
            const size_t sign = peek(length + 1) == '+' || peek(length + 1) == '-' ? 1 : 0;
            if (is_digit(peek(length + 1 + sign))) length = length_while(is_digit, length + 1 + sign);
        }
        Token& token = add(Kind::Number, length);
        if (length == digits) {
            token.number = parse_integer(token, 0, 10);
        } else {
            double value = 0;
            const auto result = std::from_chars(token.text.data(), token.text.data() + length, value);
            if (result.ec != std::errc()) throw ScriptError(token.at, "the number is out of range");
            token.number = value;
        }
    }

    static Value parse_integer(const Token& token, size_t skip, int base) {
        uint64_t value = 0;
        const char* end = token.text.data() + token.text.size();
        const auto result = std::from_chars(token.text.data() + skip, end, value, base);
        if (result.ec == std::errc::result_out_of_range)
            throw ScriptError(token.at, "the number is out of range");
        if (result.ec != std::errc() || result.ptr != end)
            throw ScriptError(token.at, "expected digits of base " + std::to_string(base) + ", found " +
                                            in_quotes(token.text));
        return integer(value);
    }

    void symbol() {
        if (peek() == ':') {
            add(Kind::LineEnd, 1);
            return;
        }
        const std::string_view pair = text_.substr(at_, 2);
        if (pair == "<>" || pair == "<=" || pair == ">=") {
            add(Kind::Symbol, 2);
        } else if (std::string_view("+-*/\\^=<>().,;").find(peek()) != std::string_view::npos) {
            add(Kind::Symbol, 1);
        } else {
            fail("unexpected character " + character());
        }
    }

    std::string_view text_;
    size_t at_ = 0;
    int line_ = 1;
    size_t counted_ = 0;  // up to here `column_` is right
    int column_ = 1;
    std::vector<Token> tokens_;
};

}  // namespace

std::vector<Token> tokenize(std::string_view text) { return Lexer(text).run(); }

std::string to_string(const Token& token) {
    switch (token.kind) {
        case Token::Kind::LineEnd:
            return "end of line";
        case Token::Kind::End:
            return "end of the script";
        case Token::Kind::String:
            return "string " + in_quotes(token.text);
        default:
            return in_quotes(token.text);
    }
}

}  // namespace minihost
