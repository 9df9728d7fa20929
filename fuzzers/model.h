// The rule of every member, told a second time: byte by byte over a copy of the memory, in the order in which
// a member asks its host. So it says what a call must return, raise, write, and leave behind, also where the
// host does not answer.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "fuzzers/operations.h"
#include "minihost/library/state.h"

namespace fuzz {

// Memory that a call may be given, and the copy of it on which the model works.
struct Place {
    uint8_t* real = nullptr;
    uint8_t* copy = nullptr;
    int64_t room = 0;  // bytes from here to the end of what may be touched

    Place at(int64_t offset) const { return {real + offset, copy + offset, room - offset}; }
};

struct Block {
    minihost::ObjectRef handle;
    Place place;       // nil: the block has no data
    int32_t size = 0;  // as it is reported
};

struct Text {
    minihost::StringRef handle;
    std::string bytes;
    uint32_t encoding = 0;
};

struct Item {
    minihost::ObjectRef handle;
    std::string path;
};

// One argument: the word that is passed, and what it stands for.
struct Argument {
    minihost::Word word = {};
    const Block* block = nullptr;
    const Text* text = nullptr;
    const Item* item = nullptr;
    Place place = {};  // what an address or a handle's master pointer points to
};

// An instance of the large block's class.
struct Large {
    minihost::ObjectRef handle;
    int64_t size = 0;
    bool viewed = false;  // whether a block views its memory
};

struct Expected {
    bool sound = true;  // whether the caller kept its promises: other calls are not made
    const uint8_t* floats =
        nullptr;               // where floats are written: which of several NaNs one is does not matter
    bool any_address = false;  // the result is the address of memory that the bundle has chosen
    bool endless_when_plain = false;  // whether the plain kernel walks over billions of empty pieces

    minihost::Word result = {};        // a number, a Boolean or an address
    std::optional<std::string> bytes;  // of a block, string or folder item (its path) that is returned
    uint32_t encoding = 0;             // of a string
    void* view = nullptr;              // where a returned block lies that owns no bytes

    const char* raised = nullptr;  // the exception's class
    std::string message;
    uint32_t message_encoding = kTextEncodingUnknown;

    // References that are left over where the host has only one of lock and unlock; objects, strings and
    // string data that stay where it takes none back.
    int self_references = 0;
    int text_references = 0;
    int objects = 0;
    int strings = 0;
    int string_data = 0;
};

class Rules;
using Rule = void (Rules::*)();
// The rule of a member, or of its assignment; nothing when there is none.
Rule find_rule(const std::string& name, size_t parameters, bool assignment);

class Model {
 public:
    // For a fresh start of the bundle on the host that is given.
    void begin(minihost::Host::State& host, const HostKind& kind);
    // The allocation of the bundle that fails, counted from 1; 0 for none.
    void fail_allocation(int which) { failing_allocation_ = which; }
    int allocations() const { return allocations_; }  // of the last call

    Expected call(Rule rule, const Block* self, Large* large, std::span<const Argument> arguments);

    bool waits_for_late() const;  // whether an operation will still be missing once

 private:
    friend class Rules;
    bool has(Operation operation);    // asks for it, as the bundle does where it only wants the address
    bool works(Operation operation);  // asks and calls
    bool allocates();

    minihost::Host::State* host_ = nullptr;
    double version_ = 0;
    HostKind kind_;
    std::array<bool, kOperations> asked_ = {};
    bool has_LenB_ = false;
    int failing_allocation_ = 0;
    int allocations_ = 0;
};

}  // namespace fuzz
