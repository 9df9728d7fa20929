// The services that members share: exceptions, string access on every road, blocks held for a call, result
// blocks. Each is called by itself through a bundle made for that.
#include <cstring>

#include "tests/support/bundle_test.h"

using minihost::HostException;

namespace {

class ServicesTest : public BundleTest {
 protected:
    void start(Options options = {}) { BundleTest::start(std::move(options), path_named(PROBE_BUNDLE)); }

    Value global(std::string_view name, std::vector<Value> arguments) {
        return host().call_global(name, arguments);
    }
    // The bytes of the block that a global method returned; nothing for nil.
    std::optional<std::string> block_of(std::string_view name, std::vector<Value> arguments) {
        const Value value = global(name, std::move(arguments));
        const auto* block = std::get_if<ObjectRef>(&value);
        if (!block || !*block) return std::nullopt;
        const auto found = bytes(*block);
        return std::string(found.begin(), found.end());
    }
    StringRef ascii(std::string_view bytes) { return text(bytes, kTextEncodingUS_ASCII); }
    // What a raised exception shows of itself.
    std::string raise(const Value& class_name, const Value& message) {
        try {
            global("Raise", {class_name, message, 7});
        } catch (const HostException& exception) {
            EXPECT_EQ(exception.error_number,
                      host().options().without.contains("REALSetPropValueInt") ? 0 : 7);
            return exception.class_name + "|" + exception.message + "|" +
                   minihost::encoding_name(exception.message_encoding);
        }
        return "nothing";
    }
};

TEST_F(ServicesTest, ExceptionsHaveTheirClassMessageAndEncoding) {
    const std::string encoding = minihost::encoding_name(kTextEncodingUS_ASCII);
    for (const double version : {2011.0, 2012.0, 2013.04}) {
        start({.version = version});
        EXPECT_EQ(raise(ascii("NilObjectException"), ascii("memoryblock is nil")),
                  "NilObjectException|memoryblock is nil|" + encoding);
        EXPECT_EQ(raise(ascii("NoSuchException"), ascii("why")), "RuntimeException|why|" + encoding);
        for (const Value& none : {Value(ascii("")), Value(StringRef())}) {
            EXPECT_TRUE(raise(ascii("RuntimeException"), none).starts_with("RuntimeException||"));
        }
    }
}

TEST_F(ServicesTest, ExceptionsGoAsFarAsTheHostCan) {
    const auto without = [&](const char* key) {
        start({.without = {key}});
        const std::string seen = raise(ascii("NilObjectException"), ascii("why"));
        return seen.substr(0, seen.rfind('|'));
    };
    EXPECT_EQ(without("PluginNewInstance"), "nothing");
    EXPECT_EQ(without("RuntimeRaiseException"), "nothing");
    EXPECT_EQ(without("REALBuildString"), "NilObjectException|");
    EXPECT_EQ(without("REALSetPropValueString"), "NilObjectException|");
    EXPECT_EQ(without("REALSetPropValueInt"), "NilObjectException|why");
    EXPECT_EQ(without("REALSetStringEncoding"), "NilObjectException|why");
}

TEST_F(ServicesTest, TheOutOfMemoryMessageTellsTheSize) {
    start();
    for (const auto& [size, number] :
         {std::pair(int64_t(INT32_MAX), "2147483647"), std::pair(INT64_MIN, "-9223372036854775808")}) {
        EXPECT_EQ(raised([&, bytes = size] { global("RaiseOutOfMemory", {bytes}); }),
                  std::string("OutOfMemoryException: Failed to allocate a memoryblock with ") + number +
                      " bytes in size.");
    }
}

TEST_F(ServicesTest, StringDataComesFromTheHostOrFromTheFallback) {
    const int32_t stored = int32_t(kTextEncodingUnknown);
    const int32_t roman = int32_t(kTextEncodingMacRoman);
    for (const bool fallback : {false, true}) {
        SCOPED_TRACE(fallback ? "fallback" : "host");
        Options options;
        if (fallback) options.without = {"PluginGetStringData", "PluginDisposeStringData"};
        start(options);
        const StringRef e = text("\xC3\xA9t\xC3\xA9", kUtf8);
        EXPECT_EQ(block_of("StringData", {e, stored}), "\xC3\xA9t\xC3\xA9");
        EXPECT_EQ(block_of("StringData", {e, int32_t(kUtf8)}), "\xC3\xA9t\xC3\xA9");
        EXPECT_EQ(block_of("StringData", {e, roman}), "\x8Et\x8E");
        EXPECT_EQ(block_of("StringData", {StringRef(), stored}), std::nullopt);
        // No form in Mac OS Roman.
        EXPECT_EQ(block_of("StringData", {text("\xE6\x97\xA5", kUtf8), roman}), std::nullopt);
        if (fallback) {
            EXPECT_EQ(block_of("StringData", {ascii("abc"), stored, 4}), std::string("abc\0\0\0\0", 7));
            EXPECT_EQ(block_of("StringData", {e, roman, 4}), std::string("\x8Et\x8E\0\0\0\0", 7));
        }
    }
    const auto negative = +[](REALstring) { return int32_t{-3}; };
    static void* const kNegativeLength = reinterpret_cast<void*>(negative);
    const auto load = +[](void*, const char*) { return kNegativeLength; };
    start({.without = {"PluginGetStringData", "PluginDisposeStringData"},
           .replace = {{"REALLoadGlobalMethod", reinterpret_cast<void*>(load)}}});
    EXPECT_EQ(block_of("StringData", {ascii("abc"), stored}), std::nullopt);
    for (const char* key : {"StringGetCString", "REALLoadGlobalMethod"}) {
        start({.without = {"PluginGetStringData", "PluginDisposeStringData", key}});
        EXPECT_EQ(block_of("StringData", {ascii("abc"), stored}), std::nullopt) << key;
    }
    start({.without = {"PluginGetStringData", "PluginDisposeStringData", "REALConvertString"}});
    EXPECT_EQ(block_of("StringData", {ascii("abc"), roman}), std::nullopt);
    // A host that cannot tell an encoding counts as telling Mac OS Roman.
    start({.without = {"PluginGetStringData", "PluginDisposeStringData", "REALGetStringEncoding"}});
    EXPECT_EQ(block_of("StringData", {text("\xC3\xA9", kUtf8), roman}), "\xC3\xA9");
}

TEST_F(ServicesTest, TheMacRomanViewIsTerminated) {
    for (const double version : {0.0, 2011.0, 2012.0, 2013.0, 2013.04}) {
        SCOPED_TRACE(version);
        start({.version = version});
        EXPECT_EQ(block_of("MacRoman", {text("\xC3\xA9t\xC3\xA9", kUtf8), false}),
                  std::string("\x8Et\x8E\0", 4));
        EXPECT_EQ(block_of("MacRoman", {ascii("abc"), false}), std::string("abc\0", 4));
        EXPECT_EQ(block_of("MacRoman", {StringRef(), false}), std::string("\0", 1));
        EXPECT_EQ(block_of("MacRoman", {text("\xE6\x97\xA5", kUtf8), false}), std::nullopt);
        // Stored bytes are neither converted nor copied; what follows them is the host's.
        const auto as_stored = block_of("MacRoman", {text("\xC3\xA9", kUtf8), true});
        EXPECT_EQ(as_stored.value_or("").substr(0, 2), "\xC3\xA9");
    }
    start({.version = 2011.0, .without = {"REALConvertString"}});
    EXPECT_EQ(block_of("MacRoman", {ascii("abc"), false}), std::nullopt);
}

TEST_F(ServicesTest, StoredBytesAreReadAsTheHostVersionHasThem) {
    for (const double version : {0.0, 2011.0, 2012.0, 2013.0, 2013.01, 2013.04}) {
        SCOPED_TRACE(version);
        start({.version = version});
        EXPECT_EQ(block_of("StringBuffer", {text(std::string_view("a\0\xC3\xA9", 4), kUtf8)}),
                  std::string("a\0\xC3\xA9", 4));
        EXPECT_EQ(block_of("StringBuffer", {StringRef()}), std::nullopt);
    }
    start({.without = {"PluginGetStringData", "StringGetCString"}});
    EXPECT_EQ(block_of("StringBuffer", {ascii("abc")}), std::nullopt);
}

TEST_F(ServicesTest, ABufferOverABlockKnowsOnlySizesAboveZero) {
    start();
    uint8_t bytes[4] = {};
    const auto length = [&](void* data, int32_t size) {
        return global("BlockBuffer", {host().new_view(data, size)});
    };
    EXPECT_EQ(length(bytes, 4), Value(4));
    EXPECT_EQ(length(bytes, 0), Value(0));
    EXPECT_EQ(length(bytes, -5), Value(0));
    EXPECT_EQ(length(nullptr, 4), Value(-1));
    EXPECT_EQ(global("BlockBuffer", {ObjectRef()}), Value(-1));
}

}  // namespace
