// The words and signs of the language that are no names.
#pragma once

#include <span>
#include <string_view>

namespace minihost {

enum class Op {
    Or,
    Xor,
    And,
    Equal,
    Unequal,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
    Is,
    Plus,
    Minus,
    Times,
    Divide,
    IntegerDivide,
    Mod,
    Power,
    Not,
    Negate,
};

struct Operator {
    std::string_view text;
    Op op;
    int strength;  // the stronger of two operators takes the operand between them
};

// Nothing (nil) for a text that is no operator of the kind. Words are found in any capitalisation.
const Operator* find_binary(std::string_view text);
const Operator* find_prefix(std::string_view text);

struct Keyword {
    enum class Role {
        Statement,  // begins a statement
        Part,       // stands inside one
        Closing,    // ends the statements of a block
        Operand,    // begins an operand
        Operator,
    };
    std::string_view text;
    Role role;
};

std::span<const Keyword> keywords();
const Keyword* find_keyword(std::string_view text);

}  // namespace minihost
