// The host that bundles are tried with: its declarations, calls, objects, strings, files and accounts. The
// tests register records of their own and use the host operations as a bundle does.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <set>

#include "minihost/library/names.h"
#include "minihost/library/overloads.h"
#include "tests/minihost/host_operations.h"

using namespace minihost;

namespace {

const uint32_t kUtf8 = *encoding_number("UTF-8");

template <class Function>
auto* as_registered(Function* function) {
    return reinterpret_cast<void (*)()>(function);
}

// Declarations

std::string shown(const Declaration& declaration) {
    std::string text = declaration.name;
    for (const Parameter& parameter : declaration.parameters) {
        text += " | " + parameter.name + ":" + to_string(parameter.type);
        if (parameter.default_value) text += "=" + std::to_string(parameter.default_value->index());
    }
    return text + " > " + to_string(declaration.result);
}

TEST(Declarations, AreReadInAnyWriting) {
    EXPECT_EQ(shown(parse_declaration("Close")), "Close > ");
    EXPECT_EQ(shown(parse_declaration("Close()")), "Close > ");
    EXPECT_EQ(shown(parse_declaration("LenB( s as string ) as integer")), "LenB | s:String > Integer");
    EXPECT_EQ(shown(parse_declaration("_F(a AS uint64,b\tas Memoryblock , p as PTR)As BOOLEAN")),
              "_F | a:UInt64 | b:Memoryblock | p:Ptr > Boolean");
    // A default is kept as a value of its parameter's type, shown as the alternative's index.
    const Declaration defaults = parse_declaration(
        "F(a as Double, b as Integer = -1, c as Int64=8, d as Double = 2, e as boolean = TRUE, f as "
        "Double=-1.5e-3)");
    EXPECT_EQ(shown(defaults),
              "F | a:Double | b:Integer=1 | c:Int64=2 | d:Double=4 | e:Boolean=5 | f:Double=4 > ");
    EXPECT_EQ(defaults.parameters[1].default_value, Value(-1));
    EXPECT_EQ(defaults.parameters[5].default_value, Value(-1.5e-3));
    EXPECT_EQ(defaults.required(), 1u);
    EXPECT_EQ(parse_declaration("F(a as Integer = 1)").required(), 0u);
}

TEST(Declarations, ErrorsSayWhatWasFoundAndExpected) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "column 1: expected a name, found the end"},
        {"F(a)", "column 4: expected \"as\", found \")\""},
        {"F(a as )", "column 8: expected a type, found \")\""},
        {"F(a as Integer", "column 15: expected \",\" or \")\", found the end"},
        {"F(a as Integer,)", "column 16: expected a parameter's name, found \")\""},
        {"F(a as Integer = 2.5)", "column 18: expected a default value for Integer, found \"2.5\""},
        {"F(a as Integer = 2147483648)",
         "column 18: expected a default value for Integer, found \"2147483648\""},
        {"F(a as Boolean = 1)", "column 18: expected a default value for Boolean, found \"1\""},
        {"F(a as Int64 = 99999999999999999999)",
         "column 16: expected a default value for Int64, found \"99999999999999999999\""},
        {"F(a as Double = 1e999)", "column 17: expected a default value for Double, found \"1e999\""},
        {"F(a as Double = .5.5)", "column 17: expected a default value for Double, found \".5.5\""},
        {"F(a as String = x)", "column 17: expected a default value for String, found \"x\""},
        {"F{", "column 2: expected the end, found \"{\""},
        {"F as Integer 5", "column 14: expected the end, found \"5\""},
    };
    for (const auto& [text, message] : cases) {
        EXPECT_EQ(thrown<std::invalid_argument>([declaration = text] { parse_declaration(declaration); }),
                  std::string("\"") + text + "\", " + message);
    }
}

// A host with members of the test's own

class LibraryTest : public testing::Test {
 protected:
    template <class Function>
    static REALmethodDefinition method(const char* declaration, Function* function,
                                       void (*setter)() = nullptr) {
        return {as_registered(function), setter, declaration, 4, nullptr, 0};
    }
    static REALclassDefinition record(const char* name, std::vector<REALmethodDefinition>& methods) {
        REALclassDefinition record = {};
        record.version = 12;
        record.name = name;
        record.methods = methods.data();
        record.methodCount = int32_t(methods.size());
        return record;
    }
    // What could not be loaded of a bundle with this entry point.
    std::string load(const std::function<void()>& entry) {
        const std::string error = thrown<LoadError>([&] { host_->state().load("test", entry); });
        return error.starts_with("test: ") ? error.substr(6) : error;
    }
    // Registers and reports what could not be read.
    std::string extend(REALclassDefinition& record) {
        return load([&] { operation<void(REALclassDefinition*)>("PluginRegisterClassExtension")(&record); });
    }
    std::string add_class(REALclassDefinition& record) {
        return load([&] { operation<void(REALclassDefinition*)>("PluginRegisterClass")(&record); });
    }
    Value call(const ObjectRef& self, const char* name, std::vector<Value> arguments = {}) {
        return host_->call(self.get(), name, arguments);
    }
    std::string refused(const ObjectRef& self, const char* name, std::vector<Value> arguments = {}) {
        return thrown<CallError>([&] { call(self, name, arguments); });
    }
    Host& restart(Options options = {}) {
        host_.reset();
        host_ = std::make_unique<Host>(std::move(options));
        return *host_;
    }
    void SetUp() override { restart(); }

    std::unique_ptr<Host> host_;
};

// What the last call was given.
struct {
    REALobject self, object;
    int32_t integer;
    int64_t int64;
    uint64_t uint64;
    double number;
    int boolean;
    void* pointer;
    REALstring string;
} seen;

double all_types(REALobject self, int32_t integer, int64_t int64, REALboolean boolean, uint64_t uint64,
                 double number, void* pointer, REALstring string, REALobject object) {
    seen = {self, object, integer, int64, uint64, number, boolean, pointer, string};
    return -0.5;
}

TEST_F(LibraryTest, EveryTypeGoesThereAndBack) {
    std::vector<REALmethodDefinition> methods = {
        method("All(i as Integer, l as Int64, b as Boolean, u as UInt64, d as Double, p as Ptr, s as String, "
               "m as "
               "memoryblock) as Double",
               all_types),
        method(
            "Int(i as Integer) as Integer", +[](REALobject, int32_t value) { return value; }),
        method(
            "Long(i as Int64) as Int64", +[](REALobject, int64_t value) { return value; }),
        method(
            "ULong(i as UInt64) as UInt64", +[](REALobject, uint64_t value) { return value; }),
        method(
            "Not(b as Boolean) as Boolean",
            +[](REALobject, REALboolean value) { return REALboolean(!value); }),
        method(
            "Same(p as Ptr) as Ptr", +[](REALobject, void* value) { return value; }),
        method(
            "None(m as MEMORYBLOCK) as String", +[](REALobject, REALobject) { return REALstring(); }),
    };
    REALclassDefinition extension = record("memoryblock", methods);
    ASSERT_EQ(extend(extension), "");
    const ObjectRef block = host_->new_block("bytes");
    const StringRef text = host_->new_string("text", kUtf8);

    EXPECT_EQ(
        call(block, "ALL", {INT32_MIN, INT64_MIN, true, UINT64_MAX, 1e300, Pointer{&seen}, text, block}),
        Value(-0.5));
    EXPECT_EQ(seen.self, block.get());
    EXPECT_EQ(seen.integer, INT32_MIN);
    EXPECT_EQ(seen.int64, INT64_MIN);
    EXPECT_EQ(seen.boolean, 1);
    EXPECT_EQ(seen.uint64, UINT64_MAX);
    EXPECT_EQ(seen.number, 1e300);
    EXPECT_EQ(seen.pointer, &seen);
    EXPECT_EQ(seen.string, text.get());
    EXPECT_EQ(seen.object, block.get());
    // Other numbers of the same value, a block for a Ptr to its bytes, and nil.
    call(block, "All", {7.0, 7, false, int64_t(7), INT64_MIN, block, {}, ObjectRef()});
    EXPECT_EQ(seen.integer + seen.int64, 14);
    EXPECT_EQ(seen.boolean, 0);
    EXPECT_EQ(seen.uint64, 7u);
    EXPECT_EQ(seen.number, -0x1p63);
    EXPECT_EQ(seen.pointer, host_->block_data(block.get()));
    EXPECT_EQ(seen.string, nullptr);
    EXPECT_EQ(seen.object, nullptr);

    EXPECT_EQ(call(block, "Int", {-5}), Value(-5));
    EXPECT_EQ(call(block, "Long", {INT64_MIN}), Value(INT64_MIN));
    EXPECT_EQ(call(block, "ULong", {uint64_t(1) << 63 | 5}), Value(uint64_t(1) << 63 | 5));
    EXPECT_EQ(call(block, "Not", {false}), Value(true));
    EXPECT_EQ(call(block, "Not", {true}), Value(false));
    EXPECT_EQ(call(block, "Same", {Pointer{&seen}}), Value(Pointer{&seen}));
    EXPECT_EQ(call(block, "None", {block}), Value(StringRef()));
    EXPECT_EQ(host_->call_on_nil("MemoryBlock", "Int", std::vector<Value>{3}), Value(3));

    const std::pair<Value, const char*> misfits[] = {
        {2147483648.0, "Double 2147483648"},
        {std::nan(""), "Double nan"},
        {0.5, "Double 0.5"},
        {int64_t(INT32_MAX) + 1, "Int64 2147483648"},
        {UINT64_MAX, "UInt64 18446744073709551615"},
        {true, "Boolean true"},
        {text, "a String"},
        {block, "a MemoryBlock"},
        {Pointer{&seen}, "a Ptr"},
        {{}, "Nil"},
    };
    for (const auto& [value, name] : misfits) {
        EXPECT_EQ(refused(block, "int", {value}), std::string("Int takes i as Integer, got ") + name);
    }
    EXPECT_NE(refused(block, "Long", {0x1p63}), "");
    EXPECT_NE(refused(block, "ULong", {-1}), "");
    EXPECT_NE(refused(block, "Not", {1}), "");
    EXPECT_NE(refused(block, "Same", {1}), "");
    EXPECT_NE(refused(block, "All", {1, 1, true, 1, (int64_t(1) << 53) + 1, {}, {}, {}}), "");
    EXPECT_EQ(refused(block, "None", {host_->new_folder_item("/")}),
              "None takes m as MemoryBlock, got a FolderItem");
    EXPECT_EQ(refused(block, "Nothing"), "MemoryBlock has no method Nothing");
    EXPECT_EQ(host_->faults(), std::vector<std::string>{});
}

int32_t assigned = 0;

TEST_F(LibraryTest, OverloadsDefaultsAndSettersAreFoundByTheArguments) {
    const auto setter =
        as_registered(+[](REALobject, int32_t at, int32_t value) { assigned = at * 100 + value; });
    std::vector<REALmethodDefinition> methods = {
        method(
            "Pick(a as Integer) as Integer", +[](REALobject, int32_t) { return 1; }),
        method(
            "Pick(a as Integer, b as Integer) as Integer", +[](REALobject, int32_t, int32_t) { return 2; }),
        method(
            "Pick(a as Double) as Integer", +[](REALobject, double) { return 3; }),
        method(
            "Pick(a as String) as Integer", +[](REALobject, REALstring) { return 4; }),
        method(
            "Sum(a as Integer, b as Integer = 10, c as Double = 0.5) as Double",
            +[](REALobject, int32_t a, int32_t b, double c) { return a + b + c; }),
        method(
            "Cell(at as Integer) as Integer", +[](REALobject, int32_t at) { return at; }, setter),
        method(
            "Close", +[](REALobject) {}),
    };
    std::vector<REALmethodDefinition> below = {
        method(
            "Close", +[](REALobject) { assigned = -1; }),
    };
    REALclassDefinition super = record("Base", methods);
    REALclassDefinition sub = record("Derived", below);
    sub.super = "base";
    ASSERT_EQ(add_class(super), "");
    ASSERT_EQ(add_class(sub), "");
    const ObjectRef object = host_->new_instance("derived");

    EXPECT_EQ(call(object, "Pick", {5}), Value(1));
    EXPECT_EQ(call(object, "Pick", {5, 5}), Value(2));
    EXPECT_EQ(call(object, "Pick", {5.0}), Value(3));
    EXPECT_EQ(call(object, "Pick", {int64_t(5)}), Value(3)) << "a wider type before a narrower one";
    EXPECT_EQ(call(object, "Pick", {host_->new_string("", kUtf8)}), Value(4));
    EXPECT_EQ(
        refused(object, "Pick", {true}),
        "Pick takes 1 argument (a as Integer) or 1 argument (a as Double) or 1 argument (a as String), got "
        "(Boolean)");
    EXPECT_EQ(call(object, "Sum", {1}), Value(11.5));
    EXPECT_EQ(call(object, "Sum", {1, 2}), Value(3.5));
    EXPECT_EQ(call(object, "Sum", {1, 2, 3}), Value(6.0));
    EXPECT_EQ(refused(object, "Sum"),
              "Sum takes 1 to 3 arguments (a as Integer, b as Integer = 10, c as Double = 0.5), got 0");
    EXPECT_EQ(refused(object, "close", {1}), "Close takes no arguments, got 1");
    call(object, "Close");
    EXPECT_EQ(assigned, -1) << "the class's own method comes before its superclass's";

    const auto assign = [&](const char* name, std::vector<Value> arguments, const Value& value) {
        return thrown<CallError>([&] { host_->assign(object.get(), name, arguments, value); });
    };
    EXPECT_EQ(assign("cell", {3}, 4.0), "");
    EXPECT_EQ(assigned, 304);
    EXPECT_EQ(assign("Cell", {3}, true), "Cell takes value as Integer, got Boolean true");
    EXPECT_EQ(assign("Cell", {}, 1), "Cell takes 1 argument (at as Integer), got 0");
    EXPECT_EQ(assign("Sum", {3}, 4), "Sum cannot be assigned");
}

TEST_F(LibraryTest, TheNearestTypesChooseAnOverload) {
    struct {
        std::vector<const char*> overloads;
        std::vector<const char*> arguments;
        std::string expected;  // the chosen overload's index, or what is wrong
    } const cases[] = {
        {{"F(a as Integer)", "F(a as Double) as Double"}, {"Int64"}, "1"},
        {{"F(a as Double)", "F(a as UInt64)", "F(a as Int64)"}, {"Integer"}, "2"},
        {{"F(a as Integer)", "F(a as Int64)"}, {"Double"}, "1"},
        {{"F(a as Double, b as Integer)", "F(a as Int64, b as Int64)"}, {"Integer", "Double"}, "1"},
        {{"F(a as Ptr)", "F(a as MemoryBlock)"}, {"MemoryBlock"}, "1"},
        {{"F(a as Variant)", "F(a as RuntimeException)"}, {"IOException"}, "1"},
        {{"F(a as RuntimeException)", "F(a as IOException)"}, {"IOException"}, "1"},
        {{"F(a as Integer)", "F(b as Integer)"}, {"Integer"}, "0"},
        {{"F(a as Variant)"}, {"Boolean"}, "0"},
        {{"F(a as FolderItem)", "F(a as String)"}, {"Nil"}, "0"},
        {{"F(a as Integer, b as String)"}, {"Integer", "Nil"}, "F takes b as String, got Nil, argument 1"},
        {{"F(a as IOException)"},
         {"RuntimeException"},
         "F takes a as IOException, got RuntimeException, argument 0"},
        {{"F(a as Integer)", "F(a as Int64)"},
         {"String"},
         "F takes 1 argument (a as Integer) or 1 argument (a as Int64), got (String)"},
        {{"F", "F(a as Boolean, b as Boolean = true)"},
         {"Boolean", "Boolean", "Boolean"},
         "F takes no arguments or 1 to 2 arguments (a as Boolean, b as Boolean = true), got 3"},
    };
    for (const auto& example : cases) {
        std::deque<Declaration> declarations;
        std::vector<const Declaration*> overloads;
        for (const char* text : example.overloads)
            overloads.push_back(&declarations.emplace_back(parse_declaration(text)));
        std::vector<Type> arguments;
        for (const char* name : example.arguments)
            arguments.push_back(same_name(name, "Nil") ? kNil : parse_type(name));
        std::string found;
        try {
            found = std::to_string(choose(*host_, overloads, arguments));
        } catch (const CallError& error) {
            found = error.what();
            if (error.argument) found += ", argument " + std::to_string(*error.argument);
        }
        EXPECT_EQ(found, example.expected);
    }
}

TEST_F(LibraryTest, OlderRecordsAreShorter) {
    std::vector<REALmethodDefinition> methods = {
        method(
            "One as Integer", +[](REALobject) { return 1; }),
        method(
            "Two as Integer", +[](REALobject) { return 2; }),
    };
    std::string older(2 * kOlderMethodSize, '\0');
    for (size_t i = 0; i < 2; ++i) std::memcpy(&older[i * kOlderMethodSize], &methods[i], kOlderMethodSize);
    REALclassDefinition extension = record("MemoryBlock", methods);
    extension.version = 9;
    extension.methods = older.data();
    REALproperty properties[2] = {};
    std::string older_properties(2 * kOlderPropertySize, '\0');
    for (size_t i = 0; i < 2; ++i) {
        properties[i].name = i == 0 ? "First" : "Second";
        properties[i].type = "Int64";
        properties[i].getter = as_registered(+[](REALobject, int32_t unused) { return int64_t(unused) - 3; });
        std::memcpy(&older_properties[i * kOlderPropertySize], &properties[i], kOlderPropertySize);
    }
    extension.properties = older_properties.data();
    extension.propertyCount = 2;
    ASSERT_EQ(extend(extension), "");
    const ObjectRef block = host_->new_block(1);
    EXPECT_EQ(call(block, "Two"), Value(2));
    EXPECT_EQ(host_->get(block.get(), "SECOND"), Value(int64_t(-3)));
    EXPECT_EQ(thrown<CallError>([&] { host_->assign(block.get(), "First", {}, 1); }), "First is read-only");
    EXPECT_EQ(thrown<CallError>([&] { host_->get(block.get(), "Third"); }),
              "MemoryBlock has no property Third");
}

TEST_F(LibraryTest, RecordsThatCannotBeReadAreRefused) {
    std::vector<REALmethodDefinition> methods = {method(
        "Good", +[](REALobject) {})};
    const auto extension_error = [&](auto&& change) {
        restart();
        REALclassDefinition changed = record("MemoryBlock", methods);
        change(changed);
        return extend(changed);
    };
    EXPECT_EQ(extension_error([](auto&) {}), "");
    EXPECT_EQ(extension_error([](auto& r) { r.version = 13; }),
              "an extension: its version word is 13, not 9 to 12");
    EXPECT_EQ(extension_error([](auto& r) { r.name = "Nowhere"; }),
              "an extension: there is no class Nowhere");
    EXPECT_EQ(extension_error([](auto& r) { r.methodCount = -1; }), "an extension: a table of -1 records");
    EXPECT_EQ(extension_error([](auto& r) { r.methods = nullptr; }), "an extension: a table of 1 records");
    EXPECT_EQ(extension_error([](auto& r) { r.methodCount = INT32_MAX; }),
              "an extension: a table of 2147483647 records that cannot be read");
    const auto* const nowhere = reinterpret_cast<const char*>(uintptr_t{16});
    EXPECT_EQ(extension_error([&](auto& r) { r.name = nowhere; }), "an extension: its name cannot be read");
    EXPECT_EQ(extension_error([](auto& r) { r.name = nullptr; }), "an extension: its name is missing");
    methods[0].declaration = nowhere;
    EXPECT_EQ(extension_error([](auto&) {}), "an extension: a method's declaration cannot be read");
    methods[0].declaration = "Bad(";
    EXPECT_EQ(extension_error([](auto&) {}),
              "an extension: \"Bad(\", column 5: expected a parameter's name, found the end");
    methods[0].declaration = "Bad(x as Single)";
    EXPECT_EQ(extension_error([](auto&) {}), "a declaration: Bad names the unknown type Single");
    methods[0].function = nullptr;
    EXPECT_EQ(extension_error([](auto&) {}), "an extension: Bad(x as Single) has no function");
    REALclassDefinition known = {};
    known.version = 12;
    known.name = "FOLDERITEM";
    EXPECT_EQ(add_class(known), "a class: FOLDERITEM is there already");
    EXPECT_EQ(load([&] { operation<void(const void*)>("PluginRegisterClass")(nowhere); }),
              "a class: a record that cannot be read");
    methods.clear();
    REALclassDefinition large = record("Large", methods);
    REALclassDefinition larger = record("Larger", methods);
    large.instanceDataSize = INT32_MAX - 1000;
    larger.super = "Large";
    larger.instanceDataSize = INT32_MAX;
    EXPECT_EQ(add_class(large), "");
    EXPECT_EQ(add_class(larger),
              "a class: Larger and its superclasses have more instance data than 32 bits can count");
}

// Objects

std::string events;
REALclassDefinition* base_record = nullptr;
REALclassDefinition* derived_record = nullptr;

uint8_t* data_of(REALobject object, const REALclassDefinition& record) {
    return reinterpret_cast<uint8_t*>(object) + record.systemWord;
}

TEST_F(LibraryTest, InstancesHaveZeroedDataOfEachClassAndAreDestroyedOnce) {
    std::vector<REALmethodDefinition> none;
    REALclassDefinition base = record("Base", none);
    REALclassDefinition derived = record("Derived", none);
    base.instanceDataSize = 24;
    derived.instanceDataSize = 8;
    derived.super = "Base";
    base_record = &base;
    derived_record = &derived;
    base.constructor = [](REALobject object) {
        events += "b" + std::to_string(*data_of(object, *base_record));
    };
    base.destructor = [](REALobject object) {
        events += "~b" + std::to_string(*data_of(object, *base_record));
    };
    derived.constructor = [](REALobject) { events += "d"; };
    derived.destructor = [](REALobject) { events += "~d"; };
    ASSERT_EQ(add_class(base), "");
    ASSERT_EQ(add_class(derived), "");
    EXPECT_GE(base.systemWord, int32_t(sizeof(void*)));
    EXPECT_GE(derived.systemWord, base.systemWord + base.instanceDataSize);

    events.clear();
    ObjectRef object = host_->new_instance("DERIVED");
    EXPECT_TRUE(host_->is_a(object.get(), "base"));
    for (const REALclassDefinition* owner : {&base, &derived}) {
        uint8_t* data = data_of(object.get(), *owner);
        EXPECT_EQ(uintptr_t(data) % 16, 0u);
        EXPECT_TRUE(
            std::all_of(data, data + owner->instanceDataSize, [](uint8_t byte) { return byte == 0; }));
        std::memset(data, 7, size_t(owner->instanceDataSize));
    }
    ObjectRef other = object;
    EXPECT_EQ(host_->references(object.get()), 2);
    object = {};
    EXPECT_EQ(events, "b0d");
    EXPECT_EQ(host_->open_references(), std::vector<std::string>{"Derived: 1 reference"});
    const REALobject gone = other.get();
    other = {};
    EXPECT_EQ(events, "b0d~d~b7");
    EXPECT_EQ(host_->references(gone), 0);
    EXPECT_FALSE(host_->new_instance("Nothing"));
}

TEST_F(LibraryTest, AccountsShowWhatIsOpenAndWhatIsWrong) {
    const ObjectRef block = host_->new_block("12345");
    const ObjectRef item = host_->new_folder_item("/tmp/");
    const StringRef text = host_->new_string("a text that is longer than a line of a report is", kUtf8);
    REALstringData data = {};
    ASSERT_TRUE(operation<REALboolean(REALstring, uint32_t, REALstringData*)>("PluginGetStringData")(
        text.get(), kUtf8, &data));
    operation<void(REALobject)>("REALLockObject")(block.get());
    const std::vector<std::string> open = host_->open_references();
    ASSERT_EQ(open.size(), 4u);
    EXPECT_EQ(open[0], "FolderItem " + std::filesystem::absolute("/tmp").string() + ": 1 reference");
    EXPECT_EQ(open[1], "MemoryBlock of 5 bytes: 2 references");
    EXPECT_EQ(open[2], "String \"a text that is longer than a lin…\": 1 reference");
    EXPECT_TRUE(open[3].starts_with("String data at ")) << open[3];
    ASSERT_TRUE(host_->faults().empty());

    std::vector<std::string> expected;
    const auto expect_fault = [&](const std::string& text_of_fault) {
        ASSERT_EQ(host_->faults().size(), expected.size() + 1) << text_of_fault;
        EXPECT_TRUE(host_->faults().back().ends_with(text_of_fault)) << host_->faults().back();
        expected.push_back(text_of_fault);
    };
    const auto unlock = operation<void(REALobject)>("REALUnlockObject");
    const auto get_size = operation<int32_t(REALobject)>("memoryBlockGetSize");
    const auto dispose = operation<void(REALstringData*)>("PluginDisposeStringData");
    dispose(&data);
    dispose(&data);
    expect_fault("PluginDisposeStringData: the string data is none, or disposed of already");
    unlock(block.get());
    unlock(nullptr);
    expect_fault("REALUnlockObject: the object is nil");
    EXPECT_EQ(get_size(item.get()), 0);
    expect_fault("memoryBlockGetSize: the object is a FolderItem, no MemoryBlock");
    EXPECT_EQ(get_size(reinterpret_cast<REALobject>(text.get())), 0);
    expect_fault(" is no live object");
    operation<void(REALobject)>("RuntimeRaiseException")(block.get());
    expect_fault("RuntimeRaiseException: the object is a MemoryBlock, no RuntimeException");
    EXPECT_EQ(operation<REALstring(const char*, int32_t)>("REALBuildString")("", -1), nullptr);
    expect_fault("REALBuildString: there are no -1 bytes to take");
    const ObjectRef exception = host_->new_instance("IOException");
    operation<void(REALobject)>("RuntimeRaiseException")(exception.get());
    expect_fault("RuntimeRaiseException: nothing is being called");
    // A handle that is gone stays gone, whatever is made after it.
    const REALobject gone = host_->new_block(1).get();
    std::vector<ObjectRef> later(100);
    for (ObjectRef& made : later) made = host_->new_block(1);
    unlock(gone);
    expect_fault(" is no live object");
    EXPECT_THROW((void)host_->block_size(gone), CallError);
    EXPECT_THROW((void)host_->block_size(nullptr), CallError);
    EXPECT_EQ(host_->open_references().size(), 104u);
}

// What a bundle hands over may be nil, or nothing that lives.
TEST_F(LibraryTest, OperationsStandWrongHandlesAndAddresses) {
    const ObjectRef block = host_->new_block(1);
    const ObjectRef exception = host_->new_instance("RuntimeException");
    const StringRef text = host_->new_string("text", kUtf8);
    const auto no_string = reinterpret_cast<REALstring>(block.get());
    REALstringData data = {};
    FSSpec spec = {};
    const auto get_data =
        operation<REALboolean(REALstring, uint32_t, REALstringData*)>("PluginGetStringData");
    const auto set_text = operation<void(REALobject, const char*, REALstring)>("REALSetPropValueString");
    const auto set_number = operation<void(REALobject, const char*, int32_t)>("REALSetPropValueInt");
    const auto build = operation<REALstring(const char*, int32_t)>("REALBuildString");
    const auto convert = operation<REALstring(REALstring, uint32_t)>("REALConvertString");
    const auto encoding = operation<uint32_t(REALstring)>("REALGetStringEncoding");
    const auto c_text = operation<const char*(REALstring)>("StringGetCString");
    const auto load = operation<void*(void*, const char*)>("REALLoadGlobalMethod");
    const auto length =
        reinterpret_cast<int32_t (*)(REALstring)>(load(nullptr, "LenB(s as String) as Integer"));

    // An answer without a fault: nil stands for no text, and for nothing.
    EXPECT_EQ(encoding(nullptr), kTextEncodingUnknown);
    EXPECT_EQ(convert(nullptr, kUtf8), nullptr);
    EXPECT_STREQ(c_text(nullptr), "");
    EXPECT_EQ(length(nullptr), 0);
    EXPECT_FALSE(get_data(nullptr, kUtf8, &data));
    EXPECT_TRUE(StringRef::adopt(build(nullptr, 0)));
    EXPECT_EQ(load(nullptr, nullptr), nullptr);
    EXPECT_EQ(operation<REALobject(const FSSpec*)>("FolderItemFromFSSpec")(nullptr), nullptr);
    EXPECT_EQ(host_->faults(), std::vector<std::string>{});

    const std::pair<std::function<bool()>, std::string> cases[] = {
        {[&] { return operation<void*(REALobject)>("memoryBlockGetPtr")(nullptr); }, "object is nil"},
        {[&] { return build(nullptr, 1); }, "there are no 1 bytes to take"},
        {[&] { return encoding(no_string) != kTextEncodingUnknown; }, "is no live string"},
        {[&] { return convert(no_string, kUtf8); }, "is no live string"},
        {[&] { return *c_text(no_string); }, "is no live string"},
        {[&] { return length(no_string); }, "is no live string"},
        {[&] { return get_data(no_string, kUtf8, &data); }, "is no live string"},
        {[&] { return get_data(text.get(), kUtf8, nullptr); }, "there is no record"},
        {[&] { return set_text(exception.get(), "Message", no_string), false; }, "is no live string"},
        {[&] { return set_text(exception.get(), nullptr, text.get()), false; }, "no such property \"\""},
        {[&] { return set_text(nullptr, "Message", text.get()), false; }, "object is nil"},
        {[&] { return set_number(exception.get(), "Number", 1), false; }, "no such property \"Number\""},
    };
    for (const auto& [call, fault] : cases) {
        const size_t before = host_->faults().size();
        EXPECT_FALSE(call()) << fault;
        ASSERT_EQ(host_->faults().size(), before + 1) << fault;
        EXPECT_TRUE(host_->faults().back().ends_with(fault)) << host_->faults().back();
    }
    for (const auto& [key, argument] : {std::pair<const char*, void*>("REALLockObject", nullptr),
                                        {"REALLockString", nullptr},
                                        {"REALUnlockString", block.get()},
                                        {"PluginDisposeStringData", nullptr}}) {
        const size_t before = host_->faults().size();
        operation<void(void*)>(key)(argument);
        EXPECT_EQ(host_->faults().size(), before + 1) << key;
    }
    operation<void(REALstring, uint32_t)>("REALSetStringEncoding")(nullptr, kUtf8);
    EXPECT_TRUE(host_->faults().back().ends_with("the string is nil"));
    operation<void(FSSpec*, REALobject)>("REALFSSpecFromFolderItem")(nullptr, nullptr);
    EXPECT_TRUE(host_->faults().back().ends_with("there is no record"));
    operation<void(FSSpec*, REALobject)>("REALFSSpecFromFolderItem")(&spec, block.get());
    EXPECT_TRUE(host_->faults().back().ends_with("the object is a MemoryBlock, no FolderItem"));
    EXPECT_EQ(host_->open_references().size(), 3u);
}

// Exceptions

TEST_F(LibraryTest, AnExceptionReachesTheCallerAfterTheMemberHasReturned) {
    std::vector<REALmethodDefinition> methods = {
        method(
            "Fail(number as Integer) as MemoryBlock",
            +[](REALobject self, int32_t number) {
                const REALobject exception =
                    operation<REALobject(const char*)>("PluginNewInstance")("outofboundsexception");
                const REALstring text =
                    operation<REALstring(const char*, int32_t)>("REALBuildString")("too far", 7);
                operation<void(REALobject, const char*, REALstring)>("REALSetPropValueString")(
                    exception, "message", text);
                operation<void(REALobject, const char*, int32_t)>("REALSetPropValueInt")(
                    exception, "ERRORNUMBER", number);
                operation<void(REALobject)>("RuntimeRaiseException")(exception);
                operation<void(REALstring)>("REALUnlockString")(text);
                operation<void(REALobject)>("REALUnlockObject")(exception);
                operation<void(REALobject)>("REALLockObject")(self);
                return self;
            }),
    };
    REALclassDefinition extension = record("MemoryBlock", methods);
    ASSERT_EQ(extend(extension), "");
    ObjectRef block = host_->new_block(1);
    try {
        call(block, "Fail", {42});
        FAIL() << "nothing was raised";
    } catch (const HostException& exception) {
        EXPECT_STREQ(exception.what(), "OutOfBoundsException: too far");
        EXPECT_EQ(exception.class_name, "OutOfBoundsException");
        EXPECT_EQ(exception.message, "too far");
        EXPECT_EQ(exception.message_encoding, kTextEncodingUnknown);
        EXPECT_EQ(exception.error_number, 42);
        EXPECT_TRUE(host_->is_a(exception.object.get(), "RuntimeException"));
        EXPECT_EQ(host_->get(exception.object.get(), "errornumber"), Value(42));
        const Value message = host_->get(exception.object.get(), "Message");
        EXPECT_EQ(host_->bytes_of(std::get<StringRef>(message).get()), "too far");
        EXPECT_EQ(host_->references(block.get()), 1) << "the result was not given back";
    }
    block = {};
    EXPECT_EQ(host_->open_references(), std::vector<std::string>{});
    EXPECT_EQ(host_->faults(), std::vector<std::string>{});
    EXPECT_EQ(operation<REALobject(const char*)>("PluginNewInstance")("NoSuchException"), nullptr);
}

// Strings

TEST_F(LibraryTest, TextIsConvertedThereAndBack) {
    const std::string text = "Größe é";  // UTF-8
    const std::pair<const char*, std::string> forms[] = {
        {"MacRoman",
         "Gr\x9A\xA7"
         "e \x8E"},
        {"iso-8859-1",
         "Gr\xF6\xDF"
         "e \xE9"},
        {"windows 1252",
         "Gr\xF6\xDF"
         "e \xE9"},
        {"UTF8", text},
        {"UTF-16", std::string("G\0r\0\xF6\0\xDF\0e\0 \0\xE9\0", 14)},
        {"UTF-32BE", std::string("\0\0\0G\0\0\0r\0\0\0\xF6\0\0\0\xDF\0\0\0e\0\0\0 \0\0\0\xE9", 28)},
    };
    const StringRef string = host_->new_string(text, kUtf8);
    for (const auto& [name, bytes] : forms) {
        const auto encoding = encoding_number(name);
        ASSERT_TRUE(encoding) << name;
        EXPECT_EQ(host_->text_of(string.get(), *encoding), bytes) << name;
        EXPECT_EQ(host_->text_of(host_->new_string(bytes, *encoding).get(), kUtf8), text) << name;
        EXPECT_EQ(encoding_number(encoding_name(*encoding)), encoding);
    }
    EXPECT_EQ(host_->text_of(string.get(), kTextEncodingUS_ASCII), std::nullopt);
    EXPECT_EQ(host_->text_of(string.get(), 0x7777), std::nullopt);
    EXPECT_EQ(host_->text_of(string.get(), kTextEncodingUnknown), text);
    EXPECT_EQ(host_->text_of(host_->new_string("abc", kTextEncodingUnknown).get(), kUtf8), std::nullopt);
    EXPECT_EQ(host_->text_of(host_->new_string("\xFF", kUtf8).get(), kTextEncodingMacRoman), std::nullopt);
    EXPECT_EQ(encoding_number("us-ascii"), kTextEncodingUS_ASCII);
    EXPECT_EQ(encoding_number(""), kTextEncodingUnknown);
    EXPECT_EQ(encoding_number("EBCDIC-X"), std::nullopt);
}

TEST_F(LibraryTest, EveryEncodingInTheListCanBeConverted) {
    int found = 0;
    for (uint32_t number = 0; number < 0x1000; ++number) {
        if (encoding_name(number).starts_with("encoding ")) continue;
        ++found;
#ifdef _WIN32  // where the code pages of these may be missing
        static const std::set<std::string> kMaybe = {"ISOLatin6", "ISOLatin8", "GB18030", "ISO-2022-JP",
                                                     "EUC-TW"};
        if (kMaybe.contains(encoding_name(number))) continue;
#endif
        EXPECT_TRUE(host_->text_of(host_->new_string("Aa 09", kUtf8).get(), number)) << encoding_name(number);
    }
    EXPECT_GE(found, 40);
#ifndef _WIN32
    // An encoding that returns to its first state at the end.
    EXPECT_EQ(host_->text_of(host_->new_string("日", kUtf8).get(), *encoding_number("ISO-2022-JP")),
              "\x1B$BF|\x1B(B");
#endif
}

TEST_F(LibraryTest, StringHandlesAreRecordsOnOlderHostsOnly) {
    const std::string text(300, 'x');
    for (const std::optional<double> version : {std::optional<double>(), {2011.0}, {2013.0}, {2013.01}}) {
        restart({.version = version});
        const StringRef string = host_->new_string(text, kUtf8);
        const auto* record = reinterpret_cast<const REALstringRecord*>(string.get());
        if (version == 2013.01) {
            EXPECT_EQ(record->buffer, nullptr);
            EXPECT_EQ(record->length, 0);
        } else {
            ASSERT_EQ(record->length, 300);
            EXPECT_EQ(std::string(record->buffer + 1, 300), text);
            EXPECT_NE(record->buffer[301], 0);
        }
    }
}

TEST_F(LibraryTest, LenBIsFoundByItsPrototype) {
    const auto load = operation<void*(void*, const char*)>("REALLoadGlobalMethod");
    void* found = load(nullptr, "LenB( s as string ) as integer");
    ASSERT_TRUE(found);
    EXPECT_EQ(load(nullptr, "lenb(text As String) As Integer"), found);
    for (const char* other :
         {"LenB(s as string)", "LenB(s as Integer) as Integer", "Len(s as string) as integer",
          "LenB(s as string, t as string) as integer", "LenB("}) {
        EXPECT_EQ(load(nullptr, other), nullptr) << other;
    }
    const auto LenB = reinterpret_cast<int32_t (*)(REALstring)>(found);
    EXPECT_EQ(LenB(host_->new_string("\xC3\xA9", kUtf8).get()), 2);
    EXPECT_EQ(LenB(nullptr), 0);
}

// Files

TEST_F(LibraryTest, FileSpecificationsGoThereAndBack) {
    const auto to_spec = operation<void(FSSpec*, REALobject)>("REALFSSpecFromFolderItem");
    const auto from_spec = operation<REALobject(const FSSpec*)>("FolderItemFromFSSpec");
    const std::string longest(63, 'n');
    const std::string paths[] = {"/usr/lib",          "/usr/lib/../share", "/",
                                 "/no/such/file.txt", "/a/" + longest,     "/a/n" + longest};
    for (const std::string& path : paths) {
        const ObjectRef item = host_->new_folder_item(path);
        FSSpec spec;
        std::memset(&spec, 0xFF, sizeof spec);
        to_spec(&spec, item.get());
        const ObjectRef back = ObjectRef::adopt(from_spec(&spec));
        ASSERT_TRUE(back) << path;
        EXPECT_EQ(host_->path_of(back.get()), std::filesystem::absolute(path).lexically_normal());
    }
    FSSpec spec = {};
    to_spec(&spec, host_->new_folder_item("/usr/lib").get());
    ASSERT_EQ(spec.bytes[6], 3);
    EXPECT_EQ(std::memcmp(spec.bytes + 7, "lib", 3), 0);
    const auto is_refused = [&](size_t at, uint8_t byte) {
        FSSpec changed = spec;
        changed.bytes[at] = byte;
        if (at == 6) std::memset(changed.bytes + 7, 'x', 63);
        return from_spec(&changed) == nullptr;
    };
    EXPECT_TRUE(is_refused(0, 0)) << "another volume";
    EXPECT_TRUE(is_refused(2, 0)) << "no directory of this id";
    EXPECT_TRUE(is_refused(5, 0x80)) << "a negative directory id";
    EXPECT_TRUE(is_refused(6, 64)) << "a name that is too long";
    EXPECT_TRUE(is_refused(8, '/')) << "a name that leaves its directory";
    to_spec(&spec, nullptr);
    EXPECT_EQ(from_spec(&spec), nullptr);
    EXPECT_EQ(host_->faults(), std::vector<std::string>{});
}

// Bundles

TEST_F(LibraryTest, OnlyBundlesAreLoaded) {
    const auto error = [&](const std::string& path) {
        return thrown<LoadError>([&] { host_->load(path_named(path)); });
    };
#ifdef _WIN32
    const std::string too_short = "the file is no whole image for this processor";
    const std::string cut_off = too_short;
#else
    const std::string too_short = "file too short";
    const std::string cut_off = "the file is cut off";
#endif
    const std::string text = testing::TempDir() + "no_bundle.txt";
    std::ofstream(text) << "no bundle";
    EXPECT_EQ(error(text), text + ": no bundle that can be loaded (" + too_short + ")");
    for (const uintmax_t size : {500u, 1000u, 4096u, 20000u}) {
        std::filesystem::copy_file(path_named(MINIHOST_BUNDLE), text,
                                   std::filesystem::copy_options::overwrite_existing);
        std::filesystem::resize_file(text, size);
        EXPECT_EQ(error(text), text + ": no bundle that can be loaded (" + cut_off + ")") << size;
    }
    EXPECT_EQ(error("/no/such/file"), "/no/such/file: No such file or directory");
    const std::string folder = testing::TempDir();
    EXPECT_EQ(error(folder), folder + ": no regular file, so no bundle");
    EXPECT_EQ(error(NO_ENTRY_BUNDLE),
              std::string(NO_ENTRY_BUNDLE) + ": no bundle, it has no entry point REALPluginMain");
    EXPECT_TRUE(host_->globals().empty());
    std::filesystem::remove(text);
}

// Twice: nothing of the first host's bundle is left in the second's.
TEST_F(LibraryTest, TheResolverKnowsWhatTheOptionsSay) {
    for (int round = 0; round < 2; ++round) {
        static int32_t asked_for;
        asked_for = 0;
        const auto refuse = +[](int32_t size) {
            asked_for = size;
            return REALobject();
        };
        Host& host = restart({.version = std::nullopt,
                              .without = {"PluginRegisterClass"},
                              .late = {"memoryBlockGetPtr"},
                              .replace = {{"newMemoryBlock", reinterpret_cast<void*>(refuse)}}});
        host.load(path_named(MINIHOST_BUNDLE));
        EXPECT_EQ(host.announced_version(), 9);
        EXPECT_EQ(host.registered_classes().size(), 1u);
        const ObjectRef block = host.new_block("123456");
        const std::vector<Value> arguments = {0, 4, 2};
        host.call(block.get(), "copybyteszor", arguments);
        EXPECT_EQ(std::memcmp(host.block_data(block.get()), "123456", 6), 0);
        host.call(block.get(), "copybyteszor", arguments);
        EXPECT_EQ(std::memcmp(host.block_data(block.get()), "121234", 6), 0);

        host.load(path_named(PROBE_BUNDLE));
        const std::vector<Value> string_data = {host.new_string("abc", kUtf8), int32_t(kTextEncodingUnknown)};
        EXPECT_EQ(thrown<HostException>([&] { host.call_global("StringData", string_data); }),
                  "OutOfMemoryException: Failed to allocate a memoryblock with 3 bytes in size.");
        EXPECT_EQ(asked_for, 3);
    }
    EXPECT_EQ(host_->faults(), std::vector<std::string>{});
    EXPECT_THROW(Host(), std::logic_error) << "one at a time";
}

}  // namespace
