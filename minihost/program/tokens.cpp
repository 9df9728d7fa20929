#include "minihost/program/tokens.h"

#include <algorithm>

#include "minihost/program/names.h"
#include "minihost/program/words.h"

namespace minihost {

bool is(const Token& token, std::string_view text) {
    return (token.kind == Token::Kind::Name || token.kind == Token::Kind::Symbol) &&
           same_name(token.text, text);
}

bool is_keyword(const Token& token) { return token.kind == Token::Kind::Name && find_keyword(token.text); }

bool closes_block(const Token& token) {
    const Keyword* word = token.kind == Token::Kind::Name ? find_keyword(token.text) : nullptr;
    return word && word->role == Keyword::Role::Closing;
}

const Token& Tokens::peek(size_t ahead) const { return tokens_[std::min(next_ + ahead, tokens_.size() - 1)]; }

bool Tokens::next_is(Words words) const {
    return std::ranges::any_of(words, [&](std::string_view word) { return is(peek(), word); });
}

const Token& Tokens::at(Position place) const {
    return *std::ranges::find_if(tokens_, [&](const Token& token) { return token.at == place; });
}

bool Tokens::accept(std::string_view text) {
    const bool found = is(peek(), text);
    if (found) ++next_;
    return found;
}

void Tokens::expect(std::string_view text) {
    if (!accept(text)) fail_unexpected(in_quotes(text));
}

Token Tokens::expect_name(const std::string& what) {
    if (peek().kind != Token::Kind::Name || is_keyword(peek())) fail_unexpected(what);
    return take();
}

void Tokens::expect_line_end() {
    if (!at_line_end()) fail_unexpected("the end of the statement");
    ++next_;
}

void Tokens::fail_unexpected(const std::string& expected) const {
    throw ScriptError(peek().at, "expected " + expected + ", found " + to_string(peek()));
}

}  // namespace minihost
