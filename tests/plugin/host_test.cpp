// Hosts that cannot do everything, or hand out what a host should not: each member still ends with the result
// that stands for nothing, and touches no byte that it may not.
#include <algorithm>
#include <cstring>
#include <map>

#include "tests/support/bundle_test.h"

namespace {

struct Show {
    std::string operator()(std::monostate) const { return "nil"; }
    std::string operator()(bool truth) const { return truth ? "true" : "false"; }
    std::string operator()(const Pointer& pointer) const { return pointer.address ? "an address" : "nil"; }
    std::string operator()(const StringRef& string) const {
        return string ? std::string(Host::current().bytes_of(string.get())) : "nil";
    }
    std::string operator()(const ObjectRef& object) const {
        if (!object) return "nil";
        if (!Host::current().is_a(object.get(), "MemoryBlock")) return "an object";
        const auto* data = static_cast<const char*>(Host::current().block_data(object.get()));
        return {data, size_t(Host::current().block_size(object.get()))};
    }
    std::string operator()(auto number) const { return std::to_string(number); }
};

// A result as a text: the bytes of a string or a block; "nil" for a nil one, and for none at all.
std::string shown(const Value& value) { return std::visit(Show(), value); }

class HostTest : public MemberTest {
 protected:
    void without(std::set<std::string, std::less<>> keys, double version = 2013.04) {
        start({.version = version, .without = std::move(keys)});
    }
};

// A host that cannot raise goes on after the call, with the member's result.
TEST_F(HostTest, ANilBlockGivesTheNeutralResult) {
    without({"RuntimeRaiseException"});
    const ObjectRef memory = block(Bytes(64));
    const std::map<std::string, std::string> own = {{"FindByteZOR", "-1"},  {"FindNotByteZOR", "-1"},
                                                    {"FindBytesZOR", "-2"}, {"FindStringZOR", "-2"},
                                                    {"AddressZOR", "0"},    {"AddressPtrZOR", "nil"}};
    for (const minihost::Method& method : host().find_class("MemoryBlock")->methods) {
        const std::string& name = method.declaration.name;
        const auto found = own.find(name);
        const bool truth = method.declaration.result.kind == minihost::Kind::Boolean;
        const std::string expected = found != own.end() ? found->second : truth ? "false" : "nil";
        for (const int32_t number : {-1, 0, 1, 8}) {
            if (name.find("Handle") != std::string::npos && number != 0) continue;  // nothing is mapped there
            EXPECT_EQ(shown(call({}, name, arguments_for(method, memory, number))), expected)
                << method.declaration.text << " with " << number;
        }
    }
    EXPECT_EQ(shown(get({}, "BytesZOR")), "0");
    const Value some = Pointer{host().block_data(memory.get())};
    const Value nil = Pointer{};
    for (const char* member : {"MinZOR", "MaxZOR"}) {
        EXPECT_EQ(shown(call(memory, member, {nil, some})), "false");
        EXPECT_EQ(shown(call(memory, member, {some, nil})), "false");
        EXPECT_EQ(shown(call(memory, member, {some, some, 8, false, -1})), "false");
    }
    for (const char* member : {"CopyNthBytesZOR", "CopyNthBitsZOR"}) {
        EXPECT_EQ(shown(call(memory, member, {ObjectRef(), 0, 0, 1, 1, 1})), "false");
    }
    EXPECT_EQ(shown(call(memory, "AppendZOR", {ObjectRef()})), "nil");
    call(memory, "MultiplyUInt8ZOR", {0.0, -1});
    EXPECT_EQ(bytes(memory), Bytes(64));
}

// What a run of calls gives on a host, one after another.
using Results = std::map<std::string, std::string>;
Results results(Host& host) {
    Results found;
    const auto note = [&](const std::string& name, auto&& call) {
        try {
            found[name] = shown(call());
        } catch (const minihost::HostException& exception) {
            found[name] = exception.class_name + "|" + exception.message;
        }
    };
    const ObjectRef memory = host.new_block("abcdefgh");
    const auto call = [&](const std::string& name, const std::vector<Value>& arguments) {
        note(name, [&] { return host.call(memory.get(), name, arguments); });
    };
    const StringRef bcd = host.new_string("bcd", kTextEncodingUnknown);
    call("FindStringZOR", {0, 0, bcd});
    call("FindByteZOR", {0, 8, 'c'});
    call("GetStringZOR", {0, 4});
    call("MidZOR", {5});
    call("AppendZOR", {memory});
    call("SetStringZOR", {bcd, 5});
    call("MultiplyUInt8ZOR", {0.5, 4, 1});
    const Value code = host.new_string("\xC3\xA9xyz", kUtf8);
    host.assign(memory.get(), "OSTypeZOR", std::vector<Value>{0}, code);
    found["bytes"] = shown(memory);
    note("MirrorBytesZOR", [&] { return host.call_on_nil("MemoryBlock", "MirrorBytesZOR"); });
    const ObjectRef record = host.new_block(70);
    const std::vector<Value> start = {0};
    host.assign(record.get(), "FSSpecZOR", start, host.new_folder_item("/tmp/file"));
    note("FSSpecZOR", [&] { return host.call(record.get(), "FSSpecZOR", start); });
    const std::vector<Value> address = {16};
    note("NewMemoryBlockFromPtrZOR", [&] { return host.call_global("NewMemoryBlockFromPtrZOR", address); });
    const ObjectRef large = host.new_instance("MemoryBlockZOR");
    host.call(large.get(), "Create", std::vector<Value>{int64_t{3}});
    note("Memory", [&] { return host.get(large.get(), "Memory"); });
    note("Size", [&] { return host.get(large.get(), "Size"); });
    return found;
}

TEST(HostWithout, OneOperationEverythingElseIsAsOnAnyHost) {
    const Results whole = {{"FindStringZOR", "1"},
                           {"FindByteZOR", "2"},
                           {"GetStringZOR", "abcd"},
                           {"MidZOR", "fgh"},
                           {"AppendZOR", "abcdefghabcdefgh"},
                           {"SetStringZOR", "nil"},
                           {"MultiplyUInt8ZOR", "nil"},
                           {"bytes", "zyx\x8E\x32\x62\x63\x64"},
                           {"MirrorBytesZOR", "NilObjectException|memoryblock is nil"},
                           {"FSSpecZOR", "an object"},
                           {"NewMemoryBlockFromPtrZOR", ""},
                           {"Memory", ""},
                           {"Size", "3"}};
    struct Missing {
        std::set<std::string, std::less<>> keys;  // taking something and giving it back go together
        Results differences;
    };
    const Missing all[] = {
        {{}, {}},
        {{"memoryBlockGetPtr"},
         {{"FindStringZOR", "-2"},
          {"FindByteZOR", "-1"},
          {"GetStringZOR", "nil"},
          {"MidZOR", "nil"},
          {"AppendZOR", "nil"},
          {"FSSpecZOR", "nil"},
          {"bytes", "abcdefgh"}}},
        {{"memoryBlockGetSize"}, {{"FindStringZOR", "-2"}, {"MidZOR", "nil"}, {"AppendZOR", "nil"}}},
        {{"newMemoryBlock"},
         {{"MidZOR", "OutOfMemoryException|Failed to allocate a memoryblock with 3 bytes in size."},
          {"AppendZOR", "nil"}}},
        {{"PtrToMemoryBlock"}, {{"NewMemoryBlockFromPtrZOR", "nil"}, {"Memory", "nil"}}},
        {{"REALLockObject", "REALUnlockObject"}, {}},
        {{"REALLockString", "REALUnlockString"}, {}},
        {{"PluginGetStringData", "PluginDisposeStringData"}, {}},
        {{"REALBuildString"}, {{"GetStringZOR", "nil"}, {"MirrorBytesZOR", "NilObjectException|"}}},
        {{"REALSetStringEncoding"}, {}},
        {{"REALGetStringEncoding"}, {}},
        {{"REALConvertString"}, {{"bytes", "    \x32\x62\x63\x64"}}},  // on an old host only
        {{"StringGetCString"}, {}},
        {{"REALLoadGlobalMethod"}, {}},
        {{"PluginNewInstance"}, {{"MirrorBytesZOR", "nil"}}},
        {{"REALSetPropValueString"}, {{"MirrorBytesZOR", "NilObjectException|"}}},
        {{"REALSetPropValueInt"}, {}},
        {{"RuntimeRaiseException"}, {{"MirrorBytesZOR", "nil"}}},
        {{"FolderItemFromFSSpec"}, {{"FSSpecZOR", "nil"}}},
        {{"REALFSSpecFromFolderItem"}, {{"FSSpecZOR", "nil"}}},
    };
    for (const auto& [keys, differences] : all) {
        for (const double version : {2011.0, 2013.04}) {
            SCOPED_TRACE((keys.empty() ? "nothing" : *keys.begin()) + " missing");
            Host host({.version = version, .without = keys});
            host.load(path_named(MINIHOST_BUNDLE));
            const bool converts_itself = keys.contains("REALConvertString") && version > 2012;
            Results expected = converts_itself ? Results() : differences;
            expected.insert(whole.begin(), whole.end());
            EXPECT_EQ(results(host), expected);
            EXPECT_EQ(host.faults(), std::vector<std::string>{});
        }
    }
}

// Functions that a host replaces. What they hand out is set by the test.
REALstringData handed_out = {};
REALboolean odd_string_data(REALstring, uint32_t, REALstringData* record) { return *record = handed_out, 1; }
void keep_string_data(REALstringData*) {}
int32_t negative_length(REALstring) { return -3; }
uint32_t no_encoding(REALstring) { return kTextEncodingUnknown; }
void* load_negative_length(void*, const char*) { return reinterpret_cast<void*>(negative_length); }
const char* no_bytes(REALstring) { return nullptr; }

template <class Function>
void* replacement(Function* function) {
    return reinterpret_cast<void*>(function);
}

TEST_F(HostTest, StringsWithoutBytesOrLengthAreEmpty) {
    char some[] = "bcd";
    const auto check = [&](auto&& use) {
        const ObjectRef memory = block("abcdef");
        use(memory);
        EXPECT_EQ(call_for<int32_t>(memory, "FindStringZOR", {0, 0, text("b")}), -2);
        call(memory, "SetStringZOR", {text("xy"), 0});
        EXPECT_EQ(bytes(memory), hex("61 62 63 64 65 66"));
        for (const uint32_t encoding : {kUtf8, kTextEncodingUnknown}) {
            call(memory, "FillBytesZOR", {0, 4, 0});
            assign(memory, "OSTypeZOR", {0}, text("wxyz", encoding));
            EXPECT_EQ(bytes(memory), hex("20 20 20 20 65 66"));
        }
    };
    const auto nothing = [](const ObjectRef&) {};
    for (const REALstringData& odd : {REALstringData{nullptr, 3, 0}, REALstringData{some, -3, 0},
                                      REALstringData{some, INT32_MIN, 0}, REALstringData{nullptr, -1, 0}}) {
        handed_out = odd;
        start({.replace = {{"PluginGetStringData", replacement(odd_string_data)},
                           {"PluginDisposeStringData", replacement(keep_string_data)}}});
        check(nothing);
    }
    const std::set<std::string, std::less<>> fallback = {"PluginGetStringData", "PluginDisposeStringData"};
    start({.without = fallback, .replace = {{"REALLoadGlobalMethod", replacement(load_negative_length)}}});
    check(nothing);
    start({.without = fallback, .replace = {{"StringGetCString", replacement(no_bytes)}}});
    check(nothing);
}

// Hosts up to 2013.0 have records behind their strings.
TEST_F(HostTest, StringRecordsWithoutBytesOrLengthAreEmpty) {
    const char some[] = ".bcd";
    start({.version = 2011.0,
           .without = {"REALLockString", "REALUnlockString"},
           .replace = {{"REALGetStringEncoding", replacement(no_encoding)}}});
    const ObjectRef memory = block("abcdef");
    const auto* block_handle = static_cast<REALmemoryBlock>(memory.get());
    const auto method = [&](std::string_view name) {
        const auto& methods = host().find_class("MemoryBlock")->methods;
        return *std::ranges::find(methods, name, [](const auto& m) { return m.declaration.name; });
    };
    const auto find = reinterpret_cast<int32_t (*)(const void*, int32_t, int32_t, const void*)>(
        method("FindStringZOR").function);
    const auto set =
        reinterpret_cast<void (*)(const void*, const void*, int32_t)>(method("SetStringZOR").function);
    const auto set_code =
        reinterpret_cast<void (*)(const void*, int32_t, const void*)>(method("OSTypeZOR").setter);
    const REALstringRecord good = {0, some, 0, 3};
    const REALstringRecord cdef = {0, ".cdef", 0, 4};
    EXPECT_EQ(find(block_handle, 0, 0, &good), 1);
    for (const REALstringRecord& odd :
         {REALstringRecord{0, nullptr, 0, 3}, REALstringRecord{0, some, 0, 0},
          REALstringRecord{0, some, 0, -1}, REALstringRecord{0, some, 0, INT32_MIN},
          REALstringRecord{0, nullptr, 0, -1}}) {
        EXPECT_EQ(find(block_handle, 0, 0, &odd), -2);
        set(block_handle, &odd, 0);
        EXPECT_EQ(bytes(memory), hex("61 62 63 64 65 66"));
        set_code(block_handle, 2, &odd);
        EXPECT_EQ(bytes(memory), hex("61 62 20 20 20 20"));
        set(block_handle, &cdef, 2);
    }
}

// What nobody holds any more is overwritten at once: whoever reads it afterwards finds something else.
int held = 0;
void counting_lock(REALstring string) {
    ++held;
    minihost::retain(string);
}

void overwriting_unlock(REALstring string) {
    held = std::max(held - 1, 0);  // a string that the bundle made has only the reference that it came with
    if (held > 0) return minihost::release(string);
    const std::string_view bytes = Host::current().bytes_of(string);
    std::memset(const_cast<char*>(bytes.data()), '#', bytes.size());
    if (Host::current().options().version < 2013.01) {
        const auto* record = reinterpret_cast<const REALstringRecord*>(string);
        std::memset(const_cast<char*>(record->buffer) + 1, '#', size_t(record->length));
    }
    minihost::release(string);
}

void overwriting_dispose(REALstringData* record) {
    std::memset(record->data, '#', size_t(record->length));
    std::free(record->data);
}

REALboolean copied_string_data(REALstring string, uint32_t encoding, REALstringData* record) {
    const std::string_view bytes = Host::current().bytes_of(string);
    *record = {std::calloc(1, bytes.size() + 4), int32_t(bytes.size()), encoding};
    std::memcpy(record->data, bytes.data(), bytes.size());
    return 1;
}

TEST_F(HostTest, StringsAreHeldUntilTheirBytesAreUsed) {
    for (const double version : {2011.0, 2013.0, 2013.04}) {
        SCOPED_TRACE(version);
        start({.version = version,
               .replace = {{"REALLockString", replacement(counting_lock)},
                           {"REALUnlockString", replacement(overwriting_unlock)},
                           {"PluginGetStringData", replacement(copied_string_data)},
                           {"PluginDisposeStringData", replacement(overwriting_dispose)}}});
        const ObjectRef memory = block("abcdef");
        EXPECT_EQ(call_for<int32_t>(memory, "FindStringZOR", {0, 0, text("cd")}), 2);
        call(memory, "SetStringZOR", {text("xy"), 4});
        EXPECT_EQ(bytes(memory), hex("61 62 63 64 78 79"));
        for (const uint32_t encoding : {kTextEncodingUnknown, kTextEncodingMacRoman}) {
            assign(memory, "OSTypeZOR", {0}, text("\xE9xyz", encoding));
            EXPECT_EQ(bytes(memory), hex("7a 79 78 e9 78 79"));
            assign(memory, "OSTypeZOR", {0}, text("wxyz", encoding));
            EXPECT_EQ(bytes(memory), hex("7a 79 78 77 78 79"));
        }
    }
}

}  // namespace
