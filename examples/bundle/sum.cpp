// A bundle of one member, for every host version: block.SumOfBytes(offset, count) as Integer.
#include <algorithm>

#include "plugin/records.h"

static void* (*resolver)(const char* key);

template <class Result, class... Arguments>
static Result ask_host(const char* key, Arguments... arguments) {
    const auto function = reinterpret_cast<Result (*)(Arguments...)>(resolver(key));
    return function ? function(arguments...) : Result();
}

static int32_t sum_of_bytes(REALmemoryBlock block, int32_t offset, int32_t count) {
    if (!block || offset < 0) return 0;
    const auto* bytes = ask_host<const uint8_t*>("memoryBlockGetPtr", block);
    const int64_t size = bytes ? ask_host<int32_t>("memoryBlockGetSize", block) : 0;
    int32_t sum = 0;
    for (int64_t i = offset; i < std::min(size, int64_t{offset} + count); ++i) sum += bytes[i];
    return sum;
}

static REALmethodDefinition methods[] = {{reinterpret_cast<void (*)()>(sum_of_bytes), nullptr,
                                          "SumOfBytes(offset as Integer, count as Integer) as Integer", 4}};
static REALclassDefinition extension = {
    .version = 9, .name = "MemoryBlock", .methods = methods, .methodCount = 1};

extern "C" __attribute__((visibility("default"))) void REALPluginMain(void* (*given)(const char* key)) {
    resolver = given;
    ask_host<void>("RegisterPluginVersion", int32_t{9});
    ask_host<void>("PluginRegisterClassExtension", &extension);
}
