#include "minihost/program/words.h"

#include <algorithm>
#include <iterator>

#include "minihost/library/names.h"

namespace minihost {
namespace {

constexpr Operator kBinary[] = {
    {"Or", Op::Or, 1},           {"Xor", Op::Xor, 1},  {"And", Op::And, 2},          {"=", Op::Equal, 4},
    {"<>", Op::Unequal, 4},      {"<", Op::Less, 4},   {"<=", Op::LessEqual, 4},     {">", Op::Greater, 4},
    {">=", Op::GreaterEqual, 4}, {"Is", Op::Is, 4},    {"+", Op::Plus, 5},           {"-", Op::Minus, 5},
    {"*", Op::Times, 6},         {"/", Op::Divide, 6}, {"\\", Op::IntegerDivide, 6}, {"Mod", Op::Mod, 6},
    {"^", Op::Power, 8},
};
constexpr Operator kPrefix[] = {
    {"Not", Op::Not, 3},
    {"-", Op::Negate, 7},
};

using Role = Keyword::Role;
constexpr Keyword kKeywords[] = {
    {"And", Role::Operator},       {"As", Role::Part},        {"Catch", Role::Closing},
    {"Continue", Role::Statement}, {"Dim", Role::Statement},  {"DownTo", Role::Part},
    {"Else", Role::Closing},       {"ElseIf", Role::Closing}, {"End", Role::Closing},
    {"Exit", Role::Statement},     {"False", Role::Operand},  {"For", Role::Statement},
    {"If", Role::Statement},       {"Is", Role::Operator},    {"Mod", Role::Operator},
    {"New", Role::Operand},        {"Next", Role::Closing},   {"Nil", Role::Operand},
    {"Not", Role::Operand},        {"Or", Role::Operator},    {"Print", Role::Statement},
    {"Step", Role::Part},          {"Then", Role::Part},      {"To", Role::Part},
    {"True", Role::Operand},       {"Try", Role::Statement},  {"Wend", Role::Closing},
    {"While", Role::Statement},    {"Xor", Role::Operator},
};

template <class Row>
const Row* find(std::span<const Row> rows, std::string_view text) {
    const auto found = std::ranges::find_if(rows, [&](const Row& row) { return same_name(row.text, text); });
    return found == rows.end() ? nullptr : &*found;
}

}  // namespace

const Operator* find_binary(std::string_view text) { return find<Operator>(kBinary, text); }
const Operator* find_prefix(std::string_view text) { return find<Operator>(kPrefix, text); }

std::span<const Keyword> keywords() { return kKeywords; }
const Keyword* find_keyword(std::string_view text) { return find<Keyword>(kKeywords, text); }

}  // namespace minihost
