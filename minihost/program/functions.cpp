#include "minihost/program/functions.h"

#include <algorithm>

#include "minihost/program/names.h"

namespace minihost {
namespace {

using Arguments = std::span<const Value>;

// The members by which a bundle extends a class must stand a nil object; all others cannot be reached without
// an instance.
void require_instance(Runtime& runtime, const std::string& owner, const ObjectRef& self,
                      const std::string& name) {
    if (self) return;
    const Host& host = runtime.host;
    const bool extended = !host.find_class(owner)->record &&
                          std::ranges::any_of(host.registered_classes(), [&](const auto* record) {
                              return same_name(record->name, owner);
                          });
    if (!extended) raise(runtime, "NilObjectException", name + " of a nil " + owner);
}

Callable from_bundle(const Method& method) {
    const auto check = [&method](Runtime& runtime, const ObjectRef& self) {
        if (!method.owner.empty()) require_instance(runtime, method.owner, self, method.declaration.name);
    };
    Callable result{method.declaration,
                    [&method, check](Runtime& runtime, const ObjectRef& self, Arguments arguments) {
                        check(runtime, self);
                        return runtime.host.call(method, self.get(), arguments);
                    }};
    if (method.setter) {
        result.set = [&method, check](Runtime& runtime, const ObjectRef& self, Arguments arguments) {
            check(runtime, self);
            runtime.host.assign(method, self.get(), arguments.first(arguments.size() - 1), arguments.back());
            return Value();
        };
    }
    return result;
}

Callable from_bundle(const Property& property) {
    return {{property.name + " as " + to_string(property.type), property.name, {}, property.type},
            [&property](Runtime& runtime, const ObjectRef& self, Arguments) {
                require_instance(runtime, property.owner, self, property.name);
                return runtime.host.get(property, self.get());
            }};
}

void add_built_ins(std::vector<Callable>& found, std::string_view owner, std::string_view name) {
    for (const BuiltIn& built_in : built_ins()) {
        if (same_name(built_in.owner, owner) && same_name(built_in.callable.declaration.name, name)) {
            found.push_back(built_in.callable);
        }
    }
}

}  // namespace

std::vector<Callable> find_functions(Host& host, std::string_view name) {
    std::vector<Callable> found;
    for (const Method& method : host.globals()) {
        if (same_name(method.declaration.name, name)) found.push_back(from_bundle(method));
    }
    if (found.empty()) add_built_ins(found, "", name);
    return found;
}

std::vector<Callable> find_members(Host& host, std::string_view class_name, std::string_view name) {
    std::vector<Callable> found;
    const Class* type = host.find_class(class_name);
    if (!type) return found;
    if (const Property* property = host.find_property(*type, name)) return {from_bundle(*property)};
    for (const Method* method : host.find_methods(*type, name)) found.push_back(from_bundle(*method));
    for (; type && found.empty(); type = type->super) add_built_ins(found, type->name, name);
    return found;
}

std::vector<Callable> find_constructors(Host& host, std::string_view class_name) {
    std::vector<Callable> found;
    add_built_ins(found, kConstructor, class_name);
    const Class* type = host.find_class(class_name);
    if (found.empty() && type) {
        found.push_back({{"", type->name, {}, object_type(type->name)},
                         [type](Runtime& runtime, const ObjectRef&, Arguments) {
                             return Value(runtime.host.new_instance(type->name));
                         }});
    }
    return found;
}

std::vector<std::string> function_names(Host& host) {
    std::vector<std::string> names;
    for (const Method& method : host.globals()) names.push_back(method.declaration.name);
    for (const BuiltIn& built_in : built_ins()) {
        if (built_in.owner.empty()) names.push_back(built_in.callable.declaration.name);
    }
    return names;
}

std::vector<std::string> member_names(Host& host, std::string_view class_name) {
    std::vector<std::string> names;
    for (const Class* owner : host.classes()) {
        if (!class_name.empty() && !fits(host, object_type(owner->name), object_type(class_name))) continue;
        for (const Property& property : owner->properties) names.push_back(property.name);
        for (const Method& method : owner->methods) names.push_back(method.declaration.name);
        for (const BuiltIn& built_in : built_ins()) {
            if (same_name(built_in.owner, owner->name)) names.push_back(built_in.callable.declaration.name);
        }
    }
    return names;
}

}  // namespace minihost
