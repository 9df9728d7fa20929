// Calls of members: the member for a name and its arguments, the arguments as the declaration says, and the
// native call.
#include <ffi.h>

#include <algorithm>
#include <cstdio>

#include "minihost/library/names.h"
#include "minihost/library/state.h"

namespace minihost {
namespace {

// Values, as messages show them

std::string text_of(const Value& value) {
    struct {
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
            return object ? "a " + Host::current().class_of(object.get()).name : "Nil";
        }
    } visitor;
    return std::visit(visitor, value);
}

std::string text_of(const Parameter& parameter) {
    std::string text = parameter.name + " as " + to_string(parameter.type);
    if (parameter.default_value) {
        const std::string value = text_of(*parameter.default_value);
        text += " = " + value.substr(value.find(' ') + 1);
    }
    return text;
}

template <class Item>
std::string list_of(std::span<const Item> items) {
    std::string text;
    for (const Item& item : items) text += (text.empty() ? "" : ", ") + text_of(item);
    return text;
}

// "2 to 3 arguments (srcOfs as Integer, ...)"
std::string text_of(const Declaration& declaration) {
    const size_t most = declaration.parameters.size();
    if (most == 0) return "no arguments";
    std::string text = std::to_string(most) + (most == 1 ? " argument (" : " arguments (");
    if (declaration.required() < most) text.insert(0, std::to_string(declaration.required()) + " to ");
    return text + list_of<Parameter>(declaration.parameters) + ")";
}

std::string alternatives(const std::vector<const Method*>& methods) {
    std::string text;
    for (const Method* method : methods) {
        text += (text.empty() ? "" : " or ") + text_of(method->declaration);
    }
    return text;
}

// Arguments

// The value as the declared type; nothing where that would lose something. A block may stand for a Ptr
// to its bytes.
std::optional<Value> convert(const Value& value, const Type& type) {
    const auto* object = std::get_if<ObjectRef>(&value);
    const bool nil = std::holds_alternative<std::monostate>(value) || (object && !*object);
    switch (type.kind) {
        case Kind::String:
            if (nil) return StringRef();
            return std::holds_alternative<StringRef>(value) ? std::optional(value) : std::nullopt;
        case Kind::Ptr:
            if (nil) return Pointer();
            if (object && Host::current().is_a(object->get(), "MemoryBlock")) {
                return Pointer{Host::current().block_data(object->get())};
            }
            return std::holds_alternative<Pointer>(value) ? std::optional(value) : std::nullopt;
        case Kind::Object:
            if (nil) return ObjectRef();
            return object && Host::current().is_a(object->get(), type.class_name) ? std::optional(value)
                                                                                  : std::nullopt;
        default:
            return convert_scalar(value, type.kind);
    }
}

// The arguments of a call of `method`, defaults filled in; `misfit` is the first that does not convert.
struct Fit {
    const Method* method = nullptr;
    std::vector<Value> arguments;
    std::optional<size_t> misfit;
    size_t exact = 0;  // arguments that are of the declared type as they are
};

Fit fit(const Method& method, std::span<const Value> arguments) {
    Fit result;
    result.method = &method;
    const auto& parameters = method.declaration.parameters;
    for (size_t i = 0; i < parameters.size(); ++i) {
        const Value& given = i < arguments.size() ? arguments[i] : *parameters[i].default_value;
        auto converted = convert(given, parameters[i].type);
        if (!converted) {
            result.misfit = i;
            break;
        }
        if (converted->index() == given.index()) ++result.exact;
        result.arguments.push_back(std::move(*converted));
    }
    return result;
}

}  // namespace

std::string misfit_text(const std::string& name, const Parameter& parameter, const Value& found) {
    return name + " takes " + text_of(parameter) + ", got " + text_of(found);
}

namespace {

// The best of the methods for the arguments; of equally good ones the first.
Fit choose(const std::vector<const Method*>& methods, std::span<const Value> arguments) {
    const std::string& name = methods.front()->declaration.name;
    std::vector<const Method*> countable;
    std::optional<Fit> best;
    for (const Method* method : methods) {
        const Declaration& declaration = method->declaration;
        if (arguments.size() < declaration.required() || arguments.size() > declaration.parameters.size()) {
            continue;
        }
        countable.push_back(method);
        Fit found = fit(*method, arguments);
        if (!best || (!found.misfit && (best->misfit || found.exact > best->exact))) best = std::move(found);
    }
    if (!best) {
        throw CallError(name + " takes " + alternatives(methods) + ", got " +
                        std::to_string(arguments.size()));
    }
    if (!best->misfit) return std::move(*best);
    if (countable.size() > 1) {
        throw CallError(name + " takes " + alternatives(countable) + ", got (" + list_of(arguments) + ")");
    }
    const size_t at = *best->misfit;
    throw CallError(misfit_text(name, best->method->declaration.parameters[at], arguments[at]));
}

// Members by name: those of a class, then those of its superclasses that they do not override

bool same_parameters(const Method& a, const Method& b) {
    return std::ranges::equal(a.declaration.parameters, b.declaration.parameters, {}, &Parameter::type,
                              &Parameter::type);
}

std::vector<const Method*> methods_named(const Class& type, std::string_view name) {
    std::vector<const Method*> found;
    for (const Class* owner = &type; owner; owner = owner->super) {
        for (const Method& method : owner->methods) {
            const auto overrides = [&](const Method* other) { return same_parameters(*other, method); };
            if (same_name(method.declaration.name, name) && std::ranges::none_of(found, overrides)) {
                found.push_back(&method);
            }
        }
    }
    if (found.empty()) throw CallError(type.name + " has no method " + std::string(name));
    return found;
}

const Property* property_named(const Class& type, std::string_view name) {
    for (const Class* owner = &type; owner; owner = owner->super) {
        for (const Property& property : owner->properties) {
            if (same_name(property.name, name)) return &property;
        }
    }
    return nullptr;
}

const Class& class_named(const Host& host, std::string_view name) {
    const Class* type = host.find_class(name);
    if (!type) throw CallError("there is no class " + std::string(name));
    return *type;
}

// The native call

struct NativeArgument {
    ffi_type* type;
    union {
        int32_t integer;
        int64_t int64;
        uint64_t uint64;
        double number;
        REALboolean boolean;
        void* pointer;
    };
};

// The value has been converted: its alternative is that of the declared type.
NativeArgument native(const Value& value) {
    struct {
        NativeArgument operator()(std::monostate) const { return {&ffi_type_pointer, {.pointer = nullptr}}; }
        NativeArgument operator()(int32_t v) const { return {&ffi_type_sint32, {.integer = v}}; }
        NativeArgument operator()(int64_t v) const { return {&ffi_type_sint64, {.int64 = v}}; }
        NativeArgument operator()(uint64_t v) const { return {&ffi_type_uint64, {.uint64 = v}}; }
        NativeArgument operator()(double v) const { return {&ffi_type_double, {.number = v}}; }
        NativeArgument operator()(bool v) const { return {&ffi_type_sint8, {.boolean = REALboolean(v)}}; }
        NativeArgument operator()(Pointer v) const { return {&ffi_type_pointer, {.pointer = v.address}}; }
        NativeArgument operator()(const StringRef& v) const {
            return {&ffi_type_pointer, {.pointer = v.get()}};
        }
        NativeArgument operator()(const ObjectRef& v) const {
            return {&ffi_type_pointer, {.pointer = v.get()}};
        }
    } visitor;
    return std::visit(visitor, value);
}

ffi_type* native_type(Kind kind) {
    switch (kind) {
        case Kind::Nothing:
            return &ffi_type_void;
        case Kind::Integer:
            return &ffi_type_sint32;
        case Kind::Int64:
            return &ffi_type_sint64;
        case Kind::UInt64:
            return &ffi_type_uint64;
        case Kind::Double:
            return &ffi_type_double;
        case Kind::Boolean:
            return &ffi_type_sint8;
        default:
            return &ffi_type_pointer;
    }
}

// Results narrower than a register come as a whole one.
union NativeResult {
    ffi_arg word;
    int64_t int64;
    uint64_t uint64;
    double number;
    void* pointer;
};

struct Running {
    explicit Running(int& calls) : calls_(calls) { ++calls_; }
    ~Running() { --calls_; }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

 private:
    int& calls_;
};

}  // namespace

Value Host::State::call(const std::string& name, void* function, REALobject* self,
                        std::span<const Value> arguments, const Type& result) {
    std::vector<NativeArgument> natives;
    if (self) natives.push_back({&ffi_type_pointer, {.pointer = *self}});
    for (const Value& argument : arguments) natives.push_back(native(argument));
    std::vector<ffi_type*> types;
    std::vector<void*> addresses;
    for (NativeArgument& argument : natives) {
        types.push_back(argument.type);
        addresses.push_back(&argument.integer);
    }
    ffi_cif interface;
    if (ffi_prep_cif(&interface, FFI_DEFAULT_ABI, unsigned(types.size()), native_type(result.kind),
                     types.data()) != FFI_OK) {
        throw CallError(name + " cannot be called");
    }
    NativeResult returned = {};
    {
        const Running running(calls);
        ffi_call(&interface, reinterpret_cast<void (*)()>(function), &returned, addresses.data());
    }

    // The result's reference is the caller's, also when it gets an exception instead.
    Value value;
    switch (result.kind) {
        case Kind::Nothing:
            break;
        case Kind::Integer:
            value = int32_t(returned.word);
            break;
        case Kind::Int64:
            value = returned.int64;
            break;
        case Kind::UInt64:
            value = returned.uint64;
            break;
        case Kind::Double:
            value = returned.number;
            break;
        case Kind::Boolean:
            value = int8_t(returned.word) != 0;
            break;
        case Kind::Ptr:
            value = Pointer{returned.pointer};
            break;
        case Kind::String: {
            auto* string = static_cast<REALstring>(returned.pointer);
            const bool usable = string && checked(name.c_str(), string);
            value = StringRef::adopt(usable ? string : nullptr);
            break;
        }
        case Kind::Object: {
            auto* object = static_cast<REALobject>(returned.pointer);
            const bool usable = object && checked(name.c_str(), object, find_class(result.class_name));
            value = ObjectRef::adopt(usable ? object : nullptr);
            break;
        }
    }
    throw_raised();
    return value;
}

void Host::State::throw_raised() {
    if (raised) throw HostException(std::exchange(raised, {}));
}

namespace {

Value call_method(Host& host, const Class& type, REALobject self, std::string_view name,
                  std::span<const Value> arguments) {
    const Fit chosen = choose(methods_named(type, name), arguments);
    return host.state().call(chosen.method->declaration.name, chosen.method->function, &self,
                             chosen.arguments, chosen.method->declaration.result);
}

void assign_method(Host& host, const Class& type, REALobject self, std::string_view name,
                   std::span<const Value> arguments, const Value& value) {
    if (const Property* property = property_named(type, name))
        throw CallError(property->name + " is read-only");
    std::vector<const Method*> methods = methods_named(type, name);
    const std::string& registered_name = methods.front()->declaration.name;
    std::erase_if(methods, [](const Method* method) { return !method->setter; });
    if (methods.empty()) throw CallError(registered_name + " cannot be assigned");
    Fit chosen = choose(methods, arguments);
    const Declaration& declaration = chosen.method->declaration;
    auto converted = convert(value, declaration.result);
    if (!converted) throw CallError(misfit_text(declaration.name, {"value", declaration.result, {}}, value));
    chosen.arguments.push_back(std::move(*converted));
    host.state().call(declaration.name, chosen.method->setter, &self, chosen.arguments, {});
}

Value get_property(Host& host, const Class& type, REALobject self, std::string_view name) {
    const Property* property = property_named(type, name);
    if (!property) throw CallError(type.name + " has no property " + std::string(name));
    const Value unused = int32_t{0};
    return host.state().call(property->name, property->getter, &self, {&unused, 1}, property->type);
}

}  // namespace

Value Host::call(REALobject self, std::string_view name, std::span<const Value> arguments) {
    return call_method(*this, class_of(self), self, name, arguments);
}

Value Host::call_on_nil(std::string_view class_name, std::string_view name,
                        std::span<const Value> arguments) {
    return call_method(*this, class_named(*this, class_name), nullptr, name, arguments);
}

void Host::assign(REALobject self, std::string_view name, std::span<const Value> arguments,
                  const Value& value) {
    assign_method(*this, class_of(self), self, name, arguments, value);
}

void Host::assign_on_nil(std::string_view class_name, std::string_view name, std::span<const Value> arguments,
                         const Value& value) {
    assign_method(*this, class_named(*this, class_name), nullptr, name, arguments, value);
}

Value Host::get(REALobject self, std::string_view property) {
    return get_property(*this, class_of(self), self, property);
}

Value Host::get_on_nil(std::string_view class_name, std::string_view property) {
    return get_property(*this, class_named(*this, class_name), nullptr, property);
}

Value Host::call_global(std::string_view name, std::span<const Value> arguments) {
    std::vector<const Method*> methods;
    for (const Method& method : state_->globals) {
        if (same_name(method.declaration.name, name)) methods.push_back(&method);
    }
    if (methods.empty()) throw CallError("there is no global method " + std::string(name));
    const Fit chosen = choose(methods, arguments);
    return state_->call(chosen.method->declaration.name, chosen.method->function, nullptr, chosen.arguments,
                        chosen.method->declaration.result);
}

// Exceptions

namespace {

std::string text_of(const Object& raised) {
    std::string text = raised.type->name;
    if (raised.message) text += ": " + std::string(Host::current().bytes_of(raised.message.get()));
    return text;
}

}  // namespace

void Host::raise(std::string_view class_name, std::string_view message) {
    ObjectRef exception = new_instance(class_name);
    Object* object = state_->live(exception.get());
    if (!object) throw std::logic_error("there is no class " + std::string(class_name));
    object->message = new_string(message, *encoding_number("UTF-8"));
    throw HostException(std::move(exception));
}

HostException::HostException(ObjectRef raised_object)
    : std::runtime_error(text_of(*Host::State::current->live(raised_object.get()))),
      object(std::move(raised_object)) {
    const Object& raised = *Host::State::current->live(object.get());
    class_name = raised.type->name;
    error_number = raised.error_number;
    if (!raised.message) return;
    message = Host::current().bytes_of(raised.message.get());
    message_encoding = Host::current().encoding_of(raised.message.get());
}

}  // namespace minihost
