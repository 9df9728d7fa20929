// The classes and members that there are: the host's own, and what a bundle registered, read from its
// records.

#include "minihost/library/names.h"
#include "minihost/library/state.h"

namespace minihost {
namespace {

constexpr int32_t kOlderLayout = 9;
constexpr int32_t kNewestLayout = 12;

// What makes a record unreadable. Never passes through a bundle: registering catches it.
struct RecordError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

void require(bool condition, const std::string& what) {
    if (!condition) throw RecordError(what);
}

template <class Record>
std::vector<const Record*> records_of(const void* table, int32_t count, size_t stride) {
    require(count >= 0 && (table || count == 0), "a table of " + std::to_string(count) + " records");
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
    require(record.declaration, "a method without a declaration");
    require(record.function, std::string(record.declaration) + " has no function");
    Method method{.owner = owner,
                  .declaration = parse_declaration(record.declaration),
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
    require(record.name && record.type, "a property without a name or a type");
    require(record.getter, std::string(record.name) + " has no getter");
    Property property{.owner = owner,
                      .name = record.name,
                      .type = parse_type(record.type),
                      .getter = reinterpret_cast<void*>(record.getter)};
    property.get = std::make_shared<NativeCall>(property.getter, kGetterParameters, property.type.kind);
    return property;
}

// Runs what reads a record; what it throws becomes the load's error, unless there is one already.
template <class Read>
void guarded(std::string& load_error, const std::string& subject, Read read) {
    std::string error;
    try {
        read();
    } catch (const std::exception& e) {
        error = subject + ": " + e.what();
    }
    if (load_error.empty()) load_error = error;
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
        classes.push_back({.name = name, .super = super, .record = nullptr, .methods = {}, .properties = {}});
        return &classes.back();
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

void Host::State::read_members(Class& type, const REALclassDefinition& record) {
    require(record.version >= kOlderLayout && record.version <= kNewestLayout,
            "its version word is " + std::to_string(record.version) + ", not 9 to 12");
    const bool older = record.version == kOlderLayout;
    for (const auto* method : records_of<REALmethodDefinition>(
             record.methods, record.methodCount, older ? kOlderMethodSize : sizeof(REALmethodDefinition))) {
        type.methods.push_back(method_of(*method, type.name));
    }
    for (const auto* property : records_of<REALproperty>(record.properties, record.propertyCount,
                                                         older ? kOlderPropertySize : sizeof(REALproperty))) {
        type.properties.push_back(property_of(*property, type.name));
    }
}

void Host::State::extend_class(REALclassDefinition* record) {
    guarded(load_error, "an extension", [&] {
        require(record && record->name, "there is no record or no name");
        class_records.push_back(record);
        Class* type = find_class(record->name);
        require(type, "there is no class " + std::string(record->name));
        read_members(*type, *record);
    });
}

void Host::State::register_class(REALclassDefinition* record) {
    guarded(load_error, "a class", [&] {
        require(record && record->name, "there is no record or no name");
        class_records.push_back(record);
        const std::string name = record->name;
        require(!find_class(name), name + " is there already");
        require(record->instanceDataSize >= 0, name + " has a negative instance data size");
        Class type{.name = name, .super = nullptr, .record = record, .methods = {}, .properties = {}};
        if (record->super && *record->super) {
            type.super = find_class(record->super);
            require(type.super, name + "'s superclass " + record->super + " is not there");
        }
        read_members(type, *record);
        record->systemWord = int32_t(instance_size(type.super));
        classes.push_back(std::move(type));
    });
}

void Host::State::register_global(REALmethodDefinition* record) {
    guarded(load_error, "a global method", [&] {
        require(record, "there is no record");
        global_records.push_back(record);
        globals.push_back(method_of(*record, ""));
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
    guarded(load_error, "a declaration", [&] {
        for (Class& type : classes) {
            for (Method& method : type.methods) resolve_method(method);
            for (Property& property : type.properties) resolve(property.type, property.name);
        }
        for (Method& method : globals) resolve_method(method);
    });
}

}  // namespace minihost
