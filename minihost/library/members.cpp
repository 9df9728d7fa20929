// Members: the look-up by name, and the calls.
#include <algorithm>

#include "minihost/library/names.h"
#include "minihost/library/overloads.h"
#include "minihost/library/state.h"

namespace minihost {
namespace {

using Methods = std::vector<const Method*>;

// Look-up

bool same_parameters(const Method& a, const Method& b) {
    return std::ranges::equal(a.declaration.parameters, b.declaration.parameters, {}, &Parameter::type,
                              &Parameter::type);
}

const Class& class_named(const Host& host, std::string_view name) {
    const Class* type = host.find_class(name);
    if (!type) throw CallError("there is no class " + std::string(name));
    return *type;
}

Methods methods_named(const Host& host, const Class& type, std::string_view name) {
    Methods found = host.find_methods(type, name);
    if (found.empty()) throw CallError(type.name + " has no method " + std::string(name));
    return found;
}

Methods settable_methods(const Host& host, const Class& type, std::string_view name) {
    if (const Property* property = host.find_property(type, name))
        throw CallError(property->name + " is read-only");
    Methods found = methods_named(host, type, name);
    const std::string& registered_name = found.front()->declaration.name;
    std::erase_if(found, [](const Method* method) { return !method->set; });
    if (found.empty()) throw CallError(registered_name + " cannot be assigned");
    return found;
}

const Property& property_named(const Host& host, const Class& type, std::string_view name) {
    const Property* property = host.find_property(type, name);
    if (!property) throw CallError(type.name + " has no property " + std::string(name));
    return *property;
}

const Method& chosen(const Host& host, const Methods& methods, std::span<const Value> arguments) {
    std::vector<const Declaration*> declarations;
    for (const Method* method : methods) declarations.push_back(&method->declaration);
    return *methods[choose(host, declarations, arguments)];
}

// Arguments

// Whether the value is passed as it is. What is not becomes a number or an address, or nil.
bool is_of_type(const Host& host, const Value& value, const Type& type) {
    switch (type.kind) {
        case Kind::Integer:
            return std::holds_alternative<int32_t>(value);
        case Kind::Int64:
            return std::holds_alternative<int64_t>(value);
        case Kind::UInt64:
            return std::holds_alternative<uint64_t>(value);
        case Kind::Double:
            return std::holds_alternative<double>(value);
        case Kind::Boolean:
            return std::holds_alternative<bool>(value);
        case Kind::String:
            return std::holds_alternative<StringRef>(value);
        case Kind::Ptr:
            return std::holds_alternative<Pointer>(value);
        case Kind::Object:
            if (const auto* object = std::get_if<ObjectRef>(&value))
                return !*object || host.is_a(object->get(), type.class_name);
            return false;
        case Kind::Nothing:
            break;
    }
    return false;
}

// The words of a call, in order.
class WordList {
 public:
    WordList(const Host& host, const std::string& name) : host_(host), name_(name) {}

    void add(const Word& word) { words_[count_++] = word; }
    void add(const Value& value, const Parameter& parameter) {
        if (is_of_type(host_, value, parameter.type)) return add(to_word(value));
        const auto converted = convert_exactly(host_, value, parameter.type);
        if (!converted) throw CallError(misfit_text(name_, parameter, value));
        add(to_word(*converted));
    }
    void add(std::span<const Value> arguments, const Declaration& declaration) {
        const auto& parameters = declaration.parameters;
        if (arguments.size() < declaration.required() || arguments.size() > parameters.size()) {
            throw CallError(name_ + " takes " + count_text(declaration) + ", got " +
                            std::to_string(arguments.size()));
        }
        for (size_t i = 0; i < parameters.size(); ++i) {
            add(i < arguments.size() ? arguments[i] : *parameters[i].default_value, parameters[i]);
        }
    }

    Words& words() { return words_; }

 private:
    const Host& host_;
    const std::string& name_;
    Words words_;  // the first `count_` are set
    size_t count_ = 0;
};

// The object's word; global methods have none.
void add_self(WordList& words, const Host& host, const std::string& owner, REALobject self) {
    if (owner.empty()) return;
    if (self && !host.is_a(self, owner))
        throw CallError("the object is a " + host.class_of(self).name + ", no " + owner);
    words.add({.pointer = self});
}

}  // namespace

Methods Host::find_methods(const Class& type, std::string_view name) const {
    Methods found;
    for (const Class* owner = &type; owner; owner = owner->super) {
        for (const Method& method : owner->methods) {
            const auto overrides = [&](const Method* other) { return same_parameters(*other, method); };
            if (same_name(method.declaration.name, name) && std::ranges::none_of(found, overrides))
                found.push_back(&method);
        }
    }
    return found;
}

const Property* Host::find_property(const Class& type, std::string_view name) const {
    for (const Class* owner = &type; owner; owner = owner->super) {
        for (const Property& property : owner->properties) {
            if (same_name(property.name, name)) return &property;
        }
    }
    return nullptr;
}

// Calls of what was found

Value Host::call(const Method& method, REALobject self, std::span<const Value> arguments) {
    const Declaration& declaration = method.declaration;
    WordList words(*this, declaration.name);
    add_self(words, *this, method.owner, self);
    words.add(arguments, declaration);
    return state_->call({method.bundle, "", &declaration.name}, *method.get, words.words(),
                        declaration.result);
}

void Host::assign(const Method& method, REALobject self, std::span<const Value> arguments,
                  const Value& value) {
    const Declaration& declaration = method.declaration;
    if (!method.set) throw CallError(declaration.name + " cannot be assigned");
    WordList words(*this, declaration.name);
    add_self(words, *this, method.owner, self);
    words.add(arguments, declaration);
    words.add(value, {"value", declaration.result, {}});
    state_->call({method.bundle, "", &declaration.name}, *method.set, words.words(), {});
}

Value Host::get(const Property& property, REALobject self) {
    WordList words(*this, property.name);
    add_self(words, *this, property.owner, self);
    words.add({.integer = 0});
    return state_->call({property.bundle, "", &property.name}, *property.get, words.words(), property.type);
}

Value Host::State::call(const Callee& callee, const NativeCall& function, Words& arguments,
                        const Type& result) {
    const Word returned = enter(callee, [&] { return function(arguments); });
    const char* name = callee.name->c_str();

    // The result's reference is the caller's, also when it gets an exception instead.
    Value value;
    switch (result.kind) {
        case Kind::Nothing:
            break;
        case Kind::Integer:
            value = returned.integer;
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
            value = returned.boolean != 0;
            break;
        case Kind::Ptr:
            value = Pointer{returned.pointer};
            break;
        case Kind::String: {
            auto* string = static_cast<REALstring>(returned.pointer);
            const bool usable = string && checked(name, string);
            value = StringRef::adopt(usable ? string : nullptr);
            break;
        }
        case Kind::Object: {
            auto* object = static_cast<REALobject>(returned.pointer);
            const bool usable = object && checked(name, object, find_class(result.class_name));
            value = ObjectRef::adopt(usable ? object : nullptr);
            break;
        }
    }
    throw_raised();
    return value;
}

// Calls by name

Value Host::call(REALobject self, std::string_view name, std::span<const Value> arguments) {
    return call(chosen(*this, methods_named(*this, class_of(self), name), arguments), self, arguments);
}

Value Host::call_on_nil(std::string_view class_name, std::string_view name,
                        std::span<const Value> arguments) {
    const Class& type = class_named(*this, class_name);
    return call(chosen(*this, methods_named(*this, type, name), arguments), nullptr, arguments);
}

void Host::assign(REALobject self, std::string_view name, std::span<const Value> arguments,
                  const Value& value) {
    assign(chosen(*this, settable_methods(*this, class_of(self), name), arguments), self, arguments, value);
}

void Host::assign_on_nil(std::string_view class_name, std::string_view name, std::span<const Value> arguments,
                         const Value& value) {
    const Class& type = class_named(*this, class_name);
    assign(chosen(*this, settable_methods(*this, type, name), arguments), nullptr, arguments, value);
}

Value Host::get(REALobject self, std::string_view property) {
    return get(property_named(*this, class_of(self), property), self);
}

Value Host::get_on_nil(std::string_view class_name, std::string_view property) {
    return get(property_named(*this, class_named(*this, class_name), property), nullptr);
}

Value Host::call_global(std::string_view name, std::span<const Value> arguments) {
    Methods methods;
    for (const Method& method : state_->globals) {
        if (same_name(method.declaration.name, name)) methods.push_back(&method);
    }
    if (methods.empty()) throw CallError("there is no global method " + std::string(name));
    return call(chosen(*this, methods, arguments), nullptr, arguments);
}

}  // namespace minihost
