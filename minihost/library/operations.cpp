// The host operations: what a bundle gets from the resolver. They are named by their keys. A nil string is
// the empty string to those that only read it; a nil object is a fault, except as a folder item to write
// down. Nothing is thrown into a bundle: where there is no memory, the answer is nil or 0.
#include <algorithm>
#include <array>
#include <cstring>
#include <new>

#include "minihost/library/names.h"
#include "minihost/library/state.h"

namespace minihost {
namespace {

Host::State& state() { return *Host::State::current; }

// A string that is fixed at compile time.
template <size_t Size>
struct Key {
    char text[Size];
    consteval Key(const char (&given)[Size]) { std::copy_n(given, Size, text); }
};

template <class Argument>
OperationValue operand(Argument argument) {
    if constexpr (std::is_same_v<Argument, const char*> || !std::is_integral_v<Argument>) {
        return argument;
    } else {
        return std::conditional_t<std::is_signed_v<Argument>, int32_t, uint32_t>(argument);
    }
}

// An operation as a bundle gets it.
template <Key Name, auto Function, class Signature = decltype(Function)>
struct Outer;

template <Key Name, auto Function, class Result, class... Arguments>
struct Outer<Name, Function, Result (*)(Arguments...)> {
    static Result call(Arguments... arguments) noexcept {
        if (!Host::State::current) return Result();  // the host is gone, the bundle is not
        try {
            try {
                return traced(arguments...);
            } catch (const std::bad_alloc&) {
            } catch (const std::exception& error) {
                state().fault(Name.text, error.what());
            }
        } catch (...) {  // no memory to write a fault down
        }
        return Result();
    }

 private:
    static Result traced(Arguments... arguments) {
        const auto& trace = state().options.trace;
        if (!trace) return Function(arguments...);
        const std::array<OperationValue, sizeof...(arguments)> operands{operand(arguments)...};
        if constexpr (std::is_void_v<Result>) {
            Function(arguments...);
            trace({Name.text, operands, {}});
        } else {
            const Result result = Function(arguments...);
            trace({Name.text, operands, operand(result)});
            return result;
        }
    }
};

void RegisterPluginVersion(int32_t version) { state().announced = version; }
double REALGetRBVersion() { return state().options.version.value_or(0); }

void PluginRegisterClassExtension(REALclassDefinition* record) { state().extend_class(record); }
void PluginRegisterClass(REALclassDefinition* record) { state().register_class(record); }
void PluginRegisterMethod(REALmethodDefinition* record) { state().register_global(record); }

// Blocks

void* memoryBlockGetPtr(REALobject block) {
    const Object* object = state().checked(__func__, block, state().memory_block);
    return object ? object->data : nullptr;
}

int32_t memoryBlockGetSize(REALobject block) {
    const Object* object = state().checked(__func__, block, state().memory_block);
    return object ? object->size : 0;
}

REALobject newMemoryBlock(int32_t size) { return state().add_block(size); }
REALobject PtrToMemoryBlock(void* data) { return state().add_view(data, 0); }

// References

void REALLockObject(REALobject object) { state().lock(__func__, object); }
void REALUnlockObject(REALobject object) { state().unlock(__func__, object); }
void REALLockString(REALstring string) { state().lock(__func__, string); }
void REALUnlockString(REALstring string) { state().unlock(__func__, string); }

// Strings

REALstring REALBuildString(const void* bytes, int32_t count) {
    if (count < 0 || (count > 0 && !bytes)) {
        state().fault(__func__, "there are no " + std::to_string(count) + " bytes to take");
        return nullptr;
    }
    return state().add_string({static_cast<const char*>(bytes), size_t(count)}, kTextEncodingUnknown);
}

void REALSetStringEncoding(REALstring string, uint32_t encoding) {
    if (String* text = state().checked(__func__, string)) text->encoding = encoding;
}

uint32_t REALGetStringEncoding(REALstring string) {
    const String* text = string ? state().checked(__func__, string) : nullptr;
    return text ? text->encoding : kTextEncodingUnknown;
}

REALstring REALConvertString(REALstring string, uint32_t encoding) {
    const String* text = string ? state().checked(__func__, string) : nullptr;
    const auto converted = text ? state().text_of(*text, encoding) : std::nullopt;
    return converted ? state().add_string(*converted, encoding) : nullptr;
}

const char* StringGetCString(REALstring string) {
    const String* text = string ? state().checked(__func__, string) : nullptr;
    return text ? text->bytes.c_str() : "";
}

// Four zero bytes follow the text: a terminator in every encoding.
REALboolean PluginGetStringData(REALstring string, uint32_t encoding, REALstringData* record) {
    const String* text = string ? state().checked(__func__, string) : nullptr;
    const auto bytes = text ? state().text_of(*text, encoding) : std::nullopt;
    if (!record) state().fault(__func__, "there is no record");
    if (!bytes || !record || !std::in_range<int32_t>(bytes->size())) return 0;
    Memory data = zeroed_memory(bytes->size() + 4);
    if (!data) return 0;
    std::memcpy(data.get(), bytes->data(), bytes->size());
    if (state().disposes_of_string_data()) state().string_data.insert(data.get());
    *record = {data.release(), int32_t(bytes->size()), encoding};
    return 1;
}

void PluginDisposeStringData(REALstringData* record) {
    if (!record) return state().fault(__func__, "there is no record");
    if (state().disposes_of_string_data() && state().string_data.erase(record->data) == 0) {
        return state().fault(__func__, "the string data is none, or disposed of already");
    }
    std::free(record->data);
}

int32_t LenB(REALstring string) {
    const String* text = string ? state().checked(__func__, string) : nullptr;
    return text ? int32_t(text->bytes.size()) : 0;
}

// A function of the host language by its prototype, however that is written.
void* REALLoadGlobalMethod(void*, const char* prototype) {
    try {
        const Declaration wanted = parse_declaration(prototype ? prototype : "");
        const bool takes_string =
            wanted.parameters.size() == 1 && wanted.parameters[0].type.kind == Kind::String;
        if (same_name(wanted.name, "LenB") && takes_string && wanted.result.kind == Kind::Integer) {
            return reinterpret_cast<void*>(Outer<"LenB", LenB>::call);
        }
    } catch (const std::invalid_argument&) {  // no prototype, so there is no such function
    }
    return nullptr;
}

// Exceptions

REALobject PluginNewInstance(const char* class_name) {
    const Class* type = class_name ? state().find_class(class_name) : nullptr;
    return type ? state().add_instance(*type) : nullptr;
}

// The object, if it is an exception and the property is the one that is set here.
Object* settable(const char* by, REALobject object, const char* name, const char* property) {
    Object* exception = state().checked(by, object, state().exception);
    if (!exception || (name && same_name(name, property))) return exception;
    state().fault(by, "there is no such property \"" + std::string(name ? name : "") + "\"");
    return nullptr;
}

void REALSetPropValueString(REALobject object, const char* name, REALstring value) {
    Object* exception = settable(__func__, object, name, "Message");
    if (!exception || (value && !state().checked(__func__, value))) return;
    exception->message = StringRef::share(value);
}

void REALSetPropValueInt(REALobject object, const char* name, int32_t value) {
    if (Object* exception = settable(__func__, object, name, "ErrorNumber")) exception->error_number = value;
}

void RuntimeRaiseException(REALobject object) {
    if (!state().checked(__func__, object, state().exception)) return;
    if (!state().running || state().loading) return state().fault(__func__, "nothing is being called");
    if (state().raised) return state().fault(__func__, "the call has raised an exception already");
    state().raised = ObjectRef::share(object);
}

// Files

REALobject FolderItemFromFSSpec(const FSSpec* spec) {
    const auto path = spec ? state().path_of(*spec) : std::nullopt;
    return path ? state().add_folder_item(*path) : nullptr;
}

// Zeros, which are no file specification, for no folder item.
void REALFSSpecFromFolderItem(FSSpec* spec, REALobject item) {
    if (!spec) return state().fault(__func__, "there is no record");
    const Object* object = item ? state().checked(__func__, item, state().folder_item) : nullptr;
    *spec = object ? state().spec_of(object->path) : FSSpec{};
}

struct Operation {
    std::string_view key;
    void* function;
};

template <Key Name, auto Function>
Operation operation() {
    return {Name.text, reinterpret_cast<void*>(Outer<Name, Function>::call)};
}

const Operation kOperations[] = {
    operation<"RegisterPluginVersion", RegisterPluginVersion>(),
    operation<"REALGetRBVersion", REALGetRBVersion>(),
    operation<"PluginRegisterClassExtension", PluginRegisterClassExtension>(),
    operation<"PluginRegisterClass", PluginRegisterClass>(),
    operation<"PluginRegisterMethod", PluginRegisterMethod>(),
    operation<"memoryBlockGetPtr", memoryBlockGetPtr>(),
    operation<"memoryBlockGetSize", memoryBlockGetSize>(),
    operation<"newMemoryBlock", newMemoryBlock>(),
    operation<"PtrToMemoryBlock", PtrToMemoryBlock>(),
    operation<"REALLockObject", REALLockObject>(),
    operation<"REALUnlockObject", REALUnlockObject>(),
    operation<"REALLockString", REALLockString>(),
    operation<"REALUnlockString", REALUnlockString>(),
    operation<"REALBuildString", REALBuildString>(),
    operation<"REALSetStringEncoding", REALSetStringEncoding>(),
    operation<"REALGetStringEncoding", REALGetStringEncoding>(),
    operation<"REALConvertString", REALConvertString>(),
    operation<"StringGetCString", StringGetCString>(),
    operation<"PluginGetStringData", PluginGetStringData>(),
    operation<"PluginDisposeStringData", PluginDisposeStringData>(),
    operation<"REALLoadGlobalMethod", REALLoadGlobalMethod>(),
    operation<"PluginNewInstance", PluginNewInstance>(),
    operation<"REALSetPropValueString", REALSetPropValueString>(),
    operation<"REALSetPropValueInt", REALSetPropValueInt>(),
    operation<"RuntimeRaiseException", RuntimeRaiseException>(),
    operation<"FolderItemFromFSSpec", FolderItemFromFSSpec>(),
    operation<"REALFSSpecFromFolderItem", REALFSSpecFromFolderItem>(),
};

const Operation* find_operation(std::string_view key) {
    return std::ranges::find(kOperations, key, &Operation::key);
}

}  // namespace

bool Host::State::disposes_of_string_data() const {
    constexpr std::string_view kKey = "PluginDisposeStringData";
    return !options.without.contains(kKey) && !options.late.contains(kKey);
}

void* Host::State::resolve(std::string_view key) {
    const bool first = requested.emplace(key).second;
    if (options.without.contains(key) || (first && options.late.contains(key))) return nullptr;
    if (const auto replaced = options.replace.find(key); replaced != options.replace.end())
        return replaced->second;
    if (key == "REALGetRBVersion" && !options.version) return nullptr;
    const auto* found = find_operation(key);
    return found == std::end(kOperations) ? nullptr : found->function;
}

std::vector<std::string> Host::keys() {
    std::vector<std::string> keys;
    for (const Operation& operation : kOperations) keys.emplace_back(operation.key);
    return keys;
}

}  // namespace minihost
