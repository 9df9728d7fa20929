// The older record layout, over tables of every kind. The bundle's own records use only two of them;
// registration tests show those as the host receives them.
#include "plugin/registration/convert.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "plugin/host.h"

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
using Freed = std::unique_ptr<void, Free>;

void* pointer(size_t n) { return reinterpret_cast<void*>(n); }

// The older record as the host reads it, and its tables freed at the end.
class OlderClass {
 public:
    explicit OlderClass(const REALclassDefinition& definition) : record_(FixClass(&definition)) {
        std::memcpy(&fields_, record_.get(), kOlderClassSize);
        for (void* table : {fields_.properties, fields_.methods, fields_.table11, fields_.table18,
                            fields_.sharedProperties, fields_.sharedMethods}) {
            tables_[count_++].reset(table);
        }
    }
    const REALclassDefinition* operator->() const { return &fields_; }

 private:
    Freed record_;
    REALclassDefinition fields_ = {};
    std::array<Freed, 6> tables_;
    size_t count_ = 0;
};

// Whether `count` records lie at `older`, each the start of the `size` bytes long one in `newer`.
bool cut_from(const void* older, size_t olderSize, const void* newer, size_t size, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        if (std::memcmp(static_cast<const char*>(older) + i * olderSize,
                        static_cast<const char*>(newer) + i * size, olderSize) != 0) {
            return false;
        }
    }
    return true;
}

template <class Record>
std::array<Record, 3> records_filled_from(unsigned char start) {
    std::array<Record, 3> records;
    auto* bytes = reinterpret_cast<unsigned char*>(records.data());
    for (size_t i = 0; i < sizeof records; ++i) bytes[i] = static_cast<unsigned char>(start + i * 7);
    return records;
}

TEST(FixClass, CutsEveryTableAndCarriesTheOtherFields) {
    CurrentREALControlVersion = 9;
    auto properties = records_filled_from<REALproperty>(1);
    auto sharedProperties = records_filled_from<REALproperty>(2);
    auto methods = records_filled_from<REALmethodDefinition>(3);
    auto sharedMethods = records_filled_from<REALmethodDefinition>(4);
    auto fours = records_filled_from<std::array<void*, 4>>(5);
    const auto foursBefore = fours;
    auto fives = records_filled_from<std::array<void*, 5>>(6);

    REALclassDefinition definition = {};
    definition.version = 12;
    definition.name = "Name";
    definition.super = "Super";
    definition.instanceDataSize = 48;
    definition.systemWord = 77;
    definition.constructor = reinterpret_cast<void (*)(REALobject)>(pointer(0x50));
    definition.destructor = reinterpret_cast<void (*)(REALobject)>(pointer(0x60));
    definition.properties = properties.data();
    definition.propertyCount = 3;
    definition.methods = methods.data();
    definition.methodCount = 2;  // fewer than there are: the rest is not copied
    definition.table11 = fours.data();
    definition.count12 = 3;
    definition.table13 = pointer(0x13);
    definition.count14 = 14;
    definition.field15 = pointer(0x15);
    definition.table16 = pointer(0x16);
    definition.count17 = 17;
    definition.table18 = fives.data();
    definition.count19 = 3;
    definition.flags = 4;
    definition.sharedProperties = sharedProperties.data();
    definition.sharedPropertyCount = 1;
    definition.sharedMethods = sharedMethods.data();
    definition.sharedMethodCount = 3;
    definition.table25 = pointer(0x25);

    const OlderClass older(definition);
    EXPECT_EQ(older->version, 9);
    EXPECT_EQ(older->name, definition.name);
    EXPECT_EQ(older->super, definition.super);
    EXPECT_EQ(older->instanceDataSize, 48);
    EXPECT_EQ(older->systemWord, 77);
    EXPECT_EQ(older->constructor, definition.constructor);
    EXPECT_EQ(older->destructor, definition.destructor);
    EXPECT_EQ(older->table13, definition.table13);
    EXPECT_EQ(older->count14, 14);
    EXPECT_EQ(older->field15, definition.field15);
    EXPECT_EQ(older->table16, nullptr);
    EXPECT_EQ(older->count17, 0);
    EXPECT_EQ(older->flags, 4u);

    EXPECT_EQ(older->propertyCount, 3);
    EXPECT_TRUE(cut_from(older->properties, kOlderPropertySize, properties.data(), sizeof properties[0], 3));
    EXPECT_EQ(older->methodCount, 2);
    EXPECT_TRUE(cut_from(older->methods, kOlderMethodSize, methods.data(), sizeof methods[0], 2));
    EXPECT_EQ(older->count19, 3);
    EXPECT_TRUE(cut_from(older->table18, 3 * sizeof(void*), fives.data(), sizeof fives[0], 3));
    EXPECT_EQ(older->sharedPropertyCount, 1);
    EXPECT_TRUE(cut_from(older->sharedProperties, kOlderPropertySize, sharedProperties.data(),
                         sizeof properties[0], 1));
    EXPECT_EQ(older->sharedMethodCount, 3);
    EXPECT_TRUE(cut_from(older->sharedMethods, kOlderMethodSize, sharedMethods.data(), sizeof methods[0], 3));

    // The one table whose source records change: each then points to its own copy.
    EXPECT_EQ(older->count12, 3);
    EXPECT_TRUE(cut_from(older->table11, 2 * sizeof(void*), foursBefore.data(), sizeof fours[0], 3));
    for (size_t i = 0; i < fours.size(); ++i) {
        auto expected = foursBefore[i];
        expected[1] = static_cast<char*>(older->table11) + i * 2 * sizeof(void*);
        EXPECT_EQ(fours[i], expected) << "record " << i;
    }
}

TEST(FixClass, LeavesOutTablesThatAreEmptyOrCannotBeAllocated) {
    CurrentREALControlVersion = 9;
    auto methods = records_filled_from<REALmethodDefinition>(3);
    REALclassDefinition definition = {};
    definition.methods = methods.data();
    definition.methodCount = 0;
    definition.sharedMethods = methods.data();
    definition.sharedMethodCount = -1;
    definition.properties = methods.data();
    definition.propertyCount = INT32_MAX;  // more bytes than a 32-bit number tells
    definition.count19 = 5;                // a count without a table

    const OlderClass older(definition);
    EXPECT_EQ(older->methods, nullptr);
    EXPECT_EQ(older->methodCount, 0);
    EXPECT_EQ(older->sharedMethods, nullptr);
    EXPECT_EQ(older->sharedMethodCount, 0);
    EXPECT_EQ(older->properties, nullptr);
    EXPECT_EQ(older->propertyCount, 0);
    EXPECT_EQ(older->table18, nullptr);
    EXPECT_EQ(older->count19, 5);
}

}  // namespace
