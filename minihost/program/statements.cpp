#include "minihost/program/statements.h"

#include <new>
#include <ostream>
#include <stdexcept>

#include "minihost/program/files.h"
#include "minihost/program/help.h"
#include "minihost/program/json.h"
#include "minihost/program/names.h"

namespace minihost {
namespace {

// Moves a loop's counter on; false where that would leave the range of its type.
template <class Number>
bool advance(Number& value, Number by, bool down) {
    if constexpr (std::is_integral_v<Number>) {
        return down ? !__builtin_sub_overflow(value, by, &value) : !__builtin_add_overflow(value, by, &value);
    } else {
        value += down ? -by : by;
        return true;
    }
}

template <class Number>
Flow count(const ForLoop& loop, Runtime& runtime) {
    auto value = std::get<Number>(loop.first(runtime));
    const auto last = std::get<Number>(loop.last(runtime));
    const auto step = std::get<Number>(loop.step(runtime));
    if (step == 0) raise(runtime, "RuntimeException", "a Step of 0 never ends");
    const bool rises = (step > 0) != loop.down;
    // The counter ends one step after the last value, or at the last one that its type holds.
    while (const auto held = convert_scalar(value, loop.type.kind)) {
        runtime.variables[loop.slot] = *held;
        if (rises ? value > last : value < last) break;
        const Flow flow = run(loop.body, runtime);
        if (flow == Flow::ExitFor) break;
        if (flow != Flow::Next && flow != Flow::ContinueFor) return flow;
        value = number<Number>(runtime.variables[loop.slot]);
        if (!advance(value, step, loop.down)) break;
    }
    return Flow::Next;
}

}  // namespace

Flow run(const Block& block, Runtime& runtime) try {
    // Also where the body of a loop is empty.
    if (Runtime::interrupted) throw Interrupted();
    for (const Statement& statement : block) {
        runtime.at = statement.at;
        const Flow flow = statement.run(runtime);
        if (flow != Flow::Next) return flow;
    }
    return Flow::Next;
} catch (const std::bad_alloc&) {
    raise(runtime, "OutOfMemoryException", "there is not enough memory");
} catch (const std::length_error&) {
    raise(runtime, "OutOfMemoryException", "a string or a list would be too long");
} catch (const FileError& error) {
    raise(runtime, "IOException", error.what());
} catch (const std::filesystem::filesystem_error& error) {
    raise(runtime, "IOException", printable(error.what()));
}

Action dim(std::vector<Initialisation> variables) {
    return [variables = std::move(variables)](Runtime& runtime) {
        for (const auto& [slot, value] : variables) runtime.variables[slot] = value(runtime);
        return Flow::Next;
    };
}

Action assignment(Expression target, Evaluate value) {
    return [assign = std::move(target.assign), value = std::move(value)](Runtime& runtime) {
        assign(runtime, value(runtime));
        return Flow::Next;
    };
}

Action call_statement(Evaluate call) {
    return [call = std::move(call)](Runtime& runtime) {
        call(runtime);
        return Flow::Next;
    };
}

Action print_statement(std::vector<Expression> parts) {
    const bool block = parts.size() == 1 && same_name(parts[0].type.class_name, "MemoryBlock");
    return [block, parts = std::move(parts)](Runtime& runtime) {
        std::vector<Value> values;
        for (const Expression& part : parts) values.push_back(part.evaluate(runtime));
        if (runtime.json) {
            runtime.out << json(runtime, values) << '\n';
        } else if (block) {
            print_block(runtime, std::get<ObjectRef>(values[0]));
        } else {
            for (const Value& value : values) runtime.out << show(runtime, value);
            runtime.out << '\n';
        }
        return Flow::Next;
    };
}

Action if_statement(std::vector<Branch> branches) {
    return [branches = std::move(branches)](Runtime& runtime) {
        for (const Branch& branch : branches) {
            if (!branch.test || std::get<bool>(branch.test(runtime))) return run(branch.block, runtime);
        }
        return Flow::Next;
    };
}

const Type& counting_type(const Type& counter) { return counter == kDouble ? kDouble : kInt64; }

Action for_loop(ForLoop loop) {
    return [loop = std::move(loop)](Runtime& runtime) {
        return loop.type == kDouble ? count<double>(loop, runtime) : count<int64_t>(loop, runtime);
    };
}

Action while_loop(Evaluate test, Block body) {
    return [test = std::move(test), body = std::move(body)](Runtime& runtime) {
        while (std::get<bool>(test(runtime))) {
            const Flow flow = run(body, runtime);
            if (flow == Flow::ExitWhile) break;
            if (flow != Flow::Next && flow != Flow::ContinueWhile) return flow;
        }
        return Flow::Next;
    };
}

Action leave(Flow flow) {
    return [flow](Runtime&) { return flow; };
}

Action try_statement(Block body, std::vector<Clause> clauses) {
    return [body = std::move(body), clauses = std::move(clauses)](Runtime& runtime) {
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

Action help_statement(const std::string& name) {
    return [name](Runtime& runtime) {
        print_help(runtime, name);
        return Flow::Next;
    };
}

Action references_statement() {
    return [](Runtime& runtime) {
        if (!report_references(runtime.host, runtime.out))
            runtime.out << "nothing is held, nothing went wrong\n";
        return Flow::Next;
    };
}

}  // namespace minihost
