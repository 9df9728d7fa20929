// Calculation with numbers. Whole numbers never wrap around.
#pragma once

#include "minihost/program/runtime.h"
#include "minihost/program/words.h"

namespace minihost {

constexpr bool is_comparison(Op op) { return op >= Op::Equal && op <= Op::GreaterEqual; }

template <class Operand>
bool compare(Op op, const Operand& a, const Operand& b) {
    switch (op) {
        case Op::Equal:
            return a == b;
        case Op::Unequal:
            return a != b;
        case Op::Less:
            return a < b;
        case Op::LessEqual:
            return a <= b;
        case Op::Greater:
            return a > b;
        default:
            return a >= b;
    }
}

// The type of the result of an operator that is no comparison.
Type result_type(Op op, const Type& left, const Type& right);

// The result in `type`, which is result_type(). Nothing where an operand or the result is outside the type's
// range. Raises a host exception for a division by zero.
std::optional<Value> compute(Runtime& runtime, Op op, const Value& left, const Value& right,
                             const Type& type);
// The number with its sign changed; nothing where `type` does not hold it.
std::optional<Value> negated(const Value& number, const Type& type);

// The result of a comparison by value, whatever the types.
bool compare_numbers(Op op, const Value& left, const Value& right);

}  // namespace minihost
