// Expressions whose names and types are settled: what is left to do is to evaluate them. The functions check
// the types of what they combine and throw ScriptError.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "minihost/program/functions.h"
#include "minihost/program/lexer.h"
#include "minihost/program/runtime.h"
#include "minihost/program/words.h"

namespace minihost {

using Evaluate = std::function<Value(Runtime&)>;

struct Expression {
    Type type;
    Position at;
    Evaluate evaluate;                                        // yields a value of `type`
    std::function<void(Runtime&, const Value&)> assign = {};  // empty where nothing can be assigned
    bool is_call = false;
};

Expression constant(Position at, const Type& type, const Value& value);
Expression text_constant(const Token& token);
Expression variable(Position at, const Type& type, size_t slot);
// `sign` is the token that stands for the operator.
Expression unary(const Token& sign, Op op, const Expression& operand);
Expression binary(const Token& sign, Op op, const Expression& left, const Expression& right);
// Calls the overload that fits the arguments best; `self` is nil for functions.
Expression call(Host& host, const Token& name, const std::vector<Callable>& overloads, const Expression* self,
                const std::vector<Expression>& arguments);
// The value in the form of the declared type, for `purpose`, such as "x" in a message.
Expression converted(Host& host, Expression value, const Type& declared, const std::string& purpose);

}  // namespace minihost
