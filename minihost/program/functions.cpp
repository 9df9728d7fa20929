#include "minihost/program/functions.h"

#include <algorithm>

#include "minihost/program/names.h"

namespace minihost {
namespace {

using Arguments = std::span<const Value>;

// The members by which a bundle extends a class must stand a nil object; all others cannot be reached without
// an instance.
void require_instance(Runtime& runtime, const Class& owner, const ObjectRef& self, const std::string& name) {
    const auto records = runtime.host.registered_classes();
    const bool extended = !owner.record && std::ranges::any_of(records, [&](const auto* record) {
        return same_name(record->name, owner.name);
    });
    if (!self && !extended) raise(runtime, "NilObjectException", name + " of a nil " + owner.name);
}

Callable from_bundle(const Class& owner, const Method& method) {
    const std::string name = method.declaration.name;
    Callable result{method.declaration,
                    [&owner, name](Runtime& runtime, const ObjectRef& self, Arguments arguments) {
                        require_instance(runtime, owner, self, name);
                        return self ? runtime.host.call(self.get(), name, arguments)
                                    : runtime.host.call_on_nil(owner.name, name, arguments);
                    }};
    if (method.setter) {
        result.set = [&owner, name](Runtime& runtime, const ObjectRef& self, Arguments arguments) {
            require_instance(runtime, owner, self, name);
            const Arguments declared = arguments.first(arguments.size() - 1);
            if (self) {
                runtime.host.assign(self.get(), name, declared, arguments.back());
            } else {
                runtime.host.assign_on_nil(owner.name, name, declared, arguments.back());
            }
            return Value();
        };
    }
    return result;
}

Callable from_bundle(const Class& owner, const Property& property) {
    const std::string name = property.name;
    return {{name + " as " + to_string(property.type), name, {}, property.type},
            [&owner, name](Runtime& runtime, const ObjectRef& self, Arguments) {
                require_instance(runtime, owner, self, name);
                return self ? runtime.host.get(self.get(), name) : runtime.host.get_on_nil(owner.name, name);
            }};
}

Callable from_bundle(const Method& global) {
    return {global.declaration,
            [name = global.declaration.name](Runtime& runtime, const ObjectRef&, Arguments arguments) {
                return runtime.host.call_global(name, arguments);
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
    for (const Class* owner = host.find_class(class_name); owner && found.empty(); owner = owner->super) {
        for (const Property& property : owner->properties) {
            if (same_name(property.name, name)) found.push_back(from_bundle(*owner, property));
        }
        for (const Method& method : owner->methods) {
            if (same_name(method.declaration.name, name)) found.push_back(from_bundle(*owner, method));
        }
        if (found.empty()) add_built_ins(found, owner->name, name);
    }
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
        if (!class_name.empty() && fit(host, object_type(owner->name), object_type(class_name)) == Fit::No)
            continue;
        for (const Property& property : owner->properties) names.push_back(property.name);
        for (const Method& method : owner->methods) names.push_back(method.declaration.name);
        for (const BuiltIn& built_in : built_ins()) {
            if (same_name(built_in.owner, owner->name)) names.push_back(built_in.callable.declaration.name);
        }
    }
    return names;
}

}  // namespace minihost
