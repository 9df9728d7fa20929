#include <algorithm>
#include <cstring>

#include "minihost/program/built_ins/table.h"

namespace minihost {
namespace {

// The place of `count` bytes inside a block. An unknown size is not checked.
uint8_t* place(Runtime& runtime, const ObjectRef& self, int64_t first, int64_t count) {
    if (!self) raise(runtime, "NilObjectException", "memoryblock is nil");
    auto* data = static_cast<uint8_t*>(runtime.host.block_data(self.get()));
    const int64_t size = runtime.host.block_size(self.get());
    if (!data || first < 0 || count < 0 || (size > 0 && first + count > size)) {
        raise(runtime, "OutOfBoundsException",
              "offset " + std::to_string(first) + ", length " + std::to_string(count) + ", of a block of " +
                  std::to_string(size) + " bytes");
    }
    return data + first;
}

template <class Number, class Result>
Value get_number(Runtime& runtime, const ObjectRef& self, Arguments arguments) {
    Number value;
    std::memcpy(&value, place(runtime, self, integer(arguments[0]), sizeof value), sizeof value);
    return Result(value);
}

template <class Number, class Result>
Value set_number(Runtime& runtime, const ObjectRef& self, Arguments arguments) {
    const auto value = Number(std::get<Result>(arguments[1]));
    std::memcpy(place(runtime, self, integer(arguments[0]), sizeof value), &value, sizeof value);
    return {};
}

template <class Number, class Result>
Row accessor(const char* declaration) {
    return {declaration, get_number<Number, Result>, set_number<Number, Result>};
}

Value block_size(Runtime& runtime, const ObjectRef& self, Arguments) {
    if (!self) raise(runtime, "NilObjectException", "memoryblock is nil");
    return runtime.host.block_size(self.get());
}

Value get_bytes(Runtime& runtime, const ObjectRef& self, Arguments arguments) {
    const int32_t length = integer(arguments[1]);
    const uint8_t* bytes = place(runtime, self, integer(arguments[0]), length);
    return runtime.host.new_string({reinterpret_cast<const char*>(bytes), size_t(length)},
                                   kTextEncodingUnknown);
}

// Stores at most `length` bytes of the string; what is missing becomes zeros.
Value set_bytes(Runtime& runtime, const ObjectRef& self, Arguments arguments) {
    const int32_t length = integer(arguments[1]);
    uint8_t* bytes = place(runtime, self, integer(arguments[0]), length);
    std::string text(bytes_of(runtime, arguments[2]));
    text.resize(size_t(length));
    std::copy(text.begin(), text.end(), bytes);
    return {};
}

Value new_block(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    ObjectRef block = runtime.host.new_block(integer(arguments[0]));
    if (!block)
        raise(runtime, "OutOfMemoryException", "no block of " + show(runtime, arguments[0]) + " bytes");
    return block;
}

Value block_from_hex(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    std::string digits;
    for (const char c : bytes_of(runtime, arguments[0])) {
        if (c != ' ' && c != '\n') digits += c;
    }
    const bool valid = digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    if (!valid || digits.size() % 2 != 0)
        raise(runtime, "RuntimeException", "BlockFromHex takes pairs of hexadecimal digits");
    std::string bytes;
    for (size_t i = 0; i < digits.size(); i += 2) bytes += char(std::stoi(digits.substr(i, 2), nullptr, 16));
    return runtime.host.new_block(bytes);
}

// The bytes from an offset on; a negative length stands for all that follow. Of a block whose size is unknown
// a length must say how many there are.
HexDump::Bytes part(Runtime& runtime, const ObjectRef& block, int32_t offset, int32_t length) {
    const int32_t size = block ? runtime.host.block_size(block.get()) : 0;
    const int32_t count = length < 0 ? std::max(0, size - std::max(0, offset)) : length;
    return {place(runtime, block, offset, count), size_t(count)};
}

Value dump(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const int32_t offset = integer(arguments[1]);
    const auto bytes = part(runtime, std::get<ObjectRef>(arguments[0]), offset, integer(arguments[2]));
    runtime.dump.dump(runtime.out, bytes, size_t(offset));
    return {};
}

Value dump_changes(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const auto before = part(runtime, std::get<ObjectRef>(arguments[0]), 0, -1);
    runtime.dump.changes(runtime.out, before, part(runtime, std::get<ObjectRef>(arguments[1]), 0, -1));
    return {};
}

}  // namespace

Rows block_functions() {
    return {
        {"BlockFromHex(digits as String) as MemoryBlock", block_from_hex},
        {"Dump(block as MemoryBlock, offset as Integer = 0, length as Integer = -1)", dump},
        {"DumpChanges(before as MemoryBlock, after as MemoryBlock)", dump_changes},
    };
}

Rows constructors() { return {{"MemoryBlock(size as Integer) as MemoryBlock", new_block}}; }

Rows block_members() {
    return {
        {"Size as Integer", block_size},
        accessor<uint8_t, int32_t>("Byte(offset as Integer) as Integer"),
        accessor<int8_t, int32_t>("Int8Value(offset as Integer) as Integer"),
        accessor<uint8_t, int32_t>("UInt8Value(offset as Integer) as Integer"),
        accessor<int16_t, int32_t>("Int16Value(offset as Integer) as Integer"),
        accessor<uint16_t, int32_t>("UInt16Value(offset as Integer) as Integer"),
        accessor<int32_t, int32_t>("Int32Value(offset as Integer) as Integer"),
        accessor<uint32_t, int64_t>("UInt32Value(offset as Integer) as Int64"),
        accessor<int64_t, int64_t>("Int64Value(offset as Integer) as Int64"),
        accessor<uint64_t, uint64_t>("UInt64Value(offset as Integer) as UInt64"),
        accessor<float, double>("SingleValue(offset as Integer) as Double"),
        accessor<double, double>("DoubleValue(offset as Integer) as Double"),
        {"StringValue(offset as Integer, length as Integer) as String", get_bytes, set_bytes},
    };
}

}  // namespace minihost
