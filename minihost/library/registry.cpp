// The classes and members that there are: the host's own, and what a bundle registered, read from its
// records.

#include <algorithm>
#include <iterator>
#include <limits>

#include "minihost/library/names.h"
#include "minihost/library/state.h"
#include "minihost/platform/memory.h"

namespace minihost {
namespace {

// What makes a record unreadable. Never passes through a bundle: registering catches it.
struct RecordError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Members that cannot be read, and why.
struct UnreadableMembers {
    std::vector<std::string> reasons;
};

void require(bool condition, const std::string& what) {
    if (!condition) throw RecordError(what);
}

void require_bytes(const void* bytes, size_t size, const std::string& what) {
    require(platform::is_readable(bytes, size), what + " that cannot be read");
}

// The text at an address, of which `what` is the name.
std::string text_at(const char* text, const std::string& what) {
    require(text, what + " is missing");
    const auto length = platform::readable_length(text);
    require(length.has_value(), what + " cannot be read");
    return {text, *length};
}

template <class Record>
std::vector<const Record*> records_of(const void* table, int32_t count, size_t stride) {
    const std::string what = "a table of " + std::to_string(count) + " records";
    require(count >= 0 && (table || count == 0), what);
    require(size_t(count) <= SIZE_MAX / stride, what + " that cannot be read");
    require_bytes(table, size_t(count) * stride, what);
    std::vector<const Record*> records;
    for (size_t i = 0; i < size_t(count); ++i) {
        records.push_back(reinterpret_cast<const Record*>(static_cast<const char*>(table) + i * stride));
    }
    return records;
}

// A member's parameters: the object, those of the declaration, and for a setter the value.
std::vector<Kind> kinds_of(const Declaration& declaration, const std::string& owner) {
    std::vector<Kind> kinds;
    if (!owner.empty()) kinds.push_back(Kind::Object);
    for (const Parameter& parameter : declaration.parameters) kinds.push_back(parameter.type.kind);
    return kinds;
}

// Reads only what both layouts have.
Method method_of(const REALmethodDefinition& record, const std::string& owner) {
    const std::string text = text_at(record.declaration, "a method's declaration");
    require(record.function, text + " has no function");
    Method method{.owner = owner,
                  .declaration = parse_declaration(text),
                  .function = reinterpret_cast<void*>(record.function),
                  .setter = reinterpret_cast<void*>(record.setter)};
    const Declaration& declaration = method.declaration;
    require(declaration.parameters.size() <= kMostParameters,
            declaration.name + " has more than " + std::to_string(kMostParameters) + " parameters");
    std::vector<Kind> kinds = kinds_of(declaration, owner);
    method.get = std::make_shared<NativeCall>(method.function, kinds, declaration.result.kind);
    if (!method.setter) return method;
    require(declaration.result.kind != Kind::Nothing, declaration.name + " has a setter and no type");
    kinds.push_back(declaration.result.kind);
    method.set = std::make_shared<NativeCall>(method.setter, kinds, Kind::Nothing);
    return method;
}

constexpr Kind kGetterParameters[] = {Kind::Object, Kind::Integer};

Property property_of(const REALproperty& record, const std::string& owner) {
    const std::string name = text_at(record.name, "a property's name");
    require(record.getter, name + " has no getter");
    Property property{.owner = owner,
                      .name = name,
                      .type = parse_type(text_at(record.type, name + "'s type")),
                      .getter = reinterpret_cast<void*>(record.getter)};
    property.get = std::make_shared<NativeCall>(property.getter, kGetterParameters, property.type.kind);
    return property;
}

// The layout's version word and size are checked before the rest is read.
void require_layout(const REALclassDefinition* record) {
    require(record, "there is no record");
    require_bytes(record, sizeof record->version, "a record");
    require(record->version >= kOldestLayout && record->version <= kNewestLayout,
            "its version word is " + std::to_string(record->version) + ", not " +
                std::to_string(kOldestLayout) + " to " + std::to_string(kNewestLayout));
    require_bytes(record, record->version == kOldestLayout ? kOlderClassSize : sizeof *record, "a record");
}

REALstring exception_message(REALobject exception, int32_t) {
    const Object* raised = Host::State::current->live(exception);
    const REALstring message = raised ? raised->message.get() : nullptr;
    if (message) retain(message);
    return message;
}

int32_t exception_number(REALobject exception, int32_t) {
    const Object* raised = Host::State::current->live(exception);
    return raised ? raised->error_number : 0;
}

}  // namespace

Host::State::State(Host& owner, Options given) : host(owner), options(std::move(given)) {
    const auto add = [&](const char* name, const Class* super) {
        Class& type = classes.emplace_back();
        type.name = name;
        type.super = super;
        type.instance_size = kObjectHeader;
        return &type;
    };
    memory_block = add("MemoryBlock", nullptr);
    folder_item = add("FolderItem", nullptr);
    Class* runtime_exception = add("RuntimeException", nullptr);
    const auto add_property = [&](const char* name, const char* declared_type, auto* getter) {
        REALproperty record = {};
        record.name = name;
        record.type = declared_type;
        record.getter = reinterpret_cast<void (*)()>(getter);
        runtime_exception->properties.push_back(property_of(record, runtime_exception->name));
    };
    add_property("Message", "String", exception_message);
    add_property("ErrorNumber", "Integer", exception_number);
    exception = runtime_exception;
    for (const char* name :
         {"NilObjectException", "UnsupportedOperationException", "OutOfMemoryException",
          "OutOfBoundsException", "TypeMismatchException", "IllegalCastException", "InvalidArgumentException",
          "KeyNotFoundException", "IOException", "StackOverflowException", "FunctionNotFoundException"}) {
        add(name, exception);
    }
}

Class* Host::State::find_class(std::string_view name) {
    for (Class& type : classes) {
        if (same_name(type.name, name)) return &type;
    }
    return nullptr;
}

const std::string* Host::State::registering() const {
    if (loading) return loading;
    return running ? running->callee().bundle : nullptr;
}

// While a bundle is loaded, its declarations may name classes that come later.
void Host::State::read(const char* subject, const std::function<void()>& read_record) {
    std::vector<std::string>& errors = loading ? load_errors : faults;
    const auto note = [&](const std::string& reason) {
        errors.push_back(std::string(subject) + ": " + reason);
    };
    try {
        read_record();
        if (!loading) resolve_types();
    } catch (const std::bad_alloc&) {
        errors.emplace_back("no memory for the records");
    } catch (const UnreadableMembers& members) {
        std::ranges::for_each(members.reasons, note);
    } catch (const std::exception& error) {
        note(error.what());
    }
}

// All of the members, or none.
void Host::State::read_members(Class& type, const REALclassDefinition& record) {
    const bool older = record.version == kOldestLayout;
    Class read;
    UnreadableMembers unreadable;
    const auto add = [&](auto& members, const auto& read_member) {
        try {
            members.push_back(read_member());
            members.back().bundle = registering();
        } catch (const RecordError& error) {
            unreadable.reasons.emplace_back(error.what());
        } catch (const std::invalid_argument& error) {
            unreadable.reasons.emplace_back(error.what());
        }
    };
    for (const auto* method : records_of<REALmethodDefinition>(
             record.methods, record.methodCount, older ? kOlderMethodSize : sizeof(REALmethodDefinition))) {
        add(read.methods, [&] { return method_of(*method, type.name); });
    }
    for (const auto* property : records_of<REALproperty>(record.properties, record.propertyCount,
                                                         older ? kOlderPropertySize : sizeof(REALproperty))) {
        add(read.properties, [&] { return property_of(*property, type.name); });
    }
    if (!unreadable.reasons.empty()) throw std::move(unreadable);
    std::ranges::move(read.methods, std::back_inserter(type.methods));
    std::ranges::move(read.properties, std::back_inserter(type.properties));
}

void Host::State::extend_class(REALclassDefinition* record) {
    read("an extension", [&] {
        require_layout(record);
        const std::string name = text_at(record->name, "its name");
        Class* type = find_class(name);
        require(type, "there is no class " + name);
        read_members(*type, *record);
        class_records.push_back(record);
    });
}

void Host::State::register_class(REALclassDefinition* record) {
    read("a class", [&] {
        require_layout(record);
        Class type;
        type.name = text_at(record->name, "its name");
        type.record = record;
        type.bundle = registering();
        require(!find_class(type.name), type.name + " is there already");
        const std::string super = record->super ? text_at(record->super, "its superclass") : "";
        if (!super.empty()) {
            type.super = find_class(super);
            require(type.super, type.name + "'s superclass " + super + " is not there");
        }
        require(record->instanceDataSize >= 0, type.name + " has a negative instance data size");
        const size_t offset = round_up(type.super ? type.super->instance_size : kObjectHeader);
        const auto size = size_t(record->instanceDataSize);
        require(offset <= size_t(std::numeric_limits<int32_t>::max()) - size,
                type.name + " and its superclasses have more instance data than 32 bits can count");
        type.instance_size = offset + size;
        read_members(type, *record);
        record->systemWord = int32_t(offset);
        classes.push_back(std::move(type));
        class_records.push_back(record);
    });
}

void Host::State::register_global(REALmethodDefinition* record) {
    read("a global method", [&] {
        require(record, "there is no record");
        require_bytes(record, kOlderMethodSize, "a record");
        Method method = method_of(*record, "");
        method.bundle = registering();
        globals.push_back(std::move(method));
        global_records.push_back(record);
    });
}

void Host::State::resolve_types() {
    const auto resolve = [&](Type& type, const std::string& member) {
        if (type.kind != Kind::Object) return;
        const Class* known = find_class(type.class_name);
        require(known, member + " names the unknown type " + type.class_name);
        type.class_name = known->name;
    };
    const auto resolve_method = [&](Method& method) {
        for (Parameter& parameter : method.declaration.parameters) {
            resolve(parameter.type, method.declaration.name);
        }
        resolve(method.declaration.result, method.declaration.name);
    };
    for (Class& type : classes) {
        for (Method& method : type.methods) resolve_method(method);
        for (Property& property : type.properties) resolve(property.type, property.name);
    }
    for (Method& method : globals) resolve_method(method);
}

}  // namespace minihost
