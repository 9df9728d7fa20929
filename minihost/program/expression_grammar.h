// The grammar of expressions: reads them, and finds what their names stand for.
#pragma once

#include <string>
#include <vector>

#include "minihost/program/expressions.h"
#include "minihost/program/scopes.h"
#include "minihost/program/tokens.h"

namespace minihost {

class ExpressionGrammar {
 public:
    ExpressionGrammar(Tokens& tokens, const Scopes& scopes, Host& host)
        : tokens_(tokens), scopes_(scopes), host_(host) {}

    // Operators that are not stronger than `weakest` are left to be read.
    Expression expression(int weakest = 0);
    // What can begin a statement: an operand and the members that are asked of it. The last one may have its
    // arguments without parentheses.
    Expression leading_expression();
    Expression expression_of(const Type& declared, const std::string& purpose);
    Evaluate condition() { return expression_of(kBoolean, "a condition").evaluate; }
    Type type();
    // The class and its arguments, after New.
    Expression construction();

    // One level of parentheses or blocks, as long as the object lives. Throws ScriptError beyond the deepest.
    class Level {
     public:
        explicit Level(ExpressionGrammar& grammar);
        ~Level() { --depth_; }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;

     private:
        int& depth_;
    };

    // Bounds how deep the functions of one statement can call each other when it runs.
    void start_statement() { operands_ = 0; }

 private:
    Expression prefix();
    Expression postfix(bool starts_statement);
    Expression member(const Expression& object, const Token& name, bool starts_statement);
    Expression operand(bool starts_statement);
    Expression named(const Token& name, bool starts_statement);
    std::vector<Expression> arguments(bool starts_statement);
    std::vector<Expression> list();
    bool starts_operand() const;
    void count_operand();

    Tokens& tokens_;
    const Scopes& scopes_;
    Host& host_;
    int depth_ = 0;
    int operands_ = 0;  // in the statement
};

}  // namespace minihost
