#include "minihost/program/expressions.h"

#include <memory>

#include "minihost/program/arithmetic.h"
#include "minihost/program/names.h"

namespace minihost {
namespace {

[[noreturn]] void fail(const Token& sign, const std::string& wanted, const Expression& left,
                       const Expression& right) {
    throw ScriptError(sign.at, in_quotes(sign.text) + " takes " + wanted + ", found " + text_of(left.type) +
                                   " and " + text_of(right.type));
}

[[noreturn]] void fail_range(const Token& sign, const Type& type, const std::string& result) {
    throw ScriptError(sign.at, result + " is outside " + range_text(type));
}

Expression numeric(const Token& sign, Op op, const Expression& left, const Expression& right) {
    if (is_comparison(op)) {
        return {kBoolean, sign.at, [op, left, right](Runtime& runtime) -> Value {
                    const Value first = left.evaluate(runtime);
                    return compare_numbers(op, first, right.evaluate(runtime));
                }};
    }
    const Type type = result_type(op, left.type, right.type);
    return {type, sign.at, [sign, op, type, left, right](Runtime& runtime) {
                const Value first = left.evaluate(runtime);
                const Value second = right.evaluate(runtime);
                runtime.at = sign.at;
                if (auto result = compute(runtime, op, first, second, type)) return std::move(*result);
                fail_range(sign, type, show(runtime, first) + ' ' + sign.text + ' ' + show(runtime, second));
            }};
}

// Truth, strings and references

// What the first operand settles is settled without the second one.
Expression logical(const Token& sign, Op op, const Expression& left, const Expression& right) {
    return {kBoolean, sign.at, [op, left, right](Runtime& runtime) -> Value {
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

Expression textual(const Token& sign, Op op, const Expression& left, const Expression& right) {
    if (op == Op::Plus) {
        return {kString, sign.at, [left, right](Runtime& runtime) {
                    const Value first = left.evaluate(runtime);
                    return join(runtime, first, right.evaluate(runtime));
                }};
    }
    if (!is_comparison(op)) fail(sign, "numbers", left, right);
    // The host compares strings without regard to capitalisation.
    return {kBoolean, sign.at, [op, left, right](Runtime& runtime) -> Value {
                const Value first = left.evaluate(runtime);
                const Value second = right.evaluate(runtime);
                return compare(op, lower(bytes_of(runtime, first)), lower(bytes_of(runtime, second)));
            }};
}

bool is_reference(const Type& type) { return type.kind == Kind::Object || type.kind == Kind::Ptr; }

Expression identity(const Token& sign, Op op, const Expression& left, const Expression& right) {
    const Type& common = left.type.kind == Kind::Ptr || right.type == kNil ? left.type : right.type;
    if (!is_reference(left.type) || !is_reference(right.type)) fail(sign, "two objects", left, right);
    return {kBoolean, sign.at, [op, left, right, common](Runtime& runtime) -> Value {
                const auto first = convert(left.evaluate(runtime), common);
                return (first == convert(right.evaluate(runtime), common)) == (op != Op::Unequal);
            }};
}

// Calls

const Callable& chosen(Host& host, const Token& name, const std::vector<Callable>& overloads,
                       const std::vector<Expression>& arguments) {
    std::vector<const Declaration*> declarations;
    std::vector<Type> types;
    declarations.reserve(overloads.size());
    types.reserve(arguments.size());
    for (const Callable& overload : overloads) declarations.push_back(&overload.declaration);
    for (const Expression& argument : arguments) types.push_back(argument.type);
    try {
        return overloads[choose(host, declarations, types)];
    } catch (const CallError& error) {
        throw ScriptError(error.argument ? arguments[*error.argument].at : name.at, error.what());
    }
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
        runtime.at = at;
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

Expression unary(const Token& sign, Op op, const Expression& inner) {
    const bool negation = op == Op::Negate;
    const Type type = inner.type;
    if (!negation && type == kBoolean) {
        return {type, sign.at,
                [inner](Runtime& runtime) -> Value { return !std::get<bool>(inner.evaluate(runtime)); }};
    }
    if (!is_number(type) || (!negation && !is_whole(type))) {
        throw ScriptError(sign.at, in_quotes(sign.text) + " takes " +
                                       (negation ? "a number" : "a Boolean or a whole number") + ", found " +
                                       text_of(type));
    }
    if (!negation) return numeric(sign, Op::Xor, inner, constant(sign.at, kInteger, int32_t{-1}));
    // What is negated has a sign.
    const Type result = type.kind == Kind::UInt64 ? kInt64 : type;
    return {result, sign.at, [sign, result, inner](Runtime& runtime) {
                const Value value = inner.evaluate(runtime);
                if (auto negative = negated(value, result)) return std::move(*negative);
                fail_range(sign, result, '-' + show(runtime, value));
            }};
}

Expression binary(const Token& sign, Op op, const Expression& left, const Expression& right) {
    if (op == Op::Is) return identity(sign, op, left, right);
    const bool combines = op == Op::And || op == Op::Or || op == Op::Xor;
    const bool tests_equality = op == Op::Equal || op == Op::Unequal;
    if (left.type == kBoolean && right.type == kBoolean && (combines || tests_equality)) {
        return logical(sign, op, left, right);
    }
    if (is_number(left.type) && is_number(right.type)) return numeric(sign, op, left, right);
    if (left.type == kString && right.type == kString) return textual(sign, op, left, right);
    if (tests_equality && (is_reference(left.type) || is_reference(right.type))) {
        return identity(sign, op, left, right);
    }
    if (combines) fail(sign, "two Booleans or two whole numbers", left, right);
    fail(sign, op == Op::Plus || is_comparison(op) ? "two numbers or two strings" : "two numbers", left,
         right);
}

Expression call(Host& host, const Token& name, const std::vector<Callable>& overloads, const Expression* self,
                const std::vector<Expression>& arguments) {
    const auto shared = std::make_shared<Call>();
    shared->callable = chosen(host, name, overloads, arguments);
    shared->at = name.at;
    if (self) shared->self = self->evaluate;
    for (const Expression& argument : arguments) shared->arguments.push_back(argument.evaluate);
    const Declaration& declaration = shared->callable.declaration;
    for (size_t i = arguments.size(); i < declaration.parameters.size(); ++i) {
        shared->arguments.push_back(
            [value = *declaration.parameters[i].default_value](Runtime&) { return value; });
    }
    Expression result{declaration.result, name.at, [shared](Runtime& runtime) {
                          return *convert(shared->run(runtime, shared->callable.get, nullptr),
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
    if (!fits(host, declared, value.type)) {
        throw ScriptError(value.at,
                          purpose + " takes " + text_of(declared) + ", found " + text_of(value.type));
    }
    if (value.type == declared || declared.kind == Kind::Object) return value;
    return {declared, value.at,
            [declared, purpose, at = value.at, evaluate = value.evaluate](Runtime& runtime) {
                const Value found = evaluate(runtime);
                if (auto result = convert(found, declared)) return std::move(*result);
                throw ScriptError(
                    at, purpose + " takes " + range_text(declared) + ", got " + show(runtime, found));
            }};
}

}  // namespace minihost
