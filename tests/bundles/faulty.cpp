// A bundle of a few members that does all that a bundle should, but for the one fault that the environment
// variable FAULT names.
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include "plugin/records.h"

namespace {

void* (*resolver)(const char* key);
std::string_view fault;
double host_version;
bool was_late;

bool has(const char* name) { return fault == name; }

template <class Result, class... Arguments>
Result ask(const char* key, Arguments... arguments) {
    const auto found = reinterpret_cast<Result (*)(Arguments...)>(resolver(key));
    return found ? found(arguments...) : Result();
}

void crash() { *static_cast<volatile int*>(nullptr) = 1; }
void wait_for_ever() {
    for (volatile bool forever = true; forever;) {
    }
}

// The sum of the bytes of a range that is cut at the block's end.
int32_t sum(REALmemoryBlock block, int32_t offset, int32_t count) {
    if (has("crash") && offset < 0) crash();
    if (has("hang") && count < 0) wait_for_ever();
    if (has("exception") && !block) throw std::runtime_error("no block");
    if (has("end") && count < 0) std::exit(3);
    if (has("old hosts") && host_version > 0 && host_version < 2012) crash();
    if (has("late") && was_late) crash();
    if (!block || offset < 0 || count < 0) return -1;
    const auto* bytes = ask<uint8_t*>("memoryBlockGetPtr", block);
    const int32_t size = ask<int32_t>("memoryBlockGetSize", block);
    const int32_t past_end = has("read behind") && size > 0 ? 1 : 0;
    int32_t total = 0;
    for (int64_t i = offset; bytes && i < int64_t(offset) + count && i < size + past_end; ++i)
        total += bytes[i];
    static int32_t calls = 0;
    if (has("repeat")) total += ++calls;
    return total;
}

void clear(REALmemoryBlock block) {
    if (!block) return;
    auto* bytes = ask<uint8_t*>("memoryBlockGetPtr", block);
    const int32_t size = ask<int32_t>("memoryBlockGetSize", block);
    if (!bytes || size <= 0) return;
    std::memset(bytes, 0, size_t(size));
    if (has("write in front")) bytes[-1] = 0;
    if (has("write behind")) bytes[size] = 0;
    if (has("lock")) ask<void>("REALLockObject", static_cast<REALobject>(block));
    if (has("unlock")) ask<void>("REALUnlockObject", static_cast<REALobject>(block));
}

REALmemoryBlock eight() {
    const auto block = ask<REALmemoryBlock>("newMemoryBlock", int32_t{8});
    if (has("missing") && !resolver("REALLockObject")) crash();
    if (has("failing") && !block && resolver("newMemoryBlock")) crash();
    if (!block) return nullptr;
    auto* bytes = ask<uint8_t*>("memoryBlockGetPtr", block);
    if (has("failing") && !bytes) crash();
    if (bytes) *bytes = 8;
    return block;
}

void construct(REALobject) {
    if (has("constructor")) crash();
}
void destruct(REALobject) {
    if (has("destructor")) throw std::runtime_error("never dies");
}

template <class Function>
REALmethodDefinition method(const char* declaration, Function* function) {
    return {reinterpret_cast<void (*)()>(function), nullptr, declaration, 4, nullptr, 0};
}

REALmethodDefinition sum_record = method("Sum(offset as Integer, count as Integer) as Integer", sum);
REALmethodDefinition clear_record = method("Clear(block as MemoryBlock)", clear);
REALmethodDefinition eight_record = method("Eight as MemoryBlock", eight);
REALmethodDefinition broken_records[] = {method("Broken(", eight), method("5", eight)};
REALclassDefinition extension;
REALclassDefinition own_class;

}  // namespace

extern "C" __attribute__((visibility("default"))) void REALPluginMain(void* (*given)(const char* key)) {
    resolver = given;
    const char* wish = std::getenv("FAULT");
    fault = wish ? wish : "";
    if (has("entry")) crash();
    if (has("key")) resolver("memoryBlockGetSzie");
    was_late = resolver("REALUnlockString") == nullptr && resolver("REALUnlockString") != nullptr;
    host_version = ask<double>("REALGetRBVersion");
    int32_t word = host_version >= 2013.03  ? 12
                   : host_version >= 2013.0 ? 11
                   : host_version >= 2012.0 ? 10
                                            : 9;
    if (has("version word")) word = 12;
    if (!has("announcement")) ask<void>("RegisterPluginVersion", word);
    extension.version = has("record version") ? 10 : word;
    extension.name = "MemoryBlock";
    extension.methods = &sum_record;
    extension.methodCount = 1;
    ask<void>("PluginRegisterClassExtension", &extension);
    own_class.version = word;
    own_class.name = "Own";
    own_class.constructor = construct;
    own_class.destructor = destruct;
    ask<void>("PluginRegisterClass", &own_class);
    ask<void>("PluginRegisterMethod", &clear_record);
    ask<void>("PluginRegisterMethod", &eight_record);
    if (has("duplicate")) ask<void>("PluginRegisterMethod", &clear_record);
    if (has("declarations")) {
        for (REALmethodDefinition& record : broken_records) ask<void>("PluginRegisterMethod", &record);
    }
}
