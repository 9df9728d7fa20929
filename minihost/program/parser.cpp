#include "minihost/program/parser.h"

#include <algorithm>

#include "minihost/program/expression_grammar.h"
#include "minihost/program/names.h"

namespace minihost {
namespace {

class Parser {
 public:
    Parser(std::string_view text, Runtime& runtime, Scopes& scopes, bool interactive)
        : tokens_(text),
          runtime_(runtime),
          scopes_(scopes),
          interactive_(interactive),
          grammar_(tokens_, scopes, runtime.host) {}

    Block script() { return statements({}, nullptr); }

 private:
    using Level = ExpressionGrammar::Level;

    size_t declare(const Token& name, const Type& type);

    // The statements up to one of the words, which is left to be read. Nothing opens, and nothing closes, the
    // script itself.
    Block statements(Tokens::Words closing, const Token* opener);
    // The same with variables of its own.
    Block block(Tokens::Words closing, const Token& opener);
    Block loop(const Token& opener, std::string_view closing);
    Block rest_of_line();
    bool continues_line();
    bool ends_statement() const { return tokens_.at_line_end() || tokens_.next_is({"else"}); }

    Statement statement();
    Action action();
    Action dim();
    Action print();
    Action if_statement();
    Action for_statement();
    Action while_statement();
    Action exit_statement() { return leave_loop(Flow::ExitFor, Flow::ExitWhile); }
    Action continue_statement() { return leave_loop(Flow::ContinueFor, Flow::ContinueWhile); }
    Action leave_loop(Flow of_for, Flow of_while);
    Action try_statement();
    Clause catch_clause(const Token& opener);
    bool is_command(std::string_view word) const;
    Action help();
    Action simple();
    Action assignment(Expression target);

    Tokens tokens_;
    Runtime& runtime_;
    Scopes& scopes_;
    bool interactive_;
    ExpressionGrammar grammar_;
    std::vector<std::string> loops_;  // that are open, by the words that began them
};

Expression with_result(Expression value) {
    if (value.type.kind == Kind::Nothing) throw ScriptError(value.at, "the call has no result to print");
    return value;
}

std::string closing_of(const Token& opener, std::string_view word) {
    return in_quotes(same_name(word, "End") ? "End " + opener.text : std::string(word));
}

size_t Parser::declare(const Token& name, const Type& type) {
    const bool anew = interactive_ && scopes_.outermost();
    if (scopes_.declares(name.text) && !anew) throw ScriptError(name.at, name.text + " is declared already");
    runtime_.variables.push_back(default_value(type));
    return scopes_.declare({name.text, type, runtime_.variables.size() - 1}).slot;
}

// Blocks

Block Parser::statements(Tokens::Words closing, const Token* opener) {
    Block block;
    for (;;) {
        while (tokens_.at_line_end()) tokens_.skip(1);
        if (tokens_.next_is(closing)) return block;
        const std::string wanted = opener ? closing_of(*opener, *closing.begin()) : "a statement";
        if (tokens_.at_end()) {
            if (!opener) return block;
            throw IncompleteScript(opener->at, opener->text + " is not closed: expected " + wanted +
                                                   ", found " + to_string(tokens_.peek()));
        }
        if (closes_block(tokens_.peek())) tokens_.fail_unexpected(wanted);
        block.push_back(statement());
        tokens_.expect_line_end();
    }
}

Block Parser::block(Tokens::Words closing, const Token& opener) {
    const Level level(grammar_);
    const Scopes::Inner scope(scopes_);
    return statements(closing, &opener);
}

Block Parser::loop(const Token& opener, std::string_view closing) {
    loops_.push_back(opener.text);
    Block body = block({closing}, opener);
    loops_.pop_back();
    tokens_.expect(closing);
    return body;
}

// The statements up to the end of the line, to Else, or to a word that closes a block around them.
Block Parser::rest_of_line() {
    const Level level(grammar_);
    Block block;
    do block.push_back(statement());
    while (continues_line());
    return block;
}

bool Parser::continues_line() {
    size_t ahead = 0;
    while (tokens_.peek(ahead).kind == Token::Kind::LineEnd && tokens_.peek(ahead).text == ":") ++ahead;
    const Token& token = tokens_.peek(ahead);
    const bool is_else = is(token, "else");
    if (ahead == 0 || token.kind == Token::Kind::LineEnd || (closes_block(token) && !is_else)) return false;
    tokens_.skip(ahead);
    return !is_else;
}

// Statements

Statement Parser::statement() {
    grammar_.start_statement();
    Statement result;
    result.at = tokens_.peek().at;
    result.run = action();
    return result;
}

Action Parser::action() {
    using Rule = Action (Parser::*)();
    static constexpr std::pair<std::string_view, Rule> kRules[] = {
        {"Dim", &Parser::dim},
        {"Print", &Parser::print},
        {"If", &Parser::if_statement},
        {"For", &Parser::for_statement},
        {"While", &Parser::while_statement},
        {"Exit", &Parser::exit_statement},
        {"Continue", &Parser::continue_statement},
        {"Try", &Parser::try_statement},
    };
    for (const auto& [word, rule] : kRules) {
        if (tokens_.accept(word)) return (this->*rule)();
    }
    if (is_command("help")) return help();
    if (is_command("references")) {
        tokens_.skip(1);
        return references_statement();
    }
    return simple();
}

// Dim name [, name] As [New] Type [(arguments)] [= value] [, ...]
Action Parser::dim() {
    std::vector<Initialisation> variables;
    do {
        std::vector<Token> names;
        do names.push_back(tokens_.expect_name("a variable's name"));
        while (tokens_.accept(","));
        tokens_.expect("as");
        Type declared;
        Evaluate value;
        if (tokens_.accept("new")) {
            Expression created = grammar_.construction();
            declared = created.type;
            value = std::move(created.evaluate);
        } else {
            declared = grammar_.type();
            value = tokens_.accept("=") ? grammar_.expression_of(declared, names[0].text).evaluate
                                        : constant(names[0].at, declared, default_value(declared)).evaluate;
        }
        for (const Token& name : names) variables.push_back({declare(name, declared), value});
    } while (tokens_.accept(","));
    return minihost::dim(std::move(variables));
}

Action Parser::print() {
    std::vector<Expression> parts;
    if (!ends_statement()) {
        do parts.push_back(with_result(grammar_.expression()));
        while (tokens_.accept(";"));
    }
    return print_statement(std::move(parts));
}

Action Parser::if_statement() {
    const Token opener = tokens_.last();
    std::vector<Branch> branches;
    do {
        Evaluate test = grammar_.condition();
        tokens_.expect("then");
        if (branches.empty() && !tokens_.at_line_end()) {
            branches.push_back({std::move(test), rest_of_line()});
            if (tokens_.accept("else")) branches.push_back({{}, rest_of_line()});
            return minihost::if_statement(std::move(branches));
        }
        branches.push_back({std::move(test), block({"End", "Else", "ElseIf"}, opener)});
    } while (tokens_.accept("elseif"));
    if (tokens_.accept("else")) branches.push_back({{}, block({"End"}, opener)});
    tokens_.expect("end");
    tokens_.expect("if");
    return minihost::if_statement(std::move(branches));
}

// For name [As Type] = first To|DownTo last [Step step] ... Next [name]
Action Parser::for_statement() {
    const Token opener = tokens_.last();
    const Level level(grammar_);
    const Scopes::Inner scope(scopes_);
    const Token name = tokens_.expect_name("a variable's name");
    if (tokens_.accept("as")) declare(name, grammar_.type());
    const Variable* counter = scopes_.find(name.text);
    if (!counter || !is_number(counter->type) || counter->type.kind == Kind::UInt64) {
        throw ScriptError(name.at, "For takes a variable of type Integer, Int64 or Double");
    }
    const Type& counted = counting_type(counter->type);
    const auto bound = [&] { return grammar_.expression_of(counted, "For").evaluate; };
    ForLoop result{.slot = counter->slot, .type = counter->type};
    tokens_.expect("=");
    result.first = bound();
    result.down = tokens_.next_is({"downto"});
    if (!result.down && !tokens_.next_is({"to"})) tokens_.fail_unexpected("\"To\" or \"DownTo\"");
    tokens_.skip(1);
    result.last = bound();
    result.step = tokens_.accept("step") ? bound() : [counted](Runtime&) { return *convert(1, counted); };
    result.body = loop(opener, "Next");
    if (!tokens_.at_line_end()) tokens_.expect(name.text);
    return for_loop(std::move(result));
}

Action Parser::while_statement() {
    const Token opener = tokens_.last();
    Evaluate test = grammar_.condition();
    return while_loop(std::move(test), loop(opener, "Wend"));
}

// Without a word after it, the innermost loop is meant.
Action Parser::leave_loop(Flow of_for, Flow of_while) {
    const Token word = tokens_.last();
    if (loops_.empty()) throw ScriptError(word.at, word.text + " stands outside of loops");
    std::string meant = loops_.back();
    if (tokens_.next_is({"for", "while"})) {
        const bool open =
            std::ranges::any_of(loops_, [&](const auto& loop) { return is(tokens_.peek(), loop); });
        if (!open) tokens_.fail_unexpected(in_quotes(meant));
        meant = tokens_.take().text;
    }
    return leave(same_name(meant, "for") ? of_for : of_while);
}

// Try ... [Catch [name [As Class]] ...] End Try
Action Parser::try_statement() {
    const Token opener = tokens_.last();
    Block body = block({"End", "Catch"}, opener);
    std::vector<Clause> clauses;
    while (tokens_.accept("catch")) clauses.push_back(catch_clause(opener));
    tokens_.expect("end");
    tokens_.expect("try");
    return minihost::try_statement(std::move(body), std::move(clauses));
}

Clause Parser::catch_clause(const Token& opener) {
    Clause clause;
    const Scopes::Inner scope(scopes_);
    if (!tokens_.at_line_end()) {
        const Type all = object_type(clause.class_name);
        const Token name = tokens_.expect_name("a variable's name");
        const bool typed = tokens_.accept("as");
        const Position at = tokens_.peek().at;
        const Type caught = typed ? grammar_.type() : all;
        if (!fits(runtime_.host, all, caught)) throw ScriptError(at, text_of(caught) + " is no exception");
        clause.class_name = caught.class_name;
        clause.slot = declare(name, caught);
    }
    clause.block = block({"End", "Catch"}, opener);
    return clause;
}

// A word that is a statement of its own unless a variable bears the name.
bool Parser::is_command(std::string_view word) const {
    const Token::Kind next = tokens_.peek(1).kind;
    return is(tokens_.peek(), word) && !scopes_.find(word) &&
           (next == Token::Kind::LineEnd || next == Token::Kind::Name);
}

Action Parser::help() {
    tokens_.skip(1);
    std::string name;
    while (tokens_.peek().kind == Token::Kind::Name) {
        name = tokens_.take().text;
        tokens_.accept(".");
    }
    return help_statement(name);
}

// Assignment, call, or, where that is wanted, an expression whose value is shown.
Action Parser::simple() {
    const size_t start = tokens_.mark();
    if (interactive_ && tokens_.next_is({"-", "not"})) return print_statement({grammar_.expression()});
    Expression target = grammar_.leading_expression();
    if (tokens_.accept("=")) return assignment(std::move(target));
    if (interactive_ && !ends_statement()) {
        tokens_.back_to(start);
        return print_statement({with_result(grammar_.expression())});
    }
    if (interactive_ && target.type.kind != Kind::Nothing) return print_statement({std::move(target)});
    if (!ends_statement()) tokens_.fail_unexpected("\"=\" or the end of the statement");
    if (!target.is_call) throw ScriptError(target.at, "a value alone is no statement");
    return call_statement(std::move(target.evaluate));
}

Action Parser::assignment(Expression target) {
    if (!target.assign) {
        throw ScriptError(target.at,
                          "expected what can be assigned, found " + to_string(tokens_.at(target.at)));
    }
    Expression value = grammar_.expression_of(target.type, tokens_.at(target.at).text);
    return minihost::assignment(std::move(target), std::move(value.evaluate));
}

}  // namespace

Block parse(std::string_view text, Runtime& runtime, Scopes& scopes, bool interactive) {
    Scopes declared = scopes;
    Block block = Parser(text, runtime, declared, interactive).script();
    scopes = std::move(declared);
    return block;
}

}  // namespace minihost
