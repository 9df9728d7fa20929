#include "plugin/registration/convert.h"

#include <cstdlib>
#include <cstring>

#include "plugin/host.h"

namespace {

// Two tables whose records the plug-in never fills in: all their fields are pointers.
struct FourFields {
    void* fields[4];
};
struct FiveFields {
    void* fields[5];
};
constexpr size_t kTwoFields = 2 * sizeof(void*);
constexpr size_t kThreeFields = 3 * sizeof(void*);

// A copy of `count` records of `size` bytes, each cut to its first `olderSize` bytes; nil for an empty table
// and for one whose size in bytes is no positive 32-bit number.
void* shorten(const void* table, int32_t count, size_t size, size_t olderSize) {
    if (!table || count <= 0 || int64_t(count) * int64_t(olderSize) > INT32_MAX) return nullptr;
    auto* older = static_cast<char*>(std::calloc(size_t(count), olderSize));
    if (!older) return nullptr;
    const auto* source = static_cast<const char*>(table);
    for (size_t i = 0; i < size_t(count); ++i) {
        std::memcpy(older + i * olderSize, source + i * size, olderSize);
    }
    return older;
}

// Puts the older table in the place of the newer one. A count without a table is kept as it is.
void replace(void*& table, int32_t& count, void* older) {
    if (table && !older) count = 0;
    table = older;
}

}  // namespace

void* FixProperties(const void* table, int32_t count) {
    return shorten(table, count, sizeof(REALproperty), kOlderPropertySize);
}

void* FixClass(const REALclassDefinition* definition) {
    void* result = std::calloc(1, kOlderClassSize);
    if (!result) return nullptr;

    REALclassDefinition older = *definition;
    older.version = CurrentREALControlVersion;
    replace(older.properties, older.propertyCount, FixProperties(older.properties, older.propertyCount));
    replace(older.methods, older.methodCount,
            shorten(older.methods, older.methodCount, sizeof(REALmethodDefinition), kOlderMethodSize));

    void* pairs = shorten(older.table11, older.count12, sizeof(FourFields), kTwoFields);
    if (pairs) {
        auto* source = static_cast<FourFields*>(older.table11);
        for (int32_t i = 0; i < older.count12; ++i) {
            source[i].fields[1] = static_cast<char*>(pairs) + size_t(i) * kTwoFields;
        }
    }
    replace(older.table11, older.count12, pairs);

    older.table16 = nullptr;
    older.count17 = 0;
    replace(older.table18, older.count19,
            shorten(older.table18, older.count19, sizeof(FiveFields), kThreeFields));
    replace(older.sharedMethods, older.sharedMethodCount,
            shorten(older.sharedMethods, older.sharedMethodCount, sizeof(REALmethodDefinition),
                    kOlderMethodSize));
    replace(older.sharedProperties, older.sharedPropertyCount,
            FixProperties(older.sharedProperties, older.sharedPropertyCount));

    std::memcpy(result, &older, kOlderClassSize);
    return result;
}
