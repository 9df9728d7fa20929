// Hostile records: classes, extensions and global methods whose fields are anything: other version words,
// counts that are negative or too large, tables and texts that are nil, end at the end of the memory, or lie
// nowhere. The host takes all of a record or nothing of it, says why, and what it took can be called for what
// it is.
#include <sys/mman.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "minihost/library/state.h"

using namespace minihost;

namespace {

constexpr size_t kPage = 4096;

// Memory that ends where nothing can be read, for records that say they are longer than they are.
uint8_t* arena() {
    static uint8_t* const pages = [] {
        void* memory = mmap(nullptr, 2 * kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED || mprotect(static_cast<uint8_t*>(memory) + kPage, kPage, PROT_NONE) != 0)
            std::abort();
        return static_cast<uint8_t*>(memory);
    }();
    return pages;
}

constexpr const char* kTexts[] = {"A",
                                  "MemoryBlock",
                                  "FolderItem",
                                  "RuntimeException",
                                  "",
                                  "B as",
                                  "F(a as Integer) as A",
                                  "G(a as B = 3)",
                                  "H as Nothing",
                                  "String",
                                  "Int64",
                                  "C(x as MemoryBlock) as B"};

class Records {
 public:
    Records(const uint8_t* data, size_t size) : data_(data), size_(size) {
        std::memset(arena(), 0, kPage);
        size_t at = 0;
        for (size_t i = 0; i < std::size(kTexts); ++i) {
            texts_[i] = reinterpret_cast<char*>(arena() + at);
            const size_t length = std::strlen(kTexts[i]) + 1;
            std::memcpy(texts_[i], kTexts[i], length);
            at += length;
        }
    }

    bool empty() const { return size_ == 0; }
    uint8_t byte() {
        if (size_ == 0) return 0;
        --size_;
        return *data_++;
    }

    char* text() {
        const uint8_t kind = byte();
        if (kind < 200) return texts_[kind % std::size(kTexts)];
        if (kind < 220) return nullptr;
        return static_cast<char*>(anywhere(kind));
    }

    // The last bytes of the memory, filled from the input.
    void* bytes(size_t count) {
        uint8_t* start = arena() + kPage - count;
        for (size_t i = 0; i < count; ++i) start[i] = byte();
        return start;
    }

    template <class Record>
    void* table(int32_t& count, size_t stride, auto fill) {
        const uint8_t kind = byte();
        count = kind < 200 ? kind % 4 : kind < 240 ? -int32_t(kind) : INT32_MAX - kind;
        if (kind % 16 == 15) return kind % 32 == 15 ? nullptr : anywhere(kind);
        const size_t records = size_t(kind % 4);
        uint8_t* start = (end_ -= records * stride);
        for (size_t i = 0; i < records; ++i) {
            Record record = {};
            fill(record);
            std::memcpy(start + i * stride, &record, stride);
        }
        return start;
    }

    void (*function())() {
        return byte() % 8 == 0 ? nullptr : reinterpret_cast<void (*)()>(+[] {});
    }

    REALmethodDefinition method() {
        REALmethodDefinition record = {};
        record.function = function();
        record.setter = byte() % 2 == 0 ? nullptr : function();
        record.declaration = text();
        return record;
    }

    REALclassDefinition* definition() {
        static REALclassDefinition records[8];
        REALclassDefinition& record = records[used_++ % std::size(records)];
        record = {};
        record.version = 9 + byte() % 4 + (byte() % 16 == 0 ? -7 : 0);
        const bool older = record.version == 9;
        record.name = text();
        record.super = text();
        record.instanceDataSize = int32_t(byte()) - 8;
        if (byte() % 16 == 0) record.instanceDataSize = INT32_MAX - byte();
        record.methods = table<REALmethodDefinition>(record.methodCount,
                                                     older ? kOlderMethodSize : sizeof(REALmethodDefinition),
                                                     [&](REALmethodDefinition& row) { row = method(); });
        record.properties = table<REALproperty>(
            record.propertyCount, older ? kOlderPropertySize : sizeof(REALproperty), [&](REALproperty& row) {
                row.name = text();
                row.type = text();
                row.getter = function();
            });
        const uint8_t kind = byte();
        if (kind < 8) return kind % 2 ? nullptr : static_cast<REALclassDefinition*>(anywhere(kind));
        return &record;
    }

 private:
    static void* anywhere(uint8_t kind) {
        return kind % 2 ? static_cast<void*>(arena() + kPage + kind)
                        : reinterpret_cast<void*>(uintptr_t(kind));
    }

    const uint8_t* data_;
    size_t size_;
    size_t used_ = 0;
    uint8_t* end_ = arena() + kPage;
    char* texts_[std::size(kTexts)];
};

void require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Host host;
    Host::State& state = host.state();
    Records records(data, std::min<size_t>(size, 400));
    std::vector<REALmethodDefinition> globals(8);
    for (size_t i = 0; i < globals.size() && !records.empty(); ++i) {
        const size_t known = state.class_records.size() + state.global_records.size();
        const size_t faults = state.faults.size();
        switch (records.byte() % 3) {
            case 0:
                state.register_class(records.definition());
                break;
            case 1:
                state.extend_class(records.definition());
                break;
            default:
                globals[i] = records.method();
                state.register_global(&globals[i]);
        }
        const size_t more = state.class_records.size() + state.global_records.size() - known;
        require(more + (state.faults.size() - faults) >= 1, "a record is neither taken nor refused");
    }
    for (const Class* type : host.classes()) {
        for (const Method& method : type->methods) {
            require(method.get && method.function, "a method without a function");
            require(!host.find_methods(*type, method.declaration.name).empty(), "a method that is not found");
        }
        for (const Property& property : type->properties)
            require(host.find_property(*type, property.name), "a property that is not found");
    }
    return 0;
}
