// What statements do when they run.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "minihost/program/expressions.h"

namespace minihost {

// How a statement ended: with the next one, or by leaving the innermost loop of a kind or its round.
enum class Flow { Next, ExitFor, ContinueFor, ExitWhile, ContinueWhile };

using Action = std::function<Flow(Runtime&)>;

struct Statement {
    Position at;
    Action run;
};

using Block = std::vector<Statement>;

// What C++ functions throw when memory runs out, or for a file, becomes a host exception. Throws Interrupted
// when the script is interrupted.
Flow run(const Block& block, Runtime& runtime);

struct Initialisation {
    size_t slot;
    Evaluate value;
};
Action dim(std::vector<Initialisation> variables);
Action assignment(Expression target, Evaluate value);
Action call_statement(Evaluate call);
// A block on its own is shown byte by byte.
Action print_statement(std::vector<Expression> parts);

// The first branch whose test is true runs; no test is true.
struct Branch {
    Evaluate test;
    Block block;
};
Action if_statement(std::vector<Branch> branches);

struct ForLoop {
    size_t slot = 0;
    Type type = {};  // of the counter
    Evaluate first = {};
    Evaluate last = {};
    Evaluate step = {};
    bool down = false;
    Block body = {};
};
// What first, last and step of a loop are: Double for a Double, Int64 for whole numbers.
const Type& counting_type(const Type& counter);
Action for_loop(ForLoop loop);
Action while_loop(Evaluate test, Block body);
Action leave(Flow flow);

struct Clause {
    std::string class_name = "RuntimeException";
    std::optional<size_t> slot = {};  // of the variable that gets the exception
    Block block = {};
};
Action try_statement(Block body, std::vector<Clause> clauses);

Action help_statement(const std::string& name);
Action references_statement();

}  // namespace minihost
