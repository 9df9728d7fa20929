// A host for the plug-in: it loads a bundle, answers the keys that the bundle asks for, and calls
// what the bundle registered. It knows no member by name; everything that it calls, it has read from
// the registered records.
//
// The host operations are plain C functions without a context, so one Host lives at a time. Every
// Host works on a fresh image of its bundle: what an earlier one left in the bundle's static data does
// not show.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "minihost/library/declaration.h"
#include "minihost/library/value.h"
#include "plugin/records.h"

namespace minihost {

// One argument or result of a host operation; text ends with a zero byte, or is nil.
using OperationValue = std::variant<std::monostate, int32_t, uint32_t, double, const char*, const void*>;

// A call of a host operation, after it has returned. The monostate stands for no result.
struct OperationCall {
    std::string_view key;
    std::span<const OperationValue> arguments;
    OperationValue result;
};

struct Options {
    // What "REALGetRBVersion" returns; without a value the host has no such function.
    std::optional<double> version = 2013.04;
    // Keys that the resolver does not know.
    std::set<std::string, std::less<>> without = {};
    // Keys that the resolver knows only from the second request on.
    std::set<std::string, std::less<>> late = {};
    // Functions that the resolver hands out in place of the host's own, by key.
    std::map<std::string, void*, std::less<>> replace = {};
    // Sees each call of a host operation of the host's own.
    std::function<void(const OperationCall&)> trace = {};
};

class NativeCall;

// A method as registered. `owner` is the class that it belongs to, empty for a global method.
struct Method {
    std::string owner;
    Declaration declaration;
    void* function = nullptr;
    void* setter = nullptr;  // nil unless the member can be assigned
    std::shared_ptr<const NativeCall> get = nullptr;
    std::shared_ptr<const NativeCall> set = nullptr;
    const std::string* bundle = nullptr;  // that registered it, here and below nil for the host's own
};

struct Property {
    std::string owner;
    std::string name;
    Type type;
    void* getter = nullptr;
    std::shared_ptr<const NativeCall> get = nullptr;
    const std::string* bundle = nullptr;
};

// A class that can have members and instances: the host's own and those that a bundle registered.
struct Class {
    std::string name;
    const Class* super = nullptr;
    REALclassDefinition* record = nullptr;  // nil for the host's own classes
    size_t instance_size = 0;               // bytes, up to and with the instance data
    const std::string* bundle = nullptr;
    std::deque<Method> methods;  // in registered order
    std::deque<Property> properties;
};

// The bundle cannot be loaded; the text says why.
struct LoadError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A bundle's function let a C++ exception through; the text says which.
struct BundleError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A call that does not fit any declaration; the text says what was expected and what was found.
struct CallError : std::runtime_error {
    explicit CallError(const std::string& text, std::optional<size_t> misfit = {})
        : std::runtime_error(text), argument(misfit) {}
    std::optional<size_t> argument;  // the index of the one that does not fit, where it is one
};

// What it says of an argument: "FillBytesZOR takes count as Integer, got Int64 5000000000".
std::string misfit_text(const std::string& name, const Parameter& parameter, const Value& found);

// A host exception that reached the caller. `what()` reads "NilObjectException: memoryblock is nil".
struct HostException : std::runtime_error {
    explicit HostException(ObjectRef exception);
    ObjectRef object;
    std::string class_name;
    std::string message;
    uint32_t message_encoding = kTextEncodingUnknown;
    int32_t error_number = 0;
};

class Host {
 public:
    explicit Host(Options options = {});
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    static Host& current();                  // the Host that lives now
    static void forget();                    // it was abandoned, as by a thread that has been ended
    static std::vector<std::string> keys();  // that the host knows unless the options say otherwise

    // Loads a bundle and calls its entry point. Throws LoadError for a file that is no bundle, lacks
    // the entry point, or registers records that the host cannot read.
    void load(const std::filesystem::path& bundle);
    // All records and declarations of the last bundle that could not be read; LoadError tells the first.
    const std::vector<std::string>& load_errors() const;

    // What there is to call

    const Options& options() const;
    // The keys that bundles have asked for so far, known or not.
    const std::set<std::string, std::less<>>& requested_keys() const;
    // The word that the bundle announced, or nothing if it announced none.
    std::optional<int32_t> announced_version() const;
    // The class records and the global methods' records as the bundle handed them over, in order.
    std::span<REALclassDefinition* const> registered_classes() const;
    std::span<REALmethodDefinition* const> registered_globals() const;
    // All classes, the host's own first. Names are found in any capitalisation.
    std::vector<const Class*> classes() const;
    const Class* find_class(std::string_view name) const;
    const std::deque<Method>& globals() const;
    // The overloads of a class, and of its superclasses where it does not override them.
    std::vector<const Method*> find_methods(const Class& type, std::string_view name) const;
    const Property* find_property(const Class& type, std::string_view name) const;

    // Calls. The arguments are converted to the declared types where that loses nothing; missing
    // ones take their defaults. Throws CallError for a call that does not fit the declaration,
    // HostException for a host exception that the member raised, and BundleError for a C++ exception.

    // The members that were found before, and stay where they are. `self` may be nil, and is not used for
    // global methods.
    Value call(const Method& method, REALobject self, std::span<const Value> arguments = {});
    void assign(const Method& method, REALobject self, std::span<const Value> arguments, const Value& value);
    Value get(const Property& property, REALobject self);

    // By name; the types of the arguments choose between overloads (see overloads.h).
    Value call(REALobject self, std::string_view name, std::span<const Value> arguments = {});
    Value call_global(std::string_view name, std::span<const Value> arguments = {});
    void assign(REALobject self, std::string_view name, std::span<const Value> arguments, const Value& value);
    Value get(REALobject self, std::string_view property);
    // The same on a nil object of the given class: for members that must stand a nil block.
    Value call_on_nil(std::string_view class_name, std::string_view name,
                      std::span<const Value> arguments = {});
    void assign_on_nil(std::string_view class_name, std::string_view name, std::span<const Value> arguments,
                       const Value& value);
    Value get_on_nil(std::string_view class_name, std::string_view property);
    // Throws a host exception of the given class, with a message in UTF-8, as the host's own functions do.
    [[noreturn]] void raise(std::string_view class_name, std::string_view message);

    // Objects

    const Class& class_of(REALobject object) const;
    bool is_a(REALobject object, std::string_view class_name) const;
    // A new instance with zeroed instance data, its constructor called; nil for an unknown class, or without
    // memory.
    ObjectRef new_instance(std::string_view class_name);
    // A block that owns `size` zeroed bytes; nil when it cannot be made.
    ObjectRef new_block(int32_t size);
    ObjectRef new_block(std::string_view bytes);
    // A block over memory that it does not own, reporting any size: 0 (the default, unknown), a
    // negative one, or more than there is.
    ObjectRef new_view(void* data, int32_t reported_size = 0);
    ObjectRef new_folder_item(const std::filesystem::path& path);
    std::filesystem::path path_of(REALobject folder_item) const;
    void* block_data(REALobject block) const;
    int32_t block_size(REALobject block) const;

    // Strings

    StringRef new_string(std::string_view bytes, uint32_t encoding);
    std::string_view bytes_of(REALstring string) const;
    uint32_t encoding_of(REALstring string) const;
    // The text in another encoding; nothing when it has no form there.
    std::optional<std::string> text_of(REALstring string, uint32_t encoding) const;

    // The accounts

    // References taken and not given back, one line for each object or string.
    std::vector<std::string> open_references() const;
    // The number of an object, which no other object of this host ever had or gets.
    uint64_t serial_of(REALobject object) const;
    // References to one object or string, for tests that follow them.
    int32_t references(const void* handle) const;
    // What the bundle did that no bundle may do: a handle that is not live given to a host operation, a
    // reference given back too often, string data disposed of twice, records registered after loading that
    // cannot be read. Should be empty.
    const std::vector<std::string>& faults() const;

    class State;
    State& state();  // for the host operations

 private:
    std::unique_ptr<State> state_;
};

// Encoding numbers by name ("UTF-8", "MacRoman", "US-ASCII", ...), in any capitalisation; "" for unknown.
std::optional<uint32_t> encoding_number(std::string_view name);
std::string encoding_name(uint32_t encoding);

}  // namespace minihost
