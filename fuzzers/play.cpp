#include "fuzzers/play.h"

#include <cmath>
#include <cstring>

namespace fuzz {
namespace {

using minihost::Kind;

// Bytes of the input, one after another; zeros after its end.
class Reader {
 public:
    explicit Reader(std::span<const uint8_t> bytes) : bytes_(bytes) {}

    bool empty() const { return bytes_.empty(); }
    uint8_t byte() {
        if (empty()) return 0;
        const uint8_t first = bytes_.front();
        bytes_ = bytes_.subspan(1);
        return first;
    }
    template <class Number>
    Number number() {
        uint8_t bytes[sizeof(Number)];
        for (uint8_t& one : bytes) one = byte();
        Number result;
        std::memcpy(&result, bytes, sizeof result);
        return result;
    }
    size_t below(size_t limit) { return limit > 256 ? number<uint16_t>() % limit : byte() % limit; }

 private:
    std::span<const uint8_t> bytes_;
};

// Sizes of everyday blocks, and now and then a page.
size_t any_size(Reader& reader) {
    const uint8_t kind = reader.byte();
    if (kind < 200) return kind % 80;
    return kind < 250 ? reader.number<uint16_t>() % 600 : reader.number<uint16_t>() % (Slot::kLargest + 1);
}

// A few bytes of the input, repeated with a change: data in which there is something to find.
std::vector<uint8_t> any_bytes(Reader& reader, size_t size) {
    std::vector<uint8_t> pattern(1 + reader.below(8));
    for (uint8_t& byte : pattern) byte = reader.byte();
    const uint8_t step = reader.byte();
    std::vector<uint8_t> bytes(size);
    for (size_t i = 0; i < size; ++i)
        bytes[i] = uint8_t(pattern[i % pattern.size()] + i / pattern.size() * step);
    for (size_t changes = reader.below(4); changes > 0 && size > 0; --changes)
        bytes[reader.number<uint16_t>() % size] = reader.byte();
    return bytes;
}

// Numbers around the size of a block, and those at which sums wrap.
int32_t any_integer(Reader& reader, size_t size) {
    constexpr int32_t kExtremes[] = {INT32_MIN, INT32_MIN + 1, -8,      -4, -1, INT32_MAX - 3,
                                     INT32_MAX, 1 << 30,       1 << 28, 64, 32, 16};
    const uint8_t kind = reader.byte();
    if (kind < 160) return int32_t(kind) % 40;
    if (kind < 200) return int32_t(reader.below(size + 4));
    if (kind < 220) return int32_t(size) - int32_t(kind - 200);
    if (kind < 240) return kExtremes[size_t(kind) % std::size(kExtremes)];
    return kind < 250 ? -int32_t(reader.byte()) : reader.number<int32_t>();
}

int64_t any_wide(Reader& reader, size_t size) {
    constexpr int64_t kExtremes[] = {INT64_MIN, -1, INT64_MAX, int64_t{1} << 31, (int64_t{1} << 31) - 1};
    const uint8_t kind = reader.byte();
    return kind < 230 ? any_integer(reader, size) : kExtremes[kind % std::size(kExtremes)];
}

double any_double(Reader& reader) {
    constexpr double kSome[] = {0,        1,         0.5, 2,   -1,      1e10, 1e-300,
                                HUGE_VAL, -HUGE_VAL, NAN, 0.1, 1.0 / 3, 255,  256};
    const uint8_t kind = reader.byte();
    if (kind < 120) return kSome[kind % std::size(kSome)];
    return kind < 240 ? reader.number<int16_t>() / 64.0 : reader.number<double>();
}

HostKind any_host(Reader& reader) {
    HostKind kind;
    kind.version = reader.below(std::size(kVersions));
    const uint8_t faults = reader.byte();
    for (int i = faults < 140 ? 0 : faults % 3 + 1; i > 0; --i)
        kind.answers[reader.below(kOperations)] = Answer(reader.below(4));
    return kind;
}

void set_scene(World& world, Reader& reader) {
    for (size_t i = 0; i < World::kSlots; ++i) {
        const size_t size = any_size(reader);
        world.slot(i).fill(any_bytes(reader, size), reader.byte() % 2 != 0);
    }
    const auto reported = [&](size_t count) {
        const uint8_t kind = reader.byte();
        return kind < 190 ? int32_t(count) : kind < 230 ? 0 : -int32_t(kind - 229);
    };
    for (size_t i = 0; i < World::kSlots; ++i) {
        const size_t count = world.slot(i).size();
        world.set_block(i, i, 0, count, reported(count));
    }
    // Another view of the first slot, so that blocks overlap.
    const size_t size = world.slot(0).size();
    const size_t first = reader.below(size + 1);
    const size_t count = reader.below(size - first + 1);
    world.set_block(2, 0, first, count, reported(count));

    constexpr uint32_t kEncodings[] = {kTextEncodingUnknown,
                                       kTextEncodingMacRoman,
                                       kTextEncodingUS_ASCII,
                                       0x08000100,
                                       0x0100,
                                       0xFFFF,
                                       12345};
    for (size_t i = 0; i < World::kTexts; ++i) {
        const std::vector<uint8_t> bytes = any_bytes(reader, reader.byte() % 12);
        world.set_text(i, {reinterpret_cast<const char*>(bytes.data()), bytes.size()},
                       kEncodings[reader.below(std::size(kEncodings))]);
    }
}

Argument any_argument(World& world, Reader& reader, const minihost::Parameter& parameter, bool large) {
    const size_t size = world.slot(reader.byte() % World::kSlots).size();
    Argument argument;
    switch (parameter.type.kind) {
        case Kind::Integer:
            if (parameter.name.ends_with("Handle")) return world.handle_argument(reader.byte() % 5);
            if (parameter.name.find("Bit") != std::string::npos)
                return World::integer(any_integer(reader, reader.byte() % 2 ? 8 * size : size));
            return World::integer(any_integer(reader, size));
        case Kind::Int64:
            argument.word.int64 = any_wide(reader, size);
            // Memory by the gigabyte is slow to get, and says no more.
            if (large && argument.word.int64 > 1 << 16 && argument.word.int64 <= int64_t{1} << 40)
                argument.word.int64 &= 0xFFFF;
            return argument;
        case Kind::Double:
            argument.word.number = any_double(reader);
            return argument;
        case Kind::Boolean:
            argument.word.boolean = REALboolean(reader.byte());
            return argument;
        case Kind::Ptr: {
            const size_t slot = reader.byte() % 5 / 2;
            return world.address_argument(slot, reader.byte() % 4);
        }
        case Kind::String:
            return world.text_argument(reader.byte() % (World::kTexts + 1));
        default:
            if (parameter.type.class_name == "FolderItem")
                return world.item_argument(reader.byte() % (World::kItems + 1));
            return world.block_argument(reader.byte() % (World::kBlocks + 1));
    }
}

}  // namespace

std::string play(World& world, std::span<const uint8_t> input) {
    Reader reader(input);
    world.begin(any_host(reader));
    set_scene(world, reader);
    std::vector<Argument> arguments;
    while (!reader.empty()) {
        const std::span<const Member> members = world.members();
        const Member& member = members[reader.byte() % members.size()];
        const uint8_t self = reader.byte();
        const Block* block = world.block_argument(self < 250 ? self % 3 : self % 5).block;
        arguments.clear();
        for (const minihost::Parameter& parameter : member.parameters)
            arguments.push_back(any_argument(world, reader, parameter, member.owner == "MemoryBlockZOR"));
        const size_t failing = reader.byte() < 16 ? 1 : 0;
        if (std::string wrong = world.call(member, block, arguments, failing); !wrong.empty()) return wrong;
    }
    return world.end();
}

}  // namespace fuzz
