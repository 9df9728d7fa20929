// What a running Host holds: the live objects and strings, the classes and members, and the accounts of what
// the bundle did. The host operations and the Host's own functions work on it.
#pragma once

#include <cstdlib>
#include <deque>
#include <unordered_map>
#include <unordered_set>

#include "minihost/library/host.h"
#include "minihost/library/native_call.h"

namespace minihost {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
using Memory = std::unique_ptr<void, Free>;

// An object's handle is the address of `instance`. What only blocks, folder items or exceptions have is
// empty in the others.
struct Object {
    const Class* type = nullptr;
    int32_t references = 1;
    uint64_t serial = 0;
    bool ends = false;  // its destructors run
    Memory instance;
    void* data = nullptr;  // a block's bytes
    int32_t size = 0;      // as the block reports it
    Memory owned;          // the bytes, of a block that owns them
    std::filesystem::path path;
    StringRef message;
    int32_t error_number = 0;
};

// A string's handle is the address of `record`.
struct String {
    std::string bytes;
    uint32_t encoding = kTextEncodingUnknown;
    int32_t references = 1;
    Memory record;
    std::string buffer;  // what the record of an older host points to
};

// What of a bundle is called: "the constructor of " and "Base", or "" and a member's name.
struct Callee {
    const std::string* bundle;  // nil for the host's own
    const char* part;
    const std::string* name;
};

// A call into a bundle, while it lasts.
class Running {
 public:
    Running(Host::State& state, const Callee& callee);
    ~Running();
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    const Callee& callee() const { return callee_; }

 private:
    Host::State& state_;
    const Running* outer_;
    Callee callee_;
};

class Host::State {
 public:
    State(Host& host, Options options);

    static inline State* current = nullptr;  // nil while no Host lives

    // Objects and strings (heap.cpp). A new one carries one reference; nil when there is no memory.
    // `by` names the operation in which a fault is found.
    REALobject add_object(const Class& type);
    REALobject add_instance(const Class& type);  // the same, and its constructors called; BundleError
    REALobject add_block(int32_t size);
    REALobject add_view(void* data, int32_t reported_size);
    REALstring add_string(std::string_view bytes, uint32_t encoding);
    Object* live(REALobject object);  // nil when there is no such object
    String* live(REALstring string);
    // The same for a handle that came from the bundle: one that is not live, or no `type`, is a fault.
    Object* checked(const char* by, REALobject object, const Class* type = nullptr);
    String* checked(const char* by, REALstring string);
    void lock(const char* by, REALobject object);
    void unlock(const char* by, REALobject object);
    void lock(const char* by, REALstring string);
    void unlock(const char* by, REALstring string);
    void fault(const char* by, const std::string& what);
    std::optional<std::string> text_of(const String& string, uint32_t encoding) const;

    // Classes and members (registry.cpp). What cannot be read is put down in `load_errors`, and as a fault
    // when no bundle is being loaded.
    Class* find_class(std::string_view name);
    void register_class(REALclassDefinition* record);
    void extend_class(REALclassDefinition* record);
    void register_global(REALmethodDefinition* record);
    // Gives class names in declarations their registered spelling, once all classes are there.
    void resolve_types();

    // Files (folder_items.cpp)
    REALobject add_folder_item(const std::filesystem::path& path);
    FSSpec spec_of(const std::filesystem::path& path);
    std::optional<std::filesystem::path> path_of(const FSSpec& spec) const;

    // The resolver (operations.cpp)
    void* resolve(std::string_view key);
    // Not when the bundle finds no such operation, or not at once: then it frees the data itself.
    bool disposes_of_string_data() const;

    // Calls (members.cpp). Throws the host exception that the bundle raised in the call.
    Value call(const Callee& callee, const NativeCall& function, Words& arguments, const Type& result);
    void throw_raised();
    // Runs what calls a bundle. Throws BundleError for what that throws.
    template <class Run>
    auto enter(const Callee& callee, Run run);
    // The entry point of a bundle, and what it leaves to do. Throws LoadError.
    void load(const std::string& bundle, const std::function<void()>& entry);

    Host& host;
    Options options;
    std::optional<int32_t> announced;
    std::vector<REALclassDefinition*> class_records;
    std::vector<REALmethodDefinition*> global_records;
    std::deque<Class> classes;
    std::deque<Method> globals;
    const Class* memory_block = nullptr;
    const Class* folder_item = nullptr;
    const Class* exception = nullptr;
    std::vector<std::string> load_errors;
    std::set<std::string, std::less<>> requested;

    std::unordered_map<const void*, Object> objects;
    std::unordered_map<const void*, String> strings;
    std::unordered_set<void*> string_data;  // handed out and not yet disposed of
    std::deque<Memory> retired;             // handles that must not come back too soon
    std::vector<std::string> faults;

    uint64_t last_serial = 0;
    std::deque<std::string> bundles;       // that were loaded, as they were named
    const std::string* loading = nullptr;  // the bundle whose entry point runs
    const Running* running = nullptr;      // the innermost call
    ObjectRef raised;                      // in the running call

    std::vector<std::filesystem::path> directories;  // by their id in file specifications

 private:
    void run_constructors(REALobject object, const Class* type);
    void run_destructors(const char* by, REALobject object, const Class* type);
    void retire(Memory handle);
    void read(const char* subject, const std::function<void()>& read_record);
    void read_members(Class& type, const REALclassDefinition& record);
    const std::string* registering() const;  // the bundle
};

inline Running::Running(Host::State& state, const Callee& callee)
    : state_(state), outer_(state.running), callee_(callee) {
    state_.running = this;
}

inline Running::~Running() { state_.running = outer_; }

std::string described(const Callee& callee);

template <class Run>
auto Host::State::enter(const Callee& callee, Run run) {
    const Running call(*this, callee);
    try {
        return run();
    } catch (const std::exception& error) {
        raised = {};
        throw BundleError(described(callee) + " threw a C++ exception: " + error.what());
    } catch (...) {
        raised = {};
        throw BundleError(described(callee) + " threw a C++ exception of an unknown type");
    }
}

// True for the class itself and for what is below it.
bool is_a(const Class* type, const Class* super);

constexpr size_t kObjectHeader = 32;  // bytes in front of the first instance data

size_t round_up(size_t size);  // to where instance data may begin

Memory zeroed_memory(size_t size);

// A file's entry point in a fresh image. Throws LoadError. The image stays: the host never unloads a bundle.
using EntryPoint = void (*)(void* (*resolver)(const char* key));
EntryPoint open_bundle(const std::filesystem::path& bundle);

}  // namespace minihost
