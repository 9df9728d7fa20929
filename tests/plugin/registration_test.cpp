// What the bundle registers with each host, read from the records as the host receives them.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <map>
#include <set>

#include "minihost/library/state.h"
#include "plugin/host.h"
#include "tests/support/bundle_test.h"
#include "tests/support/system.h"

namespace {

// The members of the extension in the registered order, a line each.
std::vector<std::string> expected_methods() {
    std::ifstream file(path_named(SOURCE_DIR "/tests/plugin/methods.txt"));
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
}

const std::vector<std::string> kStartKeys = {"RegisterPluginVersion", "REALGetRBVersion",
                                             "PluginRegisterClassExtension", "PluginRegisterClass",
                                             "PluginRegisterMethod"};

// Where a function lies in the bundle's image, which is another one at every load; -1 for nil.
ptrdiff_t place(void (*function)()) {
    return function ? place_in_image(reinterpret_cast<void*>(function)) : -1;
}

// A record as it lies in memory, what fills the gaps between its fields included.
template <class Record>
std::span<const uint8_t> bytes_of(const Record& record) {
    return {reinterpret_cast<const uint8_t*>(&record), sizeof record};
}

struct MethodRow {
    ptrdiff_t function;
    ptrdiff_t setter;
    std::string declaration;
    uint32_t flags;
    bool operator==(const MethodRow&) const = default;
};

// The methods of a class record; the older layout has shorter records.
std::vector<MethodRow> method_rows(const REALclassDefinition& definition) {
    const size_t size = definition.version == 9 ? kOlderMethodSize : sizeof(REALmethodDefinition);
    std::vector<MethodRow> rows;
    for (int32_t i = 0; i < definition.methodCount; ++i) {
        REALmethodDefinition record = {};
        std::memcpy(&record, static_cast<const char*>(definition.methods) + size_t(i) * size, size);
        EXPECT_EQ(record.reserved4, nullptr);
        EXPECT_EQ(record.reserved5, 0);
        rows.push_back({place(record.function), place(record.setter), record.declaration, record.flags});
    }
    return rows;
}

struct PropertyRow {
    std::string name;
    std::string type;
    ptrdiff_t getter;
    bool operator==(const PropertyRow&) const = default;
};

std::vector<PropertyRow> property_rows(const REALclassDefinition& definition) {
    const size_t size = definition.version == 9 ? kOlderPropertySize : sizeof(REALproperty);
    std::vector<PropertyRow> rows;
    for (int32_t i = 0; i < definition.propertyCount; ++i) {
        REALproperty record = {};
        std::memcpy(&record, static_cast<const char*>(definition.properties) + size_t(i) * size, size);
        rows.push_back({record.name, record.type, place(record.getter)});
        // All else is the same in every property.
        REALproperty rest = {};
        rest.name = record.name;
        rest.type = record.type;
        rest.flags = 6;
        rest.getter = record.getter;
        EXPECT_TRUE(same_bytes(bytes_of(record), bytes_of(rest))) << record.name;
    }
    return rows;
}

// Whether all fields are as expected; the tables and the destructor, which lie somewhere, are taken over.
void expect_record(const REALclassDefinition& actual, const char* name, int32_t version, int32_t properties,
                   int32_t methods, int32_t instance_data) {
    REALclassDefinition expected = {};
    expected.version = version;
    expected.name = actual.name;
    expected.instanceDataSize = instance_data;
    expected.systemWord = actual.systemWord;  // the host's
    expected.destructor = actual.destructor;
    expected.properties = actual.properties;
    expected.propertyCount = properties;
    expected.methods = actual.methods;
    expected.methodCount = methods;
    expected.flags = 4;
    EXPECT_STREQ(actual.name, name);
    EXPECT_EQ(actual.destructor != nullptr, instance_data > 0);
    EXPECT_TRUE(same_bytes(bytes_of(actual), bytes_of(expected))) << name;
}

class RegistrationTest : public BundleTest {};

TEST_F(RegistrationTest, EveryHostVersionGetsTheRecordsOfItsLayout) {
    const double never = -std::numeric_limits<double>::infinity();
    const std::vector<std::pair<std::optional<double>, int32_t>> versions = {
        {2013.03, 12},     {2013.04, 12},
        {2026.1, 12},      {std::nextafter(2013.03, never), 11},
        {2013.0, 11},      {std::nextafter(2013.0, never), 10},
        {2012.0, 10},      {std::nextafter(2012.0, never), 9},
        {2011.03, 9},      {0.0, 9},
        {std::nan(""), 9}, {std::nullopt, 9}};
    std::array<std::vector<MethodRow>, 2> methods;
    std::array<std::vector<PropertyRow>, 2> properties;
    for (const auto& [version, word] : versions) {
        SCOPED_TRACE(testing::Message() << "host version " << version.value_or(-1));
        start({.version = version});
        EXPECT_EQ(host().announced_version(), word);
        const auto classes = host().registered_classes();
        ASSERT_EQ(classes.size(), 2u);
        expect_record(*classes[0], "MemoryBlock", word, 1, 43, 0);
        expect_record(*classes[1], "MemoryBlockZOR", word, 3, 3, 32);
        for (size_t i = 0; i < 2; ++i) {
            if (methods[i].empty()) methods[i] = method_rows(*classes[i]);
            if (properties[i].empty()) properties[i] = property_rows(*classes[i]);
            EXPECT_EQ(method_rows(*classes[i]), methods[i]);
            EXPECT_EQ(property_rows(*classes[i]), properties[i]);
        }
        const auto globals = host().registered_globals();
        ASSERT_EQ(globals.size(), 1u);
        EXPECT_STREQ(globals[0]->declaration, "NewMemoryBlockFromPtrZOR(ptr as integer) as memoryblock");
        EXPECT_NE(globals[0]->function, nullptr);
        EXPECT_EQ(globals[0]->setter, nullptr);
        EXPECT_EQ(globals[0]->flags, 4u);
    }

    const std::vector<std::string> expected = expected_methods();
    ASSERT_EQ(expected.size(), 43u);
    ASSERT_EQ(methods[0].size(), expected.size());
    std::set<ptrdiff_t> functions;
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(methods[0][i].declaration, expected[i]) << "row " << i + 1;
        EXPECT_EQ(methods[0][i].flags, 4u);
        const bool assignable = expected[i].starts_with("OSTypeZOR") || expected[i].starts_with("FSSpecZOR");
        EXPECT_EQ(methods[0][i].setter > 0, assignable) << expected[i];
        EXPECT_TRUE(functions.insert(methods[0][i].function).second) << expected[i] << " shares its function";
    }
    const auto declaration = [&](size_t i) { return methods[1].at(i).declaration; };
    EXPECT_EQ(declaration(0), "Resize(Size as Int64) as boolean");
    EXPECT_EQ(declaration(1), "Close");
    EXPECT_EQ(declaration(2), "Create(size as Int64) as boolean");
    EXPECT_EQ(properties[0][0].name + " " + properties[0][0].type, "BytesZOR Integer");
    EXPECT_EQ(properties[1][0].name + " " + properties[1][0].type, "Address Int64");
    EXPECT_EQ(properties[1][1].name + " " + properties[1][1].type, "Size Int64");
    EXPECT_EQ(properties[1][2].name + " " + properties[1][2].type, "Memory Memoryblock");
}

TEST_F(RegistrationTest, CloseIsAlsoTheDestructor) {
    start();
    const REALclassDefinition& large = *host().registered_classes()[1];
    EXPECT_EQ(place(reinterpret_cast<void (*)()>(large.destructor)), method_rows(large)[1].function);
}

TEST_F(RegistrationTest, AMissingRegistrationLeavesTheOthers) {
    start({.without = {"PluginRegisterClassExtension"}});
    EXPECT_EQ(host().registered_classes().size(), 1u);
    EXPECT_EQ(host().registered_globals().size(), 1u);
    start({.without = {"PluginRegisterClass"}});
    EXPECT_EQ(host().registered_classes().size(), 1u);
    EXPECT_EQ(host().registered_globals().size(), 1u);
    start({.without = {"PluginRegisterMethod", "RegisterPluginVersion"}});
    EXPECT_EQ(host().registered_classes().size(), 2u);
    EXPECT_EQ(host().registered_globals().size(), 0u);
    EXPECT_FALSE(host().announced_version());

    start({.without = {kStartKeys.begin(), kStartKeys.end()}});
    EXPECT_EQ(host().registered_classes().size(), 0u);
    EXPECT_EQ(host().registered_globals().size(), 0u);
}

// Without minihost: the entry point and a resolver, nothing else.
std::map<std::string, int> requests;
std::vector<std::string> order;
int32_t announced = 0;
double version_of_host = 0;

void* counting_resolver(const char* key) {
    ++requests[key];
    order.emplace_back(key);
    if (std::string_view(key) == "REALGetRBVersion") {
        return reinterpret_cast<void*>(+[] { return version_of_host; });
    }
    if (std::string_view(key) == "RegisterPluginVersion") {
        return reinterpret_cast<void*>(+[](int32_t version) { announced = version; });
    }
    if (std::string_view(key) == "PluginRegisterMethod") {
        return reinterpret_cast<void*>(+[](void*) {});
    }
    return nullptr;
}

TEST(EntryPoint, AsksForWhatItNeedsInOrderAndOnce) {
    const minihost::EntryPoint main = minihost::open_bundle(path_named(MINIHOST_BUNDLE));
    version_of_host = 2013.0;
    main(counting_resolver);
    EXPECT_EQ(announced, 11);
    EXPECT_EQ(order, kStartKeys);
    version_of_host = 2012.5;
    main(counting_resolver);
    EXPECT_EQ(announced, 10);
    // The two of start-up are asked afresh; of the others, those that had no answer.
    EXPECT_EQ(requests, (std::map<std::string, int>{{"RegisterPluginVersion", 2},
                                                    {"REALGetRBVersion", 2},
                                                    {"PluginRegisterClassExtension", 2},
                                                    {"PluginRegisterClass", 2},
                                                    {"PluginRegisterMethod", 1}}));
    main(+[](const char*) -> void* { return nullptr; });
}

// An old host gets records that were made for it; a second start must not make them anew.
std::vector<REALclassDefinition> handed_over;
void* resolver_of_an_old_host(const char* key) {
    if (std::string_view(key) == "REALGetRBVersion") return reinterpret_cast<void*>(+[] { return 2011.0; });
    if (!std::string_view(key).starts_with("PluginRegisterClass")) return nullptr;
    return reinterpret_cast<void*>(+[](const REALclassDefinition* record) {
        std::memcpy(&handed_over.emplace_back(), record, kOlderClassSize);
    });
}

TEST(EntryPoint, ASecondStartOnAnOldHostHandsOverTheSameRecords) {
    const minihost::EntryPoint main = minihost::open_bundle(path_named(MINIHOST_BUNDLE));
    main(resolver_of_an_old_host);
    main(resolver_of_an_old_host);
    ASSERT_EQ(handed_over.size(), 4u);
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(handed_over[i].version, kOldestLayout);
        EXPECT_TRUE(same_bytes(bytes_of(handed_over[i]), bytes_of(handed_over[i + 2])));
        std::free(handed_over[i].properties);  // the host's, which outlive the bundle
        std::free(handed_over[i].methods);
    }
}

}  // namespace
