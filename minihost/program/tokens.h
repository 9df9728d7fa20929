// The tokens of a script, read one after another.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "minihost/program/lexer.h"

namespace minihost {

// Whether a name or symbol is this one, in any capitalisation.
bool is(const Token& token, std::string_view text);
bool is_keyword(const Token& token);
// Whether the word ends the statements of a block.
bool closes_block(const Token& token);

class Tokens {
 public:
    using Words = std::initializer_list<std::string_view>;

    explicit Tokens(std::string_view text) : tokens_(tokenize(text)) {}

    const Token& peek(size_t ahead = 0) const;
    bool at_end() const { return peek().kind == Token::Kind::End; }
    bool at_line_end() const { return peek().kind == Token::Kind::LineEnd; }
    bool next_is(Words words) const;

    Token take() { return tokens_[next_++]; }
    void skip(size_t count) { next_ += count; }
    // The one that was read last, such as the word that opens a block.
    Token last() const { return tokens_[next_ - 1]; }
    // The one that stands at a place.
    const Token& at(Position place) const;

    // Reads the text if it comes next.
    bool accept(std::string_view text);

    // These throw ScriptError when something else comes next.
    void expect(std::string_view text);
    Token expect_name(const std::string& what);
    void expect_line_end();
    [[noreturn]] void fail_unexpected(const std::string& expected) const;

    size_t mark() const { return next_; }
    void back_to(size_t mark) { next_ = mark; }

 private:
    std::vector<Token> tokens_;
    size_t next_ = 0;
};

}  // namespace minihost
