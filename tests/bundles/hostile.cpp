// A bundle that does what no bundle may do. What its entry point does is said by the environment variable
// HOSTILE, and what its members do by their names.
#include <cstdlib>
#include <deque>
#include <stdexcept>
#include <string_view>

#include "plugin/records.h"

namespace {

void* (*resolver)(const char* key);

template <class Signature>
Signature* operation(const char* key) {
    return reinterpret_cast<Signature*>(resolver(key));
}

void crash() {
    volatile int* volatile nowhere = nullptr;  // the compiler is not to know
    *nowhere = 1;
}

int overflow(int depth) {
    volatile char frame[4096] = {};
    return depth == 0 ? frame[0] : overflow(depth + 1) + frame[1];
}
void overflow_stack() { overflow(1); }

void throw_number() { throw 5; }
void throw_error() { throw std::runtime_error("no way"); }

void ignore(REALobject) {}
void crash_object(REALobject) { crash(); }
void throw_object(REALobject) { throw_error(); }

// While the same global method is being called.
int32_t register_globals(int32_t count) {
    static REALmethodDefinition late[1000];
    for (int32_t i = 0; i < count && i < 1000; ++i) {
        late[i] = {reinterpret_cast<void (*)()>(throw_number), nullptr, "Late", 4, nullptr, 0};
        operation<void(REALmethodDefinition*)>("PluginRegisterMethod")(&late[i]);
    }
    return count;
}

void extend_unknown() {
    static REALclassDefinition extension = {};
    extension.version = 12;
    extension.name = "Nowhere";
    operation<void(REALclassDefinition*)>("PluginRegisterClassExtension")(&extension);
}

void add_global(const char* declaration, void (*function)()) {
    static std::deque<REALmethodDefinition> records;
    records.push_back({function, nullptr, declaration, 4, nullptr, 0});
    operation<void(REALmethodDefinition*)>("PluginRegisterMethod")(&records.back());
}

void add_class(const char* name, void (*constructor)(REALobject), void (*destructor)(REALobject)) {
    static std::deque<REALclassDefinition> records;
    REALclassDefinition& record = records.emplace_back();
    record.version = 12;
    record.name = name;
    record.instanceDataSize = 8;
    record.constructor = constructor;
    record.destructor = destructor;
    operation<void(REALclassDefinition*)>("PluginRegisterClass")(&record);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void REALPluginMain(void* (*given)(const char* key)) {
    resolver = given;
    const char* wish = std::getenv("HOSTILE");
    const std::string_view mood = wish ? wish : "";
    if (mood == "crash") crash();
    if (mood == "throw") throw_number();
    add_global("Crash", crash);
    add_global("Abort", std::abort);
    add_global("OverflowStack", overflow_stack);
    add_global("ThrowNumber", throw_number);
    add_global("ThrowError", throw_error);
    add_global("RegisterGlobals(count as Integer) as Integer",
               reinterpret_cast<void (*)()>(register_globals));
    add_global("ExtendUnknown", extend_unknown);
    add_class("CrashAtBirth", crash_object, ignore);
    add_class("CrashAtDeath", ignore, crash_object);
    add_class("ThrowAtBirth", throw_object, ignore);
    add_class("ThrowAtDeath", ignore, throw_object);
}
