#include "minihost/library/native_call.h"

#include <vector>

namespace minihost {
namespace {

using platform::Passed;

Passed passed(Kind kind) {
    switch (kind) {
        case Kind::Nothing:
            return Passed::kNothing;
        case Kind::Integer:
            return Passed::kInt32;
        case Kind::Int64:
        case Kind::UInt64:
            return Passed::kInt64;
        case Kind::Double:
            return Passed::kDouble;
        case Kind::Boolean:
            return Passed::kInt8;
        default:
            return Passed::kPointer;
    }
}

std::vector<Passed> all_passed(std::span<const Kind> kinds) {
    std::vector<Passed> all;
    for (const Kind kind : kinds) all.push_back(passed(kind));
    return all;
}

}  // namespace

Word to_word(const Value& value) {
    struct {
        Word operator()(std::monostate) const { return {.pointer = nullptr}; }
        Word operator()(int32_t v) const { return {.integer = v}; }
        Word operator()(int64_t v) const { return {.int64 = v}; }
        Word operator()(uint64_t v) const { return {.uint64 = v}; }
        Word operator()(double v) const { return {.number = v}; }
        Word operator()(bool v) const { return {.boolean = REALboolean(v)}; }
        Word operator()(Pointer v) const { return {.pointer = v.address}; }
        Word operator()(const StringRef& v) const { return {.pointer = v.get()}; }
        Word operator()(const ObjectRef& v) const { return {.pointer = v.get()}; }
    } visitor;
    return std::visit(visitor, value);
}

NativeCall::NativeCall(void* function, std::span<const Kind> parameters, Kind result)
    : platform::NativeCall(function, all_passed(parameters), passed(result)) {}

}  // namespace minihost
