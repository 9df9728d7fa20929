#include "minihost/program/arithmetic.h"

#include <cmath>
#include <utility>

namespace minihost {
namespace {

double compute_real(Op op, double a, double b) {
    switch (op) {
        case Op::Plus:
            return a + b;
        case Op::Minus:
            return a - b;
        case Op::Times:
            return a * b;
        case Op::Divide:
            return a / b;
        default:
            return std::pow(a, b);
    }
}

template <class Number>
std::optional<Value> compute_whole(Op op, Number a, Number b) {
    Number result;
    bool overflow = false;
    switch (op) {
        case Op::Plus:
            overflow = __builtin_add_overflow(a, b, &result);
            break;
        case Op::Minus:
            overflow = __builtin_sub_overflow(a, b, &result);
            break;
        case Op::Times:
            overflow = __builtin_mul_overflow(a, b, &result);
            break;
        case Op::IntegerDivide:
            // The smallest number has no positive counterpart.
            overflow = std::is_signed_v<Number> && a == std::numeric_limits<Number>::min() && b + 1 == 0;
            result = overflow ? a : Number(a / b);
            break;
        default:
            result = std::is_signed_v<Number> && b + 1 == 0 ? Number(0) : Number(a % b);
    }
    return overflow ? std::nullopt : std::optional<Value>(result);
}

template <class Number>
Number compute_bits(Op op, Number a, Number b) {
    return op == Op::And ? a & b : op == Op::Or ? a | b : a ^ b;
}

bool is_bitwise(Op op) { return op == Op::And || op == Op::Or || op == Op::Xor; }

// Of an operator on bits a negative number's bits go on to the left.
template <class Number>
std::optional<Number> operand(Op op, const Value& value, const Type& type) {
    if (is_bitwise(op) && !std::holds_alternative<double>(value)) return number<Number>(value);
    const auto converted = convert(value, type);
    return converted ? std::optional(std::get<Number>(*converted)) : std::nullopt;
}

}  // namespace

Type result_type(Op op, const Type& left, const Type& right) {
    const Type& common = left.kind > right.kind ? left : right;
    if (op == Op::Divide || op == Op::Power) return kDouble;
    const bool whole = op == Op::IntegerDivide || op == Op::Mod || is_bitwise(op);
    return whole && common == kDouble ? kInt64 : common;
}

std::optional<Value> compute(Runtime& runtime, Op op, const Value& left, const Value& right,
                             const Type& type) {
    return with_number(type.kind, [&](auto zero) -> std::optional<Value> {
        using Number = decltype(zero);
        if constexpr (std::is_integral_v<Number>) {
            const auto a = operand<Number>(op, left, type);
            const auto b = operand<Number>(op, right, type);
            if (!a || !b) return std::nullopt;
            if (is_bitwise(op)) return compute_bits(op, *a, *b);
            const bool divides = op == Op::IntegerDivide || op == Op::Mod;
            if (divides && *b == 0) raise(runtime, "RuntimeException", "division by zero");
            return compute_whole(op, *a, *b);
        } else {
            return compute_real(op, number<double>(left), number<double>(right));
        }
    });
}

std::optional<Value> negated(const Value& value, const Type& type) {
    if (const auto* real = std::get_if<double>(&value)) return -*real;
    return std::visit(
        [&](const auto& from) -> std::optional<Value> {
            using From = std::decay_t<decltype(from)>;
            int64_t result = 0;
            if constexpr (std::is_integral_v<From> && !std::is_same_v<From, bool>) {
                if (__builtin_sub_overflow(0, from, &result)) return std::nullopt;
            }
            return convert_scalar(result, type.kind);
        },
        value);
}

bool compare_numbers(Op op, const Value& left, const Value& right) {
    return std::visit(
        [&](const auto& a, const auto& b) {
            using A = std::decay_t<decltype(a)>;
            using B = std::decay_t<decltype(b)>;
            if constexpr (!std::is_arithmetic_v<A> || !std::is_arithmetic_v<B>) {
                return false;
            } else if constexpr (std::is_same_v<A, bool> || std::is_same_v<B, bool> ||
                                 std::is_same_v<A, double> || std::is_same_v<B, double>) {
                return compare(op, double(a), double(b));
            } else {
                return compare(op, int(std::cmp_greater(a, b)) - int(std::cmp_less(a, b)), 0);
            }
        },
        left, right);
}

}  // namespace minihost
