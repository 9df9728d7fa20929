#include "benchmarks/host.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include "minihost/library/host.h"

namespace bench {
namespace {

void* block_pointer(Block* block) { return block->data; }
int32_t block_size(Block* block) { return block->size; }
void keep_alive(void*) {}

// The bytes of a block, or of a string, follow its record.
template <class Record>
Record* allocate(int32_t count) {
    return static_cast<Record*>(std::malloc(sizeof(Record) + size_t(count)));
}

Block* new_block(int32_t size) {
    auto* block = allocate<Block>(size);
    if (block) *block = {{}, block + 1, size};
    return block;
}

String* build_string(const void* bytes, int32_t count) {
    auto* string = allocate<String>(count);
    if (!string) return nullptr;
    std::memcpy(string + 1, bytes, size_t(count));
    *string = {string + 1, count};
    return string;
}

void set_encoding(String*, uint32_t) {}

REALboolean string_data(const String* string, uint32_t encoding, REALstringData* record) {
    *record = {const_cast<void*>(string->bytes), string->count, encoding};
    return 1;
}

minihost::Options thin_operations() {
    minihost::Options options;
    const auto replace = [&](const char* key, auto* function) {
        options.replace[key] = reinterpret_cast<void*>(function);
    };
    replace("memoryBlockGetPtr", block_pointer);
    replace("memoryBlockGetSize", block_size);
    replace("newMemoryBlock", new_block);
    replace("REALLockObject", keep_alive);
    replace("REALUnlockObject", keep_alive);
    replace("REALLockString", keep_alive);
    replace("REALUnlockString", keep_alive);
    replace("REALBuildString", build_string);
    replace("REALSetStringEncoding", set_encoding);
    replace("PluginGetStringData", string_data);
    replace("PluginDisposeStringData", keep_alive);
    return options;
}

}  // namespace

void release(REALmemoryBlock block) { std::free(static_cast<Block*>(block)); }
void release(REALstring string) { std::free(string); }

Bundle::Bundle(std::string label, const std::string& file) : name(std::move(label)) {
    // Members ask for an operation at its first use, and it is the living host that answers.
    static std::unique_ptr<minihost::Host> host;
    host.reset();
    host = std::make_unique<minihost::Host>(thin_operations());
    host->load(file);
    for (const minihost::Method& method : host->find_class("MemoryBlock")->methods) {
        members_[{method.declaration.name, method.declaration.parameters.size()}] = method.function;
    }
}

void* Bundle::find(std::string_view method, size_t parameters) const {
    const auto found = members_.find(std::pair(std::string(method), parameters));
    if (found == members_.end()) throw std::runtime_error(name + " has no member " + std::string(method));
    return found->second;
}

}  // namespace bench
