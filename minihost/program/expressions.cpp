#include "minihost/program/expressions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "minihost/program/names.h"

namespace minihost {
namespace {

enum class Op {
    Plus,
    Minus,
    Times,
    Divide,
    IntegerDivide,
    Mod,
    Power,
    Equal,
    Unequal,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
    Is,
    And,
    Or,
    Xor
};

Op find_op(const std::string& text) {
    static constexpr std::array<std::string_view, 17> kTexts{
        "+", "-", "*", "/", "\\", "mod", "^", "=", "<>", "<", "<=", ">", ">=", "is", "and", "or", "xor"};
    return Op(std::find(kTexts.begin(), kTexts.end(), lower(text)) - kTexts.begin());
}

bool is_comparison(Op op) { return op >= Op::Equal && op <= Op::GreaterEqual; }

[[noreturn]] void fail(const Token& op, const std::string& wanted, const Expression& left,
                       const Expression& right) {
    throw ScriptError(op.at, in_quotes(op.text) + " takes " + wanted + ", found " + type_name(left.type) +
                                 " and " + type_name(right.type));
}

// Numbers

// Whole numbers wrap around, as the host's do.
template <class Number>
Number compute(Runtime& runtime, Op op, Number a, Number b) {
    if constexpr (std::is_floating_point_v<Number>) {
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
    } else {
        using Bits = std::make_unsigned_t<Number>;
        const auto x = Bits(a);
        const auto y = Bits(b);
        switch (op) {
            case Op::Plus:
                return Number(x + y);
            case Op::Minus:
                return Number(x - y);
            case Op::Times:
                return Number(x * y);
            case Op::And:
                return Number(x & y);
            case Op::Or:
                return Number(x | y);
            case Op::Xor:
                return Number(x ^ y);
            default:
                break;
        }
        if (b == 0) raise(runtime, "RuntimeException", "division by zero");
        // The smallest number has no positive counterpart to divide into.
        const bool negates = std::is_signed_v<Number> && y == Bits(-1);
        if (op == Op::IntegerDivide) return negates ? Number(0 - x) : Number(a / b);
        return negates ? Number(0) : Number(a % b);
    }
}

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

// Evaluates an operand as a number of the given type.
template <class Number>
Number operand(const Expression& expression, Runtime& runtime) {
    const Value value = expression.evaluate(runtime);
    if (const Number* exact = std::get_if<Number>(&value)) return *exact;
    return number<Number>(value);
}

// Below 0 when the first of two whole numbers is the smaller one, whatever their types.
int order(const Value& first, const Value& second) {
    return std::visit(
        [](const auto& a, const auto& b) {
            using A = std::decay_t<decltype(a)>;
            using B = std::decay_t<decltype(b)>;
            constexpr bool kWhole = std::is_integral_v<A> && std::is_integral_v<B> &&
                                    !std::is_same_v<A, bool> && !std::is_same_v<B, bool>;
            if constexpr (kWhole) {
                return std::cmp_less(a, b) ? -1 : int(std::cmp_greater(a, b));
            } else {
                return 0;
            }
        },
        first, second);
}

Expression numeric(const Token& token, Op op, const Expression& left, const Expression& right) {
    Type common = left.type.kind > right.type.kind ? left.type : right.type;
    if (is_comparison(op) && common.kind == Kind::UInt64) {
        return {kBoolean, token.at, [op, left, right](Runtime& runtime) -> Value {
                    const Value first = left.evaluate(runtime);
                    return compare(op, order(first, right.evaluate(runtime)), 0);
                }};
    }
    const bool whole_only =
        op == Op::IntegerDivide || op == Op::Mod || op == Op::And || op == Op::Or || op == Op::Xor;
    if (op == Op::Divide || op == Op::Power) common = kDouble;
    if (whole_only && common == kDouble) common = kInt64;
    Evaluate evaluate = with_number(common.kind, [&](auto zero) -> Evaluate {
        using Number = decltype(zero);
        return [op, left, right, line = token.at.line](Runtime& runtime) -> Value {
            const auto a = operand<Number>(left, runtime);
            const auto b = operand<Number>(right, runtime);
            if (is_comparison(op)) return compare(op, a, b);
            runtime.line = line;
            return compute(runtime, op, a, b);
        };
    });
    return {is_comparison(op) ? kBoolean : common, token.at, std::move(evaluate)};
}

// Truth, strings and references

// What the first operand settles is settled without the second one.
Expression logical(const Token& token, Op op, const Expression& left, const Expression& right) {
    return {kBoolean, token.at, [op, left, right](Runtime& runtime) -> Value {
                const bool first = std::get<bool>(left.evaluate(runtime));
                if ((op == Op::And && !first) || (op == Op::Or && first)) return first;
                const bool second = std::get<bool>(right.evaluate(runtime));
                if (op == Op::And || op == Op::Or) return second;
                return (first == second) == (op == Op::Equal);
            }};
}

// The bytes of both, in the encoding of the first one that has any.
Value join(Runtime& runtime, const Value& left, const Value& right) {
    Host& host = runtime.host;
    const auto& first = std::get<StringRef>(left);
    const auto& second = std::get<StringRef>(right);
    if (bytes_of(runtime, left).empty()) return right;
    if (bytes_of(runtime, right).empty()) return left;
    const uint32_t encoding = host.encoding_of(first.get());
    auto text =
        host.encoding_of(second.get()) == encoding ? std::nullopt : host.text_of(second.get(), encoding);
    const std::string bytes(bytes_of(runtime, left));
    return host.new_string(bytes + (text ? *text : std::string(bytes_of(runtime, right))), encoding);
}

Expression textual(const Token& token, Op op, const Expression& left, const Expression& right) {
    if (op == Op::Plus) {
        return {kString, token.at, [left, right](Runtime& runtime) {
                    const Value first = left.evaluate(runtime);
                    return join(runtime, first, right.evaluate(runtime));
                }};
    }
    if (!is_comparison(op)) fail(token, "numbers", left, right);
    // The host compares strings without regard to capitalisation.
    return {kBoolean, token.at, [op, left, right](Runtime& runtime) -> Value {
                const Value first = left.evaluate(runtime);
                const Value second = right.evaluate(runtime);
                return compare(op, lower(bytes_of(runtime, first)), lower(bytes_of(runtime, second)));
            }};
}

bool is_reference(const Type& type) { return type.kind == Kind::Object || type.kind == Kind::Ptr; }

Expression identity(const Token& token, Op op, const Expression& left, const Expression& right) {
    const Type& common = left.type.kind == Kind::Ptr || right.type == kNil ? left.type : right.type;
    if (!is_reference(left.type) || !is_reference(right.type)) fail(token, "two objects", left, right);
    return {kBoolean, token.at, [op, left, right, common](Runtime& runtime) -> Value {
                const Value first = convert(left.evaluate(runtime), common);
                return (first == convert(right.evaluate(runtime), common)) == (op != Op::Unequal);
            }};
}

// Calls

// " (srcOfs as Integer, numBytes as Integer)", as registered.
std::string parameters_text(const Declaration& declaration) {
    if (declaration.parameters.empty()) return "";
    const size_t first = declaration.text.find('(');
    return ' ' + declaration.text.substr(first, declaration.text.rfind(')') + 1 - first);
}

std::string count_text(const Declaration& declaration) {
    const size_t least = declaration.required();
    const size_t most = declaration.parameters.size();
    const std::string range = least == most ? "" : std::to_string(least) + " to ";
    return range + (most == 0 ? "no" : std::to_string(most)) + (most == 1 ? " argument" : " arguments");
}

// The argument that fits worst, and how well it does.
std::pair<size_t, Fit> worst_fit(Host& host, const Declaration& declaration,
                                 const std::vector<Expression>& arguments) {
    std::pair<size_t, Fit> worst{0, Fit::Whole};
    for (size_t i = 0; i < arguments.size(); ++i) {
        const Fit found = fit(host, declaration.parameters[i].type, arguments[i].type);
        if (found < worst.second) worst = {i, found};
    }
    return worst;
}

const Callable& choose(Host& host, const Token& name, const std::vector<Callable>& overloads,
                       const std::vector<Expression>& arguments) {
    const Callable* best = nullptr;
    const Callable* counted = nullptr;  // takes as many arguments
    std::pair<size_t, Fit> best_fit{0, Fit::No};
    std::string expected;
    for (const Callable& overload : overloads) {
        const Declaration& declaration = overload.declaration;
        expected +=
            (expected.empty() ? " takes " : " or ") + count_text(declaration) + parameters_text(declaration);
        if (arguments.size() < declaration.required() || arguments.size() > declaration.parameters.size())
            continue;
        counted = &overload;
        const auto found = worst_fit(host, declaration, arguments);
        if (!best || found.second > best_fit.second) {
            best = &overload;
            best_fit = found;
        }
    }
    if (!counted) {
        throw ScriptError(
            name.at, overloads[0].declaration.name + expected + ", got " + std::to_string(arguments.size()));
    }
    if (best_fit.second == Fit::No) {
        const Parameter& parameter = best->declaration.parameters[best_fit.first];
        const Expression& argument = arguments[best_fit.first];
        throw ScriptError(argument.at, best->declaration.name + " takes " + parameter.name + " as " +
                                           to_string(parameter.type) + ", found " + type_name(argument.type));
    }
    return *best;
}

// A call with everything that it needs.
struct Call {
    Callable callable;
    Position at;
    Evaluate self;
    std::vector<Evaluate> arguments;

    Value run(Runtime& runtime, const Callable::Function& function, const Value* assigned) const {
        ObjectRef object;
        if (self) object = std::get<ObjectRef>(self(runtime));
        std::vector<Value> values;
        values.reserve(arguments.size() + 1);
        for (const Evaluate& argument : arguments) values.push_back(argument(runtime));
        if (assigned) values.push_back(*assigned);
        runtime.line = at.line;
        try {
            return function(runtime, object, values);
        } catch (const CallError& error) {
            throw ScriptError(at, error.what());
        }
    }
};

}  // namespace

Expression constant(Position at, const Type& type, const Value& value) {
    return {type, at, [value](Runtime&) { return value; }};
}

// A string of its own at each evaluation: between them the script holds no reference.
Expression text_constant(const Token& token) {
    return {kString, token.at, [text = token.text](Runtime& runtime) { return utf8_string(runtime, text); }};
}

Expression variable(Position at, const Type& type, size_t slot) {
    return {type, at, [slot](Runtime& runtime) { return runtime.variables[slot]; },
            [slot](Runtime& runtime, const Value& value) { runtime.variables[slot] = value; }};
}

Expression unary(const Token& op, const Expression& inner) {
    const bool negation = op.text == "-";
    const Type type = inner.type;
    if (!negation && type == kBoolean) {
        return {type, op.at,
                [inner](Runtime& runtime) -> Value { return !std::get<bool>(inner.evaluate(runtime)); }};
    }
    if (!is_number(type) || (!negation && !is_whole(type))) {
        throw ScriptError(op.at, in_quotes(op.text) + " takes " +
                                     (negation ? "a number" : "a Boolean or a whole number") + ", found " +
                                     type_name(type));
    }
    if (type == kDouble) {
        return {type, op.at,
                [inner](Runtime& runtime) -> Value { return -std::get<double>(inner.evaluate(runtime)); }};
    }
    // -x is 0 - x, and Not x is -1 - x. What is negated has a sign.
    const Type integer{Kind::Integer, ""};
    const Expression from = constant(op.at, integer, int32_t{negation ? 0 : -1});
    Expression subtracted = inner;
    if (negation && type.kind == Kind::UInt64) subtracted.type = kInt64;
    return numeric(op, Op::Minus, from, subtracted);
}

Expression binary(const Token& token, const Expression& left, const Expression& right) {
    const Op op = find_op(token.text);
    if (op == Op::Is) return identity(token, op, left, right);
    const bool tests_equality = op == Op::Equal || op == Op::Unequal;
    if (left.type == kBoolean && right.type == kBoolean && (op >= Op::And || tests_equality)) {
        return logical(token, op, left, right);
    }
    if (is_number(left.type) && is_number(right.type)) return numeric(token, op, left, right);
    if (left.type == kString && right.type == kString) return textual(token, op, left, right);
    if (tests_equality && (is_reference(left.type) || is_reference(right.type))) {
        return identity(token, op, left, right);
    }
    if (op >= Op::And) fail(token, "two Booleans or two whole numbers", left, right);
    fail(token, op == Op::Plus || is_comparison(op) ? "two numbers or two strings" : "two numbers", left,
         right);
}

Expression call(Host& host, const Token& name, const std::vector<Callable>& overloads, const Expression* self,
                const std::vector<Expression>& arguments) {
    const auto shared = std::make_shared<Call>();
    shared->callable = choose(host, name, overloads, arguments);
    shared->at = name.at;
    if (self) shared->self = self->evaluate;
    for (const Expression& argument : arguments) shared->arguments.push_back(argument.evaluate);
    const Declaration& declaration = shared->callable.declaration;
    for (size_t i = arguments.size(); i < declaration.parameters.size(); ++i) {
        shared->arguments.push_back(
            [value = *declaration.parameters[i].default_value](Runtime&) { return value; });
    }
    Expression result{declaration.result, name.at, [shared](Runtime& runtime) {
                          return convert(shared->run(runtime, shared->callable.get, nullptr),
                                         shared->callable.declaration.result);
                      }};
    result.is_call = true;
    if (shared->callable.set) {
        result.assign = [shared](Runtime& runtime, const Value& value) {
            shared->run(runtime, shared->callable.set, &value);
        };
    }
    return result;
}

Expression converted(Host& host, Expression value, const Type& declared, const std::string& purpose) {
    if (fit(host, declared, value.type) == Fit::No) {
        throw ScriptError(value.at,
                          purpose + " takes " + type_name(declared) + ", found " + type_name(value.type));
    }
    if (value.type == declared || declared.kind == Kind::Object) return value;
    return {declared, value.at, [declared, evaluate = value.evaluate](Runtime& runtime) {
                return convert(evaluate(runtime), declared);
            }};
}

}  // namespace minihost
