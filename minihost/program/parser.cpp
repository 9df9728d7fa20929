#include "minihost/program/parser.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <initializer_list>
#include <new>
#include <optional>
#include <ostream>
#include <stdexcept>

#include "minihost/program/help.h"
#include "minihost/program/names.h"

namespace minihost {
namespace {

constexpr int kDeepest = 200;   // levels of parentheses and blocks
constexpr int kLongest = 1000;  // operands and members in one statement

using Words = std::initializer_list<std::string_view>;
constexpr std::array<std::string_view, 6> kClosingWords{"End", "Else", "ElseIf", "Next", "Wend", "Catch"};

struct Operator {
    std::string_view text;
    int strength;
};
constexpr int kNot = 3;
constexpr int kNegation = 7;
constexpr std::array<Operator, 17> kOperators{{
    {"or", 1},
    {"xor", 1},
    {"and", 2},
    {"=", 4},
    {"<>", 4},
    {"<", 4},
    {"<=", 4},
    {">", 4},
    {">=", 4},
    {"is", 4},
    {"+", 5},
    {"-", 5},
    {"*", 6},
    {"/", 6},
    {"\\", 6},
    {"mod", 6},
    {"^", 8},
}};

// Does something when its block is left.
template <class Function>
struct Finally {
    Function action;
    explicit Finally(Function given) : action(given) {}
    Finally(const Finally&) = delete;
    Finally& operator=(const Finally&) = delete;
    ~Finally() { action(); }
};

class Parser {
 public:
    Parser(std::string_view text, Runtime& runtime, Scopes& scopes, bool interactive)
        : tokens_(tokenize(text)),
          runtime_(runtime),
          host_(runtime.host),
          scopes_(scopes),
          interactive_(interactive) {}

    Block script() { return statements({}, nullptr); }

 private:
    // Tokens

    const Token& peek(size_t ahead = 0) const { return tokens_[std::min(next_ + ahead, tokens_.size() - 1)]; }
    Token take() { return tokens_[next_++]; }
    bool at_end() const { return peek().kind == Token::Kind::End; }
    bool at_line_end() const { return peek().kind == Token::Kind::LineEnd; }

    static bool is(const Token& token, std::string_view text) {
        return (token.kind == Token::Kind::Name || token.kind == Token::Kind::Symbol) &&
               same_name(token.text, text);
    }
    bool next_is(Words words) const {
        return std::any_of(words.begin(), words.end(),
                           [&](std::string_view word) { return is(peek(), word); });
    }
    bool accept(std::string_view text) {
        const bool found = is(peek(), text);
        if (found) ++next_;
        return found;
    }
    void expect(std::string_view text) {
        if (!accept(text)) fail_unexpected(in_quotes(text));
    }
    Token expect_name(const std::string& what) {
        if (peek().kind != Token::Kind::Name || is_keyword(peek())) fail_unexpected(what);
        return take();
    }
    void expect_line_end() {
        if (!at_line_end()) fail_unexpected("the end of the statement");
        ++next_;
    }
    [[noreturn]] void fail_unexpected(const std::string& expected) const {
        throw ScriptError(peek().at, "expected " + expected + ", found " + to_string(peek()));
    }
    static bool is_keyword(const Token& token) {
        return token.kind == Token::Kind::Name &&
               std::any_of(keywords().begin(), keywords().end(),
                           [&](const auto& word) { return same_name(token.text, word); });
    }

    // Names

    const Variable* find_variable(const std::string& name) const {
        for (auto scope = scopes_.rbegin(); scope != scopes_.rend(); ++scope) {
            const auto found = scope->find(lower(name));
            if (found != scope->end()) return &found->second;
        }
        return nullptr;
    }

    const Variable& declare(const Token& name, const Type& type) {
        const bool anew = interactive_ && scopes_.size() == 1;
        if (scopes_.back().contains(lower(name.text)) && !anew) {
            throw ScriptError(name.at, name.text + " is declared already");
        }
        runtime_.variables.push_back(default_value(type));
        return scopes_.back()[lower(name.text)] = {name.text, type, runtime_.variables.size() - 1};
    }

    Type type() {
        const Token name = expect_name("a type");
        Type built_in = parse_type(name.text);
        if (built_in.kind != Kind::Object) return built_in;
        if (const Class* found = host_.find_class(name.text)) return object_type(found->name);
        throw ScriptError(name.at,
                          "there is no type " + name.text + suggestion(name.text, type_names(host_)));
    }

    // Nesting

    // One level of parentheses or blocks, until the result goes.
    auto deeper() {
        if (depth_ == kDeepest) {
            throw ScriptError(peek().at,
                              "more than " + std::to_string(kDeepest) + " levels inside each other");
        }
        ++depth_;
        return Finally([this] { --depth_; });
    }

    auto new_scope() {
        scopes_.emplace_back();
        return Finally([this] { scopes_.pop_back(); });
    }

    // Expressions

    Expression expression(int weakest = 0) {
        const auto level = deeper();
        Expression left = prefix();
        for (;;) {
            const auto found = std::find_if(kOperators.begin(), kOperators.end(),
                                            [&](const Operator& op) { return is(peek(), op.text); });
            if (found == kOperators.end() || found->strength <= weakest) return left;
            const Token op = take();
            left = binary(op, left, expression(found->strength));
        }
    }

    Expression prefix() {
        if (next_is({"-", "not"})) {
            const Token op = take();
            return unary(op, expression(op.text == "-" ? kNegation : kNot));
        }
        return postfix();
    }

    // An operand and the members that are asked of it. At the start of a statement the last one may have its
    // arguments without parentheses.
    Expression postfix(bool starts_statement = false) {
        Expression result = operand(starts_statement);
        while (accept(".")) {
            count_operand();
            const Token name = take_member();
            result = member(result, name, starts_statement);
        }
        return result;
    }

    Token take_member() {
        if (peek().kind != Token::Kind::Name) fail_unexpected("a member's name");
        return take();
    }

    Expression member(const Expression& object, const Token& name, bool starts_statement) {
        const std::string& owner = object.type.class_name;
        if (object.type.kind != Kind::Object || owner.empty()) {
            throw ScriptError(name.at, type_name(object.type) + " has no members");
        }
        const auto overloads = find_members(host_, owner, name.text);
        if (overloads.empty()) {
            throw ScriptError(name.at, owner + " has no member " + name.text +
                                           suggestion(name.text, member_names(host_, owner)));
        }
        return call(host_, name, overloads, &object, arguments(starts_statement));
    }

    Expression operand(bool starts_statement) {
        count_operand();
        const Token token = peek();
        if (token.kind == Token::Kind::Number) {
            ++next_;
            return number_constant(token);
        }
        if (token.kind == Token::Kind::String) return text_constant(take());
        if (accept("(")) {
            Expression inner = expression();
            expect(")");
            inner.assign = {};
            return inner;
        }
        if (accept("true") || accept("false")) return constant(token.at, kBoolean, is(token, "true"));
        if (accept("nil")) return constant(token.at, kNil, ObjectRef());
        if (accept("new")) return construction();
        return named(expect_name("a value"), starts_statement);
    }

    static Expression number_constant(const Token& token) {
        static constexpr std::array kKinds{Kind::Nothing, Kind::Integer, Kind::Int64, Kind::UInt64,
                                           Kind::Double};
        return constant(token.at, {kKinds[token.number.index()], ""}, token.number);
    }

    // Bounds how deep the functions of one statement can call each other when it runs.
    void count_operand() {
        if (++operands_ > kLongest) {
            throw ScriptError(peek().at,
                              "more than " + std::to_string(kLongest) + " operands in one statement");
        }
    }

    Expression named(const Token& name, bool starts_statement) {
        if (const Variable* found = find_variable(name.text))
            return variable(name.at, found->type, found->slot);
        const auto overloads = find_functions(host_, name.text);
        if (!overloads.empty()) return call(host_, name, overloads, nullptr, arguments(starts_statement));
        std::vector<std::string> known = function_names(host_);
        for (const auto& scope : scopes_) {
            for (const auto& [key, declared] : scope) known.push_back(declared.name);
        }
        throw ScriptError(name.at,
                          "there is no variable or function " + name.text + suggestion(name.text, known));
    }

    // The class and its arguments, behind New.
    Expression construction() {
        const Token name = peek();
        const Type created = type();
        if (created.kind != Kind::Object) throw ScriptError(name.at, type_name(created) + " is no class");
        return call(host_, name, find_constructors(host_, created.class_name), nullptr, arguments(false));
    }

    std::vector<Expression> arguments(bool starts_statement) {
        std::vector<Expression> list;
        if (accept("(")) {
            if (accept(")")) return list;
            do list.push_back(expression());
            while (accept(","));
            expect(")");
        } else if (starts_statement && starts_operand()) {
            do list.push_back(expression());
            while (accept(","));
        }
        return list;
    }

    bool starts_operand() const {
        const Token& token = peek();
        return token.kind == Token::Kind::Number || token.kind == Token::Kind::String ||
               next_is({"true", "false", "nil", "new", "not"}) ||
               (token.kind == Token::Kind::Name && !is_keyword(token));
    }

    Evaluate condition() { return converted(host_, expression(), kBoolean, "a condition").evaluate; }

    // Blocks

    static bool closes(const Token& token) {
        return std::ranges::any_of(kClosingWords, [&](auto word) { return is(token, word); });
    }
    static std::string closing_of(const Token& opener, std::string_view word) {
        std::string all(word);
        if (word == "End") all.append(1, ' ').append(opener.text);
        return in_quotes(all);
    }

    // The statements up to one of the words, which is left to be read. Nothing opens, and nothing closes, the
    // script itself.
    Block statements(Words closing, const Token* opener) {
        Block block;
        for (;;) {
            while (at_line_end()) ++next_;
            if (next_is(closing) || (!opener && at_end())) return block;
            const std::string wanted = opener ? closing_of(*opener, *closing.begin()) : "a statement";
            if (at_end()) {
                throw IncompleteScript(opener->at, opener->text + " is not closed: expected " + wanted +
                                                       ", found " + to_string(peek()));
            }
            if (closes(peek())) fail_unexpected(wanted);
            block.push_back(statement());
            expect_line_end();
        }
    }

    // The same with variables of its own.
    Block block(Words closing, const Token& opener) {
        const auto level = deeper();
        const auto scope = new_scope();
        return statements(closing, &opener);
    }

    // The word that has just been read, such as the one that opens a block.
    Token last() const { return tokens_[next_ - 1]; }

    void expect_end(std::string_view word) {
        expect("end");
        expect(word);
    }

    // Statements

    Statement statement() {
        operands_ = 0;
        Statement result;
        result.line = peek().at.line;
        result.run = action();
        return result;
    }

    Action action() {
        using Rule = Action (Parser::*)();
        static constexpr std::array<std::pair<std::string_view, Rule>, 8> kRules{{
            {"dim", &Parser::dim},
            {"print", &Parser::print},
            {"if", &Parser::if_},
            {"for", &Parser::for_},
            {"while", &Parser::while_},
            {"exit", &Parser::exit},
            {"continue", &Parser::continue_},
            {"try", &Parser::try_},
        }};
        for (const auto& [word, rule] : kRules) {
            if (accept(word)) return (this->*rule)();
        }
        if (is_command("help")) return help();
        if (is_command("references")) return references();
        return simple();
    }

    // A word that is a statement of its own unless a variable bears the name.
    bool is_command(std::string_view word) const {
        return is(peek(), word) && !find_variable(peek().text) &&
               (peek(1).kind == Token::Kind::LineEnd || peek(1).kind == Token::Kind::Name);
    }

    // Dim name [, name] As [New] Type [(arguments)] [= value] [, ...]
    Action dim() {
        std::vector<std::pair<size_t, Evaluate>> assignments;
        do {
            std::vector<Token> names;
            do names.push_back(expect_name("a variable's name"));
            while (accept(","));
            expect("as");
            const bool creates = accept("new");
            std::optional<Expression> value;
            Type declared;
            if (creates) {
                value = construction();
                declared = value->type;
            } else {
                declared = type();
                value = constant(peek().at, declared, default_value(declared));
                if (accept("=")) value = converted(host_, expression(), declared, names[0].text);
            }
            for (const Token& name : names)
                assignments.emplace_back(declare(name, declared).slot, value->evaluate);
        } while (accept(","));
        return [assignments](Runtime& runtime) {
            for (const auto& [slot, evaluate] : assignments) runtime.variables[slot] = evaluate(runtime);
            return Flow::Next;
        };
    }

    Action print() {
        std::vector<Expression> parts;
        if (!at_line_end() && !next_is({"else"})) {
            do parts.push_back(shown(expression()));
            while (accept(";"));
        }
        return print_statement(std::move(parts));
    }

    static Expression shown(Expression value) {
        if (value.type.kind == Kind::Nothing) throw ScriptError(value.at, "the call has no result to print");
        return value;
    }

    // A block on its own is shown byte by byte.
    static Action print_statement(std::vector<Expression> parts) {
        if (parts.size() == 1 && same_name(parts[0].type.class_name, "MemoryBlock")) {
            return [block = parts[0].evaluate](Runtime& runtime) {
                print_block(runtime, std::get<ObjectRef>(block(runtime)));
                return Flow::Next;
            };
        }
        return [parts = std::move(parts)](Runtime& runtime) {
            std::string line;
            for (const Expression& part : parts) line += show(runtime, part.evaluate(runtime));
            runtime.out << line << '\n';
            return Flow::Next;
        };
    }

    // Assignment, call, or, where that is wanted, an expression whose value is shown.
    Action simple() {
        const size_t start = next_;
        if (interactive_ && next_is({"-", "not"})) return print_statement({expression()});
        Expression target = postfix(true);
        if (accept("=")) return assignment(std::move(target));
        const bool ended = at_line_end() || next_is({"else"});
        if (interactive_ && !ended) {
            next_ = start;
            return print_statement({shown(expression())});
        }
        if (interactive_ && target.type.kind != Kind::Nothing) return print_statement({std::move(target)});
        if (!ended) fail_unexpected("\"=\" or the end of the statement");
        if (!target.is_call) throw ScriptError(target.at, "a value alone is no statement");
        return [evaluate = std::move(target.evaluate)](Runtime& runtime) {
            evaluate(runtime);
            return Flow::Next;
        };
    }

    Action assignment(Expression target) {
        if (!target.assign) {
            const auto found =
                std::ranges::find_if(tokens_, [&](const Token& token) { return token.at == target.at; });
            throw ScriptError(target.at, "expected what can be assigned, found " + to_string(*found));
        }
        Expression value = converted(host_, expression(), target.type, "the assignment");
        return [assign = std::move(target.assign), evaluate = std::move(value.evaluate)](Runtime& runtime) {
            assign(runtime, evaluate(runtime));
            return Flow::Next;
        };
    }

    Action if_() {
        struct Branch {
            Evaluate condition;
            Block block;
        };
        const Token opener = last();
        std::vector<Branch> branches;
        const auto run_branches = [](const std::vector<Branch>& all, Runtime& runtime) {
            for (const Branch& branch : all) {
                if (!branch.condition || std::get<bool>(branch.condition(runtime)))
                    return run(branch.block, runtime);
            }
            return Flow::Next;
        };
        do {
            Evaluate condition_ = condition();
            expect("then");
            if (branches.empty() && !at_line_end()) {
                branches.push_back({std::move(condition_), single()});
                if (accept("else")) branches.push_back({{}, single()});
                return [branches = std::move(branches), run_branches](Runtime& runtime) {
                    return run_branches(branches, runtime);
                };
            }
            Block body = block({"End", "Else", "ElseIf"}, opener);
            branches.push_back({std::move(condition_), std::move(body)});
        } while (accept("elseif"));
        if (accept("else")) branches.push_back({{}, block({"End"}, opener)});
        expect_end("if");
        return [branches = std::move(branches), run_branches](Runtime& runtime) {
            return run_branches(branches, runtime);
        };
    }

    // The statements up to the end of the line, to Else, or to a word that closes a block around them.
    Block single() {
        const auto level = deeper();
        Block block;
        do block.push_back(statement());
        while (continues_line());
        return block;
    }

    bool continues_line() {
        size_t ahead = 0;
        while (peek(ahead).kind == Token::Kind::LineEnd && peek(ahead).text == ":") ++ahead;
        const Token& token = peek(ahead);
        const bool is_else = is(token, "else");
        if (ahead == 0 || token.kind == Token::Kind::LineEnd || (closes(token) && !is_else)) return false;
        next_ += ahead;
        return !is_else;
    }

    // For name [As Type] = first To|DownTo last [Step step] ... Next [name]
    Action for_() {
        const Token opener = last();
        const auto level = deeper();
        const auto scope = new_scope();
        const Token name = expect_name("a variable's name");
        if (accept("as")) declare(name, type());
        const Expression counter = named(name, false);
        const bool real = counter.type == kDouble;
        if (!is_number(counter.type) || counter.type.kind == Kind::UInt64 || !find_variable(name.text)) {
            throw ScriptError(name.at, "For takes a variable of type Integer, Int64 or Double");
        }
        const Type& steps = real ? kDouble : kInt64;
        const auto bound = [&] { return converted(host_, expression(), steps, "For").evaluate; };
        expect("=");
        const Evaluate first = bound();
        const bool down = next_is({"downto"});
        if (!down && !next_is({"to"})) fail_unexpected("\"To\" or \"DownTo\"");
        ++next_;
        const Evaluate last = bound();
        Evaluate step = constant(name.at, steps, convert(int32_t{1}, steps)).evaluate;
        if (accept("step")) step = bound();
        const Block body = loop(opener, "Next");
        if (!at_line_end()) expect(name.text);
        const size_t slot = find_variable(name.text)->slot;
        if (real) return counting<double>(slot, counter.type, first, last, step, down, body);
        return counting<int64_t>(slot, counter.type, first, last, step, down, body);
    }

    template <class Number>
    static Action counting(size_t slot, const Type& type, const Evaluate& first, const Evaluate& last,
                           const Evaluate& step, bool down, const Block& body) {
        return [=](Runtime& runtime) {
            auto value = std::get<Number>(first(runtime));
            const auto end = std::get<Number>(last(runtime));
            const auto by = std::get<Number>(step(runtime));
            if (by == 0) raise(runtime, "RuntimeException", "a Step of 0 never ends");
            const bool rises = (by > 0) != down;
            // The counter ends one step behind the last value, or at the last one that its type holds.
            while (const auto held = convert_scalar(value, type.kind)) {
                runtime.variables[slot] = *held;
                if (rises ? value > end : value < end) break;
                const Flow flow = run(body, runtime);
                if (flow == Flow::ExitFor) break;
                if (flow != Flow::Next && flow != Flow::ContinueFor) return flow;
                value = number<Number>(runtime.variables[slot]);
                if (!advance(value, by, down)) break;
            }
            return Flow::Next;
        };
    }

    // Moves a loop's counter on; false where that would leave the range of its type.
    template <class Number>
    static bool advance(Number& value, Number by, bool down) {
        if constexpr (std::is_integral_v<Number>) {
            return down ? !__builtin_sub_overflow(value, by, &value)
                        : !__builtin_add_overflow(value, by, &value);
        } else {
            value += down ? -by : by;
            return true;
        }
    }

    Action while_() {
        const Token opener = last();
        const Evaluate goes_on = condition();
        const Block body = loop(opener, "Wend");
        return [goes_on, body](Runtime& runtime) {
            while (std::get<bool>(goes_on(runtime))) {
                const Flow flow = run(body, runtime);
                if (flow == Flow::ExitWhile) break;
                if (flow != Flow::Next && flow != Flow::ContinueWhile) return flow;
            }
            return Flow::Next;
        };
    }

    Block loop(const Token& opener, std::string_view closing) {
        loops_.push_back(opener.text);
        const Finally leave([this] { loops_.pop_back(); });
        Block body = block({closing}, opener);
        expect(closing);
        return body;
    }

    // Without a word behind it, the innermost loop is meant.
    Action leave_loop(Flow of_for, Flow of_while) {
        const Token word = last();
        if (loops_.empty()) throw ScriptError(word.at, word.text + " stands outside of loops");
        const bool named = next_is({"for", "while"});
        const bool open = std::ranges::any_of(loops_, [&](const auto& loop) { return is(peek(), loop); });
        if (named && !open) fail_unexpected(in_quotes(loops_.back()));
        const Flow flow = same_name(named ? take().text : loops_.back(), "for") ? of_for : of_while;
        return [flow](Runtime&) { return flow; };
    }
    Action exit() { return leave_loop(Flow::ExitFor, Flow::ExitWhile); }
    Action continue_() { return leave_loop(Flow::ContinueFor, Flow::ContinueWhile); }

    // Try ... Catch [name [As Class]] ... End Try
    Action try_() {
        struct Clause {
            std::string class_name = "RuntimeException";
            std::optional<size_t> slot = {};
            Block block = {};
        };
        const Token opener = last();
        const Block body = block({"End", "Catch"}, opener);
        std::vector<Clause> clauses;
        while (accept("catch")) {
            Clause& clause = clauses.emplace_back();
            const auto scope = new_scope();
            if (!at_line_end()) {
                const Token name = expect_name("a variable's name");
                const Token class_name = accept("as") ? peek() : name;
                const Type caught = is(last(), "as") ? type() : object_type(clause.class_name);
                if (fit(host_, object_type(clause.class_name), caught) == Fit::No) {
                    throw ScriptError(class_name.at, type_name(caught) + " is no exception");
                }
                clause.class_name = caught.class_name;
                clause.slot = declare(name, caught).slot;
            }
            clause.block = block({"End", "Catch"}, opener);
        }
        expect_end("try");
        return [=](Runtime& runtime) {
            try {
                return run(body, runtime);
            } catch (const HostException& exception) {
                for (const Clause& clause : clauses) {
                    if (!runtime.host.is_a(exception.object.get(), clause.class_name)) continue;
                    if (clause.slot) runtime.variables[*clause.slot] = exception.object;
                    return run(clause.block, runtime);
                }
                throw;
            }
        };
    }

    // Commands

    Action help() {
        ++next_;
        std::string name;
        while (peek().kind == Token::Kind::Name) {
            name = take().text;
            accept(".");
        }
        return [name](Runtime& runtime) {
            print_help(runtime, name);
            return Flow::Next;
        };
    }

    Action references() {
        ++next_;
        return [](Runtime& runtime) {
            if (!report_references(runtime.host, runtime.out))
                runtime.out << "nothing is held, nothing went wrong\n";
            return Flow::Next;
        };
    }

    std::vector<Token> tokens_;
    size_t next_ = 0;
    Runtime& runtime_;
    Host& host_;
    Scopes& scopes_;
    bool interactive_;
    int depth_ = 0;
    int operands_ = 0;                // in the statement
    std::vector<std::string> loops_;  // that are open, by the words that began them
};

}  // namespace

Flow run(const Block& block, Runtime& runtime) try {
    // Also where the body of a loop is empty.
    if (Runtime::interrupted) throw ScriptError({runtime.line, 0}, "interrupted");
    for (const Statement& statement : block) {
        runtime.line = statement.line;
        const Flow flow = statement.run(runtime);
        if (flow != Flow::Next) return flow;
    }
    return Flow::Next;
} catch (const std::bad_alloc&) {
    raise(runtime, "OutOfMemoryException", "there is not enough memory");
} catch (const std::length_error&) {
    raise(runtime, "OutOfMemoryException", "a string or a list would be too long");
} catch (const std::filesystem::filesystem_error& error) {
    raise(runtime, "IOException", error.what());
}

Block parse(std::string_view text, Runtime& runtime, Scopes& scopes, bool interactive) {
    Scopes declared = scopes;
    Block block = Parser(text, runtime, declared, interactive).script();
    scopes = std::move(declared);
    return block;
}

std::vector<std::string> type_names(Host& host) {
    std::vector<std::string> names{"Integer", "Int64", "UInt64", "Double", "Boolean", "String", "Ptr"};
    for (const Class* type : host.classes()) names.push_back(type->name);
    return names;
}

const std::vector<std::string>& keywords() {
    static const std::vector<std::string> words{
        "And",   "As",   "Catch", "Continue", "Dim",  "DownTo", "Else", "ElseIf", "End", "Exit",
        "False", "For",  "If",    "Is",       "Mod",  "New",    "Next", "Nil",    "Not", "Or",
        "Print", "Step", "Then",  "To",       "True", "Try",    "Wend", "While",  "Xor"};
    return words;
}

}  // namespace minihost
