// Calls of all members under hosts of all kinds, each held against the model: its result, every byte of
// memory, its exception, and the references, objects and strings that remain.
//
// One bundle image serves all hosts. Before each start its static data is put back, so that a fresh start
// costs little more than a copy.
#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "fuzzers/door.h"
#include "fuzzers/image.h"
#include "fuzzers/model.h"

namespace fuzz {

// A member as it is called. `owner` is empty for the global method.
struct Member {
    const minihost::NativeCall* call;
    Rule rule;
    std::string name;
    std::string owner;
    std::vector<minihost::Parameter> parameters;  // an assigned value is the last one
    minihost::Type result;
};

// Memory between two pages that cannot be touched, and the copy for the model. What surrounds the bytes holds
// a pattern, and under AddressSanitizer cannot be touched either.
class Slot {
 public:
    static constexpr size_t kLargest = 4096;

    Slot();
    // Takes these bytes, at the start or the end of the page.
    void fill(std::span<const uint8_t> bytes, bool at_end);

    Place place() { return {real_, copy_.data() + (real_ - page_), int64_t(size_)}; }
    size_t size() const { return size_; }
    void keep();     // as it is now, for restore()
    void restore();  // the real bytes only
    void accept();   // makes the copy what the real bytes are
    // Whether real bytes and copy are the same, around the bytes too. With floats any NaN is as good as
    // another. `floats` lies where the model has written them.
    bool same(const uint8_t* floats) const;
    std::string difference() const;

 private:
    size_t offset() const { return size_t(real_ - page_); }
    uint8_t* page_;
    uint8_t* real_;
    size_t size_ = 0;
    size_t first_checked_ = 0;
    size_t end_checked_ = 0;
    std::vector<uint8_t> copy_;
    std::vector<uint8_t> kept_;
};

class World {
 public:
    static constexpr size_t kSlots = 2;
    static constexpr size_t kBlocks = 4;  // the last one has no data
    static constexpr size_t kTexts = 3;
    static constexpr size_t kItems = 2;

    explicit World(const std::filesystem::path& bundle);
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    // A fresh start of the bundle on a host of this kind. What belongs to the start before is gone.
    void begin(const HostKind& kind);
    // Ends the input: what a host would report at its end. Empty when all is balanced.
    std::string end();

    Slot& slot(size_t i) { return slots_[i]; }
    // A view of `count` bytes of a slot that reports `size`.
    void set_block(size_t i, size_t slot, size_t first, size_t count, int32_t size);
    void set_text(size_t i, std::string_view bytes, uint32_t encoding);

    std::span<const Member> members() const;
    Block& block(size_t i) { return blocks_[i]; }

    // Arguments
    static Argument integer(int32_t value);
    Argument block_argument(size_t i) const;  // nil for any other index; and so on
    Argument text_argument(size_t i) const;
    Argument item_argument(size_t i) const;
    Argument address_argument(size_t slot, size_t offset) const;
    Argument handle_argument(
        size_t slot) const;  // beyond the slots nil: first a nil handle, then a nil master

    // Calls the member at each level that runs here, or at one of them while the model cannot tell one call
    // from the next. What was wrong; empty when nothing was.
    std::string call(const Member& member, const Block* self, std::span<const Argument> arguments,
                     size_t failing_allocation = 0);

    int allocations() const { return model_.allocations(); }
    bool skipped() const { return skipped_; }  // whether the last call was none that a caller may make
    uint64_t calls() const { return calls_; }
    std::span<const std::string> levels() const { return levels_; }

 private:
    struct Started;
    struct Counts {
        size_t objects;
        size_t strings;
        size_t string_data;
        bool operator==(const Counts&) const = default;
    };
    Counts counts() const;
    std::string check_result(const Member& member, const Expected& expected, const minihost::Word& returned);
    std::string check_exception(const Expected& expected);
    std::string check_remains(const Expected& expected, const Block* self, const Text* text);
    std::string run(const Member& member, const Expected& expected, const Block* self,
                    std::span<const Argument> arguments, size_t failing_allocation);
    std::string description(const Member& member, const Block* self, std::span<const Argument> arguments,
                            std::string_view level) const;
    minihost::Host::State& state() const;

    minihost::EntryPoint entry_;
    Image image_;
    FailAllocation* fail_allocation_;
    ChooseLevel* choose_level_;
    std::vector<std::string> levels_;
    std::vector<size_t> level_indices_;
    std::vector<std::unique_ptr<Started>> hosts_;
    Started* now_ = nullptr;
    HostKind kind_;
    Model model_;
    Slot slots_[kSlots];
    Block blocks_[kBlocks];
    Text texts_[kTexts];
    Item items_[kItems];
    Large large_;
    void** masters_;  // of the handles: one for each slot, and a nil one
    Counts balance_ = {};
    bool skipped_ = false;
    size_t next_level_ = 0;
    uint64_t calls_ = 0;
};

}  // namespace fuzz
