// Calls that a check makes up: hostile ones of every member, the same for the same seed. A call says what its
// arguments are without having them, so that it can be made on any host, and written down as a script.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "minihost/library/host.h"
#include "minihost/platform/pages.h"

namespace minihost::check {

// The splitmix64 generator: its numbers are the same with every compiler.
class Random {
 public:
    explicit Random(uint64_t seed) : state_(seed) {}
    uint64_t next();
    size_t below(size_t count) { return size_t(next() % count); }
    bool one_in(size_t count) { return below(count) == 0; }

 private:
    uint64_t state_;
};

// What a bundle registered and a program can use: a method to call or to assign, or a property.
struct Member {
    const Method* method = nullptr;
    const Property* property = nullptr;
    bool assigns = false;

    const std::string& name() const { return method ? method->declaration.name : property->name; }
    const std::string& owner() const { return method ? method->owner : property->owner; }
};

// What distinguishes it: class, name and the types of the parameters, and whether it assigns.
std::string signature(const Member& member);

// In registered order, the same for each host of a bundle.
std::vector<Member> members_of(const Host& host);

// Arguments
struct Nil {};
struct Text {
    std::string bytes = "";
    uint32_t encoding = kTextEncodingUnknown;
    bool nil = false;  // the handle of an empty string may be
};
struct Block {
    size_t index;  // of the call's blocks
};
struct Address {
    size_t index;  // of the block whose bytes are there
};
struct LowAddress {};  // as a number: memory that begins with the address of its second part
struct New {
    std::string class_name;
};
struct Folder {};  // a folder item
using Argument = std::variant<Nil, int32_t, int64_t, uint64_t, double, bool, Text, Block, Address, LowAddress,
                              New, Folder>;

struct Call {
    Argument self;
    std::vector<Argument> arguments;
    std::optional<Argument> assigned;
    std::vector<std::string> blocks;  // their bytes
};

// Numbers at which range rules go wrong, blocks that are nil, empty, small or the same twice, texts in and
// without encodings. Blocks have the size that they report; an address leads to as many bytes as any block
// has. A number whose name ends in "Ptr", "Handle", "Hdl" or "Address" is 0 or an address. A method of a
// class of the host's own is called on nil too.
Call make_call(const Host& host, const Member& member, Random random);

// The call as one line of a script.
std::string script_of(const Member& member, const Call& call);

// Memory for the blocks of a call, with a pattern around each.
class Arena {
 public:
    enum Place { kMiddle, kStart, kEnd };  // in the middle of a page, or at an inaccessible one

    Arena();
    void place(const std::vector<std::string>& blocks, Place place);
    uint8_t* data(size_t block) const { return data_[block]; }
    std::string bytes(size_t block) const;
    uint8_t* low() const { return low_.data(); }
    // What was written beside a block, or nothing.
    std::string damage() const;

 private:
    std::vector<std::unique_ptr<platform::GuardedPages>> pages_;
    platform::GuardedPages low_;
    std::vector<uint8_t*> data_;
    std::vector<size_t> sizes_;
};

// Makes the call, and tells what came of it: the result or the host exception, and the bytes of all blocks.
// Throws BundleError.
std::string perform(Host& host, const Member& member, const Call& call, Arena& arena);

}  // namespace minihost::check
