#include "minihost/program/expression_grammar.h"

#include <array>

#include "minihost/program/names.h"
#include "minihost/program/words.h"

namespace minihost {
namespace {

constexpr int kDeepest = 200;   // levels of parentheses and blocks
constexpr int kLongest = 1000;  // operands and members in one statement

const Operator* operator_at(const Token& token, const Operator* (*find)(std::string_view)) {
    const bool possible = token.kind == Token::Kind::Name || token.kind == Token::Kind::Symbol;
    return possible ? find(token.text) : nullptr;
}

Expression number_constant(const Token& token) {
    static constexpr std::array kKinds{Kind::Nothing, Kind::Integer, Kind::Int64, Kind::UInt64, Kind::Double};
    return constant(token.at, {kKinds[token.number.index()], ""}, token.number);
}

}  // namespace

ExpressionGrammar::Level::Level(ExpressionGrammar& grammar) : depth_(grammar.depth_) {
    if (depth_ == kDeepest) {
        throw ScriptError(grammar.tokens_.peek().at,
                          "more than " + std::to_string(kDeepest) + " levels inside each other");
    }
    ++depth_;
}

void ExpressionGrammar::count_operand() {
    if (++operands_ > kLongest) {
        throw ScriptError(tokens_.peek().at,
                          "more than " + std::to_string(kLongest) + " operands in one statement");
    }
}

Expression ExpressionGrammar::expression(int weakest) {
    const Level level(*this);
    Expression left = prefix();
    for (;;) {
        const Operator* found = operator_at(tokens_.peek(), find_binary);
        if (!found || found->strength <= weakest) return left;
        const Token sign = tokens_.take();
        left = binary(sign, found->op, left, expression(found->strength));
    }
}

Expression ExpressionGrammar::leading_expression() { return postfix(true); }

Expression ExpressionGrammar::expression_of(const Type& declared, const std::string& purpose) {
    return converted(host_, expression(), declared, purpose);
}

Expression ExpressionGrammar::prefix() {
    const Operator* found = operator_at(tokens_.peek(), find_prefix);
    if (!found) return postfix(false);
    const Token sign = tokens_.take();
    return unary(sign, found->op, expression(found->strength));
}

Expression ExpressionGrammar::postfix(bool starts_statement) {
    Expression result = operand(starts_statement);
    while (tokens_.accept(".")) {
        count_operand();
        if (tokens_.peek().kind != Token::Kind::Name) tokens_.fail_unexpected("a member's name");
        const Token name = tokens_.take();
        result = member(result, name, starts_statement);
    }
    return result;
}

Expression ExpressionGrammar::member(const Expression& object, const Token& name, bool starts_statement) {
    const std::string& owner = object.type.class_name;
    if (object.type.kind != Kind::Object || owner.empty()) {
        throw ScriptError(name.at, text_of(object.type) + " has no members");
    }
    const auto overloads = find_members(host_, owner, name.text);
    if (overloads.empty()) {
        throw ScriptError(name.at, owner + " has no member " + name.text +
                                       suggestion(name.text, member_names(host_, owner)));
    }
    return call(host_, name, overloads, &object, arguments(starts_statement));
}

Expression ExpressionGrammar::operand(bool starts_statement) {
    count_operand();
    const Token token = tokens_.peek();
    if (token.kind == Token::Kind::Number) return number_constant(tokens_.take());
    if (token.kind == Token::Kind::String) return text_constant(tokens_.take());
    if (tokens_.accept("(")) {
        Expression inner = expression();
        tokens_.expect(")");
        inner.assign = {};
        return inner;
    }
    if (tokens_.accept("true")) return constant(token.at, kBoolean, true);
    if (tokens_.accept("false")) return constant(token.at, kBoolean, false);
    if (tokens_.accept("nil")) return constant(token.at, kNil, ObjectRef());
    if (tokens_.accept("new")) return construction();
    return named(tokens_.expect_name("a value"), starts_statement);
}

Expression ExpressionGrammar::named(const Token& name, bool starts_statement) {
    if (const Variable* found = scopes_.find(name.text)) return variable(name.at, found->type, found->slot);
    const auto overloads = find_functions(host_, name.text);
    if (!overloads.empty()) return call(host_, name, overloads, nullptr, arguments(starts_statement));
    std::vector<std::string> known = function_names(host_);
    const std::vector<std::string> variables = scopes_.names();
    known.insert(known.end(), variables.begin(), variables.end());
    for (const Keyword& word : keywords()) {
        if (starts_statement && word.role == Keyword::Role::Statement) known.emplace_back(word.text);
    }
    throw ScriptError(name.at,
                      "there is no variable or function " + name.text + suggestion(name.text, known));
}

Type ExpressionGrammar::type() {
    const Token name = tokens_.expect_name("a type");
    Type built_in = parse_type(name.text);
    if (built_in.kind != Kind::Object) return built_in;
    if (const Class* found = host_.find_class(name.text)) return object_type(found->name);
    throw ScriptError(name.at, "there is no type " + name.text + suggestion(name.text, type_names(host_)));
}

Expression ExpressionGrammar::construction() {
    const Token name = tokens_.peek();
    const Type created = type();
    if (created.kind != Kind::Object) throw ScriptError(name.at, text_of(created) + " is no class");
    return call(host_, name, find_constructors(host_, created.class_name), nullptr, arguments(false));
}

std::vector<Expression> ExpressionGrammar::arguments(bool starts_statement) {
    if (tokens_.accept("(")) {
        if (tokens_.accept(")")) return {};
        std::vector<Expression> values = list();
        tokens_.expect(")");
        return values;
    }
    return starts_statement && starts_operand() ? list() : std::vector<Expression>();
}

std::vector<Expression> ExpressionGrammar::list() {
    std::vector<Expression> values;
    do values.push_back(expression());
    while (tokens_.accept(","));
    return values;
}

bool ExpressionGrammar::starts_operand() const {
    const Token& token = tokens_.peek();
    if (token.kind != Token::Kind::Name)
        return token.kind == Token::Kind::Number || token.kind == Token::Kind::String;
    const Keyword* word = find_keyword(token.text);
    return !word || word->role == Keyword::Role::Operand;
}

}  // namespace minihost
