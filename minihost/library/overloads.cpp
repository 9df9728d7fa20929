#include "minihost/library/overloads.h"

#include <algorithm>
#include <cstdio>

#include "minihost/library/names.h"
#include "minihost/library/state.h"

namespace minihost {
namespace {

constexpr int kVariant = 50;  // farther than any wider number or superclass
constexpr int kNarrower = 100;

bool is_number(Kind kind) { return kind >= Kind::Integer && kind <= Kind::Double; }

// Steps from a class to one above it.
std::optional<int> steps_up(const Class* type, std::string_view super) {
    for (int steps = 0; type; type = type->super, ++steps) {
        if (same_name(type->name, super)) return std::min(steps, kVariant - 1);
    }
    return std::nullopt;
}

bool takes(const Declaration& declaration, size_t count) {
    return count >= declaration.required() && count <= declaration.parameters.size();
}

// How far the arguments of a call are from an overload. `misfit` is the first that does not fit.
struct Nearness {
    std::optional<size_t> misfit;
    int worst = 0;
    int sum = 0;

    bool operator<(const Nearness& other) const {
        return std::tuple(misfit.has_value(), worst, sum) <
               std::tuple(other.misfit.has_value(), other.worst, other.sum);
    }
};

Nearness nearness(const Host& host, const Declaration& declaration, std::span<const Type> arguments) {
    Nearness result;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const auto found = distance(host, declaration.parameters[i].type, arguments[i]);
        if (!found) return {.misfit = i};
        result.worst = std::max(result.worst, *found);
        result.sum += *found;
    }
    return result;
}

using Overloads = std::span<const Declaration* const>;

std::string alternatives(Overloads overloads) {
    std::string text;
    for (const Declaration* declaration : overloads) {
        text += (text.empty() ? "" : " or ") + count_text(*declaration);
    }
    return text;
}

std::string list_of(std::span<const Type> types) {
    std::string text;
    for (const Type& type : types) text += (text.empty() ? "" : ", ") + text_of(type);
    return text;
}

// Never empty.
std::vector<const Declaration*> taking(Overloads overloads, size_t count) {
    std::vector<const Declaration*> counted;
    for (const Declaration* declaration : overloads) {
        if (takes(*declaration, count)) counted.push_back(declaration);
    }
    if (!counted.empty()) return counted;
    throw CallError(overloads.front()->name + " takes " + alternatives(overloads) + ", got " +
                    std::to_string(count));
}

size_t index_of(Overloads overloads, const Declaration* declaration) {
    return size_t(std::ranges::find(overloads, declaration) - overloads.begin());
}

std::string takes_text(const std::string& name, const Parameter& parameter) {
    return name + " takes " + parameter.name + " as " + to_string(parameter.type) + ", got ";
}

}  // namespace

std::optional<int> distance(const Host& host, const Type& declared, const Type& found) {
    if (found.kind == Kind::Nothing) return std::nullopt;
    if (same_name(declared.class_name, "Variant")) return kVariant;
    if (is_number(declared.kind) && is_number(found.kind)) {
        const int wider = int(declared.kind) - int(found.kind);
        return wider >= 0 ? wider : kNarrower - wider;
    }
    if (found == kNil) {
        if (declared.kind == Kind::Object || declared.kind == Kind::Ptr) return 0;
        return std::nullopt;
    }
    if (declared.kind == Kind::Ptr && same_name(found.class_name, "MemoryBlock")) return 1;
    if (declared.kind != found.kind) return std::nullopt;
    if (declared.kind != Kind::Object) return 0;
    return steps_up(host.find_class(found.class_name), declared.class_name);
}

size_t choose(const Host& host, Overloads overloads, std::span<const Type> arguments) {
    const std::vector<const Declaration*> counted = taking(overloads, arguments.size());
    const Declaration* best = counted.front();
    Nearness nearest = nearness(host, *best, arguments);
    for (const Declaration* declaration : counted) {
        const Nearness found = nearness(host, *declaration, arguments);
        if (found < nearest) std::tie(best, nearest) = std::tie(declaration, found);
    }
    if (!nearest.misfit) return index_of(overloads, best);
    if (counted.size() > 1) {
        throw CallError(best->name + " takes " + alternatives(counted) + ", got (" + list_of(arguments) +
                        ")");
    }
    const size_t at = *nearest.misfit;
    throw CallError(misfit_text(best->name, best->parameters[at], arguments[at]), at);
}

// Where the count leaves one overload, what is wrong with a value shows when it is converted.
size_t choose(const Host& host, Overloads overloads, std::span<const Value> arguments) {
    const std::vector<const Declaration*> counted = taking(overloads, arguments.size());
    if (counted.size() == 1) return index_of(overloads, counted.front());
    std::vector<Type> types;
    for (const Value& argument : arguments) types.push_back(type_of(host, argument));
    return choose(host, overloads, types);
}

Type type_of(const Host& host, const Value& value) {
    struct {
        const Host& host;
        Type operator()(std::monostate) const { return kNil; }
        Type operator()(int32_t) const { return {Kind::Integer, ""}; }
        Type operator()(int64_t) const { return {Kind::Int64, ""}; }
        Type operator()(uint64_t) const { return {Kind::UInt64, ""}; }
        Type operator()(double) const { return {Kind::Double, ""}; }
        Type operator()(bool) const { return {Kind::Boolean, ""}; }
        Type operator()(Pointer) const { return {Kind::Ptr, ""}; }
        Type operator()(const StringRef&) const { return {Kind::String, ""}; }
        Type operator()(const ObjectRef& object) const {
            return object ? Type{Kind::Object, host.class_of(object.get()).name} : kNil;
        }
    } visitor{host};
    return std::visit(visitor, value);
}

std::optional<Value> convert_exactly(const Host& host, const Value& value, const Type& type) {
    const auto* object = std::get_if<ObjectRef>(&value);
    const bool nil = std::holds_alternative<std::monostate>(value) || (object && !*object);
    switch (type.kind) {
        case Kind::String:
            if (nil) return StringRef();
            return std::holds_alternative<StringRef>(value) ? std::optional(value) : std::nullopt;
        case Kind::Ptr:
            if (nil) return Pointer();
            if (object && host.is_a(object->get(), "MemoryBlock"))
                return Pointer{host.block_data(object->get())};
            return std::holds_alternative<Pointer>(value) ? std::optional(value) : std::nullopt;
        case Kind::Object:
            if (same_name(type.class_name, "Variant")) return value;
            if (nil) return ObjectRef();
            return object && host.is_a(object->get(), type.class_name) ? std::optional(value) : std::nullopt;
        default:
            return convert_scalar(value, type.kind);
    }
}

std::string count_text(const Declaration& declaration) {
    const size_t most = declaration.parameters.size();
    if (most == 0) return "no arguments";
    std::string text = std::to_string(most) + (most == 1 ? " argument" : " arguments");
    if (declaration.required() < most) text.insert(0, std::to_string(declaration.required()) + " to ");
    const size_t first = declaration.text.find('(');
    const size_t last = declaration.text.rfind(')');
    return text + ' ' + declaration.text.substr(first, last + 1 - first);
}

std::string misfit_text(const std::string& name, const Parameter& parameter, const Type& found) {
    return takes_text(name, parameter) + text_of(found);
}

std::string misfit_text(const std::string& name, const Parameter& parameter, const Value& found) {
    return takes_text(name, parameter) + text_of(Host::current(), found);
}

std::string text_of(const Host& host, const Value& value) {
    struct {
        const Host& host;
        std::string operator()(std::monostate) const { return "Nil"; }
        std::string operator()(int32_t number) const { return "Integer " + std::to_string(number); }
        std::string operator()(int64_t number) const { return "Int64 " + std::to_string(number); }
        std::string operator()(uint64_t number) const { return "UInt64 " + std::to_string(number); }
        std::string operator()(double number) const {
            char text[32];
            std::snprintf(text, sizeof text, "Double %.15g", number);
            return text;
        }
        std::string operator()(bool truth) const { return truth ? "Boolean true" : "Boolean false"; }
        std::string operator()(Pointer) const { return "a Ptr"; }
        std::string operator()(const StringRef& string) const { return string ? "a String" : "Nil"; }
        std::string operator()(const ObjectRef& object) const {
            return object ? "a " + host.class_of(object.get()).name : "Nil";
        }
    } visitor{host};
    return std::visit(visitor, value);
}

std::string text_of(const Type& type) {
    if (type.kind == Kind::Nothing) return "a call without a result";
    return type == kNil ? "Nil" : to_string(type);
}

}  // namespace minihost
