#include "fuzzers/model.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>

#include "kernels/table.h"

using kernels::plain::kKernels;

namespace fuzz {

void Model::begin(minihost::Host::State& host, const HostKind& kind) {
    *this = {};
    host_ = &host;
    version_ = kVersions[kind.version].value_or(0);
    kind_ = kind;
}

bool Model::waits_for_late() const {
    for (size_t i = 0; i < kOperations; ++i) {
        if (kind_.answers[i] == Answer::kLate && !asked_[i]) return true;
    }
    return false;
}

bool Model::has(Operation operation) {
    const bool first = !std::exchange(asked_[size_t(operation)], true);
    const Answer answer = kind_[operation];
    return answer != Answer::kMissing && !(first && answer == Answer::kLate);
}

bool Model::works(Operation operation) { return has(operation) && kind_[operation] != Answer::kFailing; }

bool Model::allocates() { return ++allocations_ != failing_allocation_; }

// A call, by the rules.
class Rules {
 public:
    Rules(Model& model, const Block* self, Large* large, std::span<const Argument> arguments)
        : model_(model), self_(self), large_(large), arguments_(arguments) {}

    Expected expected;

    // Searching

    void find_byte() { find_value(kKernels.find_byte); }
    void find_not_byte() { find_value(kKernels.find_not_byte); }

    void find_bytes() {
        const Seen target = seen(block(2));
        const int64_t length = integer(4) > 0 ? integer(4) : int64_t{target.size} - integer(3);
        const bool usable =
            length > 0 && target.size >= 0 && target.place.real && inside(target.size, integer(3), length);
        if (!usable) return returns(-2);
        if (!touches(target.place, integer(3), length)) return;
        find_pattern(target.place.copy + integer(3), length);
    }

    void find_string() {
        stored(text(2), [&](const std::string& bytes) {
            find_pattern(reinterpret_cast<const uint8_t*>(bytes.data()), std::ssize(bytes));
        });
    }

    void bytes_equal() {
        if (!self_ || !block(2)) return returns(0);
        const Seen first = seen(self_);
        const Seen second = seen(block(2));
        const int32_t count = integer(1);
        if (!first.place.real || !second.place.real) return returns(0);
        if (count == 0) return returns(1);
        if (!inside(first.size, integer(0), count) || !inside(second.size, integer(3), count))
            return returns(0);
        if (!touches(first.place, integer(0), count) || !touches(second.place, integer(3), count)) return;
        returns(std::memcmp(first.place.copy + integer(0), second.place.copy + integer(3), size_t(count)) ==
                0);
    }

    void bytes_zero() {
        const Seen bytes = seen(self_);
        const int32_t count = integer(1);
        if (!bytes.place.real) return returns(0);
        if (count <= 0) return returns(1);
        if (!inside(bytes.size, integer(0), count)) return returns(0);
        if (!touches(bytes.place, integer(0), count)) return;
        returns(kKernels.all_zero(bytes.place.copy + integer(0), size_t(count)));
    }

    // Copying

    void copy_within() { copy_block(integer(0), integer(1), self_, integer(2)); }
    void copy_between() { copy_block(integer(0), integer(1), block(2), integer(3)); }
    void copy_to_address() {
        const Place from = whole(self_, integer(0), integer(1));
        move(arguments_[2].place, from, integer(1));
    }
    void copy_from_address() {
        const Place to = whole(self_, integer(2), integer(1));
        move(to, arguments_[0].place, integer(1));
    }

    // Strings, codes and file specifications

    void get_string() {
        const Place place = cut_after_size(integer(0), integer(1));
        if (place.room > 0) returns_string(place.copy, place.room, kTextEncodingUnknown);
    }

    void set_string() {
        const int32_t size = size_of(self_);
        stored(text(0), [&](const std::string& bytes) {
            const Range range = cut(size, integer(1), std::ssize(bytes));
            const Place place = placed(self_, range);
            std::copy_n(bytes.begin(), place.room, place.copy);
        });
    }

    void get_code() {
        const Place place = record(integer(0), 4);
        if (!place.real) return;
        const uint8_t code[] = {place.copy[3], place.copy[2], place.copy[1], place.copy[0]};
        returns_string(code, 4, kTextEncodingMacRoman);
    }

    void set_code() {
        const Place place = record(integer(0), 4);
        if (!place.real) return;
        std::string code = text(1) ? roman(*text(1)) : "";
        code.resize(4, ' ');
        std::copy_n(code.rbegin(), 4, place.copy);
    }

    void get_specification() {
        const Place place = record(integer(0), sizeof(FSSpec));
        if (!place.real || !model_.works(Operation::kFromSpec)) return;
        FSSpec spec;
        std::memcpy(&spec, place.copy, sizeof spec);
        if (const auto path = model_.host_->path_of(spec)) expected.bytes = path->string();
    }

    void set_specification() {
        const Place place = record(integer(0), sizeof(FSSpec));
        if (!place.real || !model_.works(Operation::kToSpec)) return;
        const Item* item = arguments_[1].item;
        const FSSpec spec = item ? model_.host_->spec_of(item->path) : FSSpec{};
        std::memcpy(place.copy, &spec, sizeof spec);
    }

    // Changing a range in place

    void fill() {
        if (!self_) return raise_nil();
        const Place place = rest_after_size(integer(0), integer(1));
        kKernels.fill(place.copy, size_t(place.room), uint8_t(integer(2)));
    }
    void invert() { change(kKernels.invert); }
    void swap() { change(kKernels.reverse_bytes); }
    void swap16() { change(kKernels.swap_units16); }
    void swap32() { change(kKernels.swap_units32); }

    void mirror_bits_in_bytes() {
        if (!self_) return raise_nil();
        const Place place = cut_after_size(integer(0), integer(1));
        kKernels.reverse_bits_in_bytes(place.copy, size_t(place.room));
    }

    void mirror_bytes() {
        if (!self_) return raise_nil();
        if (integer(1) == 0) return;
        const Place place = rest_after_size(integer(0), integer(1));
        kKernels.reverse_bytes(place.copy, size_t(place.room));
    }

    void mirror_bits() {
        if (!self_) return raise_nil();
        const Range bits = cut(8 * int64_t{size_of(self_)}, integer(0), integer(1));
        if (bits.count <= 0) return;
        const Place place = data_of(self_);
        if (!place.real || !touches(place, 0, (bits.first + bits.count + 7) / 8)) return;
        kKernels.reverse_bits(place.copy, size_t(bits.first), size_t(bits.count));
    }

    // Gathering

    void copy_nth_bytes() {
        if (!block(0) || !self_) return raise_nil();
        const Seen from = seen(block(0));
        const Seen to = seen(self_);
        const int64_t source = integer(1), destination = integer(2), count = integer(3), step = integer(4),
                      pieces = integer(5);
        if (!from.place.real || !to.place.real) return returns(0);
        if (pieces <= 0) return returns(1);
        if (count < 0 || source < 0 || destination < 0) return returns(0);
        const int64_t last = source + (pieces - 1) * step;
        const int64_t lowest = std::min(source, last);
        const int64_t length = std::max(source, last) + count - lowest;
        if (!inside(from.size, lowest, length) || !inside(to.size, destination, pieces * count))
            return returns(0);
        returns(1);
        expected.endless_when_plain = count == 0 && pieces > 1 << 16;
        if (count == 0) return;
        if (!touches(from.place, lowest, length) || !touches(to.place, destination, pieces * count)) return;
        kKernels.gather(to.place.copy + destination, from.place.copy + source, size_t(count), ptrdiff_t(step),
                        size_t(pieces));
    }

    void copy_nth_bits() {
        if (!block(0) || !self_) return raise_nil();
        const Seen from = seen(block(0));
        const Seen to = seen(self_);
        const int64_t source = integer(1), destination = integer(2), count = integer(3), pieces = integer(5);
        const int64_t distance = count + std::max(integer(4), 0);
        if (!from.place.real || !to.place.real) return returns(0);
        if (pieces <= 0 || count <= 0) return returns(1);
        const int64_t length = (pieces - 1) * distance + count;
        if (!inside(8 * int64_t{from.size}, source, length) ||
            !inside(8 * int64_t{to.size}, destination, pieces * count))
            return returns(0);
        returns(1);
        if (!touches(from.place, 0, (source + length + 7) / 8)) return;
        if (!touches(to.place, 0, (destination + pieces * count + 7) / 8)) return;
        kKernels.gather_bits(to.place.copy, uint64_t(destination), from.place.copy, uint64_t(source),
                             uint64_t(count), uint64_t(distance), size_t(pieces));
    }

    void expand_bits() {
        const int64_t count = integer(1);
        if (count <= 0 || !self_ || !block(0)) return returns(0);
        const Seen from = seen(self_);
        const Seen to = seen(block(0));
        if (!from.place.real || !to.place.real) return returns(0);
        if (!inside(from.size, 0, count) || !inside(to.size, 0, 8 * count)) return returns(0);
        returns(1);
        const int64_t whole = (count + 3) / 4 * 4;
        const Range source = cut(from.size, 0, whole);
        const Range destination = cut(to.size, 0, 8 * whole);
        if (!touches(from.place, 0, source.count) || !touches(to.place, 0, destination.count)) return;
        kKernels.expand_bits(to.place.copy, size_t(destination.count), from.place.copy, size_t(source.count),
                             uint8_t(integer(2)), uint8_t(integer(3)));
    }

    // Slices and addresses

    void mid_from() { mid(integer(0), INT32_MAX); }
    void mid_part() { mid(integer(0), integer(1)); }

    void left() {
        if (!self_) return raise_nil();
        if (integer(0) > 0) slice(self_, 0, std::min(integer(0), size_of(self_)));
    }

    void right() {
        if (!self_) return raise_nil();
        if (integer(0) <= 0) return;
        const int32_t size = size_of(self_);
        if (size > 0) slice(self_, size - std::min(integer(0), size), std::min(integer(0), size));
    }

    void append() {
        if (!self_ || !block(0)) return raise_nil();
        const int32_t size = size_of(self_);
        const int32_t other = size_of(block(0));
        if (size <= 0) {
            if (other > 0) slice(block(0), 0, other);
            return;
        }
        if (other <= 0) return slice(self_, 0, size);
        const Place front = data_of(self_);
        const Place back = data_of(block(0));
        if (!front.real || !back.real) return;
        if (model_.works(Operation::kNewBlock)) returns_block(text_at(front, size) + text_at(back, other));
    }

    void address() {
        if (!self_) return;
        const auto size = uint64_t(int64_t{size_of(self_)});
        const int64_t offset = arguments_[0].word.int64;
        if (offset < 0 || (size != 0 && size < uint64_t(offset))) return;
        expected.result.uint64 = uint64_t(uintptr_t(data_of(self_).real) + uintptr_t(offset));
    }

    void size() { returns(size_of(self_)); }

    void block_from_address() {
        const auto address = uintptr_t(uint32_t(integer(0)));
        if (address == 0 || !model_.works(Operation::kViewBlock)) return;
        expected.bytes = "";
        expected.view = reinterpret_cast<void*>(address);
    }

    // Numbers

    void minimum() { combine(kKernels.minimum); }
    void maximum() { combine(kKernels.maximum); }
    void scale8() { scale(kKernels.scale_uint8, 1); }
    void scale16() { scale(kKernels.scale_uint16, 2); }

    void complete_sum() {
        groups(integer(1), integer(2), [&](uint8_t* data, size_t count) {
            kKernels.complete_sum(data, count, integer(0), arguments_[3].word.boolean != 0);
        });
    }

    void replace_similar() {
        groups(integer(9), integer(10), [&](uint8_t* data, size_t count) {
            kKernels.replace_similar(data, count, {integer(0), integer(1), integer(2), integer(3)},
                                     {integer(4), integer(5), integer(6), integer(7)}, number(8));
        });
    }

    void sweep() {
        if (!self_) return raise_nil();
        if (integer(0) < 0) return raise_negative();
        const Seen to = seen(self_);
        const Place place = cut(to, integer(0), int64_t{integer(1)} * 8);
        kKernels.log_sweep(place.copy, size_t(place.room / 8), integer(2), integer(3), number(4));
        expected.floats = place.copy;
    }

    void to_cartesian() { convert(kKernels.polar_to_cartesian); }
    void to_polar() { convert(kKernels.cartesian_to_polar); }

    // The large block

    void create() {
        const int64_t size = arguments_[0].word.int64;
        close();
        if (size <= 0 || size > INT32_MAX || !model_.allocates()) return returns(0);
        hold(size);
    }

    void resize() {
        const int64_t size = arguments_[0].word.int64;
        if (size <= 0 || uint64_t(size) > SIZE_MAX || !model_.allocates()) return returns(0);
        if (size > kMostMemory) return returns(0);  // as much as the tests let a program have
        if (large_->viewed) model_.works(Operation::kUnlockObject);
        hold(size);
    }

    void close() {
        if (large_->viewed) model_.works(Operation::kUnlockObject);
        large_->viewed = false;
        large_->size = 0;
    }

    void large_size() { expected.result.int64 = large_->size; }
    void large_address() {
        expected.any_address = large_->size > 0;
        expected.result.int64 = 0;
    }
    void large_memory() {
        if (!large_->viewed) return;
        expected.bytes = "";
        model_.works(Operation::kLockObject);
    }

 private:
    static constexpr int64_t kMostMemory = int64_t{1} << 32;

    struct Range {
        int64_t first = 0;
        int64_t count = 0;
    };
    // A block as the host shows it: first its data, then its size.
    struct Seen {
        Place place;
        int32_t size = 0;
    };

    int32_t integer(size_t i) const { return arguments_[i].word.integer; }
    double number(size_t i) const { return arguments_[i].word.number; }
    const Block* block(size_t i) const { return arguments_[i].block; }
    const Text* text(size_t i) const { return arguments_[i].text; }

    void returns(int32_t value) { expected.result.int64 = value; }

    // The ranges

    static bool inside(int64_t size, int64_t offset, int64_t count) {
        return offset >= 0 && count >= 0 && (size <= 0 || offset + count <= size);
    }
    static Range cut(int64_t size, int64_t offset, int64_t count) {
        if (offset < 0) return {};
        if (size > 0) count = std::min(count, size - offset);
        return {offset, std::max<int64_t>(count, 0)};
    }
    // Whether the caller has that memory.
    bool touches(const Place& place, int64_t first, int64_t count) {
        if (count > 0 && (first < 0 || count > place.room - first)) expected.sound = false;
        return expected.sound;
    }
    // The part of a place; empty where there is none, or the caller has no such memory.
    Place part(const Place& place, const Range& range) {
        if (!place.real || range.count <= 0 || !touches(place, range.first, range.count)) return {};
        return {place.real + range.first, place.copy + range.first, range.count};
    }

    // What the host says

    Place data_of(const Block* asked) {
        return asked && model_.works(Operation::kGetPtr) ? asked->place : Place{};
    }
    int32_t size_of(const Block* asked) {
        return asked && model_.works(Operation::kGetSize) ? asked->size : 0;
    }
    Seen seen(const Block* asked) {
        const Place place = data_of(asked);
        return {place, size_of(asked)};
    }

    Place cut(const Seen& seen, int64_t offset, int64_t count) {
        return part(seen.place, cut(seen.size, offset, count));
    }
    Place placed(const Block* asked, const Range& range) {
        return range.count > 0 ? part(data_of(asked), range) : Place{};
    }
    Place cut_after_size(int64_t offset, int64_t count) {
        return placed(self_, cut(size_of(self_), offset, count));
    }
    Place rest_after_size(int64_t offset, int64_t count) {
        const int64_t size = size_of(self_);
        return placed(self_, cut(size, offset, count > 0 ? count : size - offset));
    }
    Place record(int64_t offset, int64_t count) {
        if (!inside(size_of(self_), offset, count)) return {};
        return part(data_of(self_), {offset, count});
    }
    static std::string text_at(const Place& place, int64_t count) {
        return {reinterpret_cast<const char*>(place.copy), size_t(count)};
    }

    // Members of one kind

    template <class Find>
    void find_value(Find find) {
        const Seen bytes = seen(self_);
        const int32_t offset = integer(0);
        if (!bytes.place.real || integer(1) <= 0) return returns(-1);
        const Range range = cut(bytes.size > 0 ? bytes.size : INT32_MAX, offset, integer(1));
        if (range.count == 0) return returns(-1);
        if (!touches(bytes.place, range.first, range.count)) return;
        const size_t found = find(bytes.place.copy + offset, size_t(range.count), uint8_t(integer(2)));
        returns(found == kernels::kNotFound ? -1 : offset + int32_t(found));
    }

    void find_pattern(const uint8_t* pattern, int64_t length) {
        const Seen bytes = seen(self_);
        const int64_t offset = integer(0);
        const int64_t limit = integer(1) != 0 ? integer(1) : bytes.size;
        const int64_t bound = bytes.size != 0 ? bytes.size : offset + limit;
        if (bound <= offset || offset < 0 || limit <= 0 || length <= 0 || !bytes.place.real)
            return returns(-2);
        const int64_t last = std::min(offset + limit, bound);
        if (!touches(bytes.place, offset, last - offset)) return;
        const size_t found =
            kKernels.find(bytes.place.copy + offset, size_t(last - offset), pattern, size_t(length));
        returns(found == kernels::kNotFound ? -1 : int32_t(offset + int64_t(found)));
    }

    Place whole(const Block* asked, int64_t offset, int64_t count) {
        const Seen bytes = seen(asked);
        if (!bytes.place.real || !inside(bytes.size, offset, count)) return {};
        return part(bytes.place, {offset, count});
    }
    void copy_block(int64_t from, int64_t count, const Block* destination, int64_t to) {
        const Place source = whole(self_, from, count);
        move(whole(destination, to, count), source, count);
    }
    void move(const Place& to, const Place& from, int64_t count) {
        if (!to.real || !from.real || count <= 0) return;
        if (touches(to, 0, count) && touches(from, 0, count))
            kKernels.copy(to.copy, from.copy, size_t(count));
    }

    template <class Kernel>
    void change(Kernel kernel) {
        const Seen bytes = seen(self_);
        const Place place = cut(bytes, integer(0), integer(1));
        kernel(place.copy, size_t(place.room));
    }

    // Works on a block that is held: on its data, and the size that is 0 without data.
    template <class Work>
    void held(Work work) {
        if (model_.works(Operation::kLockObject)) ++expected.self_references;
        const int32_t size = std::max(0, size_of(self_));
        const Place place = data_of(self_);
        work(Seen{place, place.real ? size : 0});
        if (model_.works(Operation::kUnlockObject)) --expected.self_references;
    }

    template <class Kernels>
    void combine(const Kernels& kernels) {
        const Place first = arguments_[0].place;
        const Place second = arguments_[1].place;
        if (!self_) return raise_nil();
        if (!first.real || !second.real) return raise("NilObjectException", "ptr is nil");
        if (integer(4) < 0) return raise_negative();
        held([&](const Seen& seen) {
            constexpr int32_t kWidths[] = {8, 16, 32, 64};
            const auto* width = std::ranges::find(kWidths, integer(2));
            if (width == std::end(kWidths)) return returns(0);
            returns(1);
            const int64_t bytes = *width / 8;
            const int64_t length = integer(5) > 0 ? integer(5) : seen.size - integer(4);
            Range range = cut(seen.size, integer(4), length);
            range.count -= range.count % bytes;
            const Place to = part(seen.place, range);
            if (to.room == 0 || !touches(first, 0, to.room) || !touches(second, 0, to.room)) return;
            const size_t kind = size_t(2 * (width - kWidths)) + (arguments_[3].word.boolean != 0);
            kernels[kind](to.copy, first.copy, second.copy, size_t(to.room / bytes));
        });
    }

    template <class Kernel>
    void scale(Kernel kernel, int64_t sample) {
        if (!self_) return raise_nil();
        if (integer(1) < 0) return raise_negative();
        held([&](const Seen& seen) {
            Range range = cut(seen.size, integer(1), integer(2) > 0 ? integer(2) : seen.size - integer(1));
            range.count -= range.count % sample;
            const Place place = part(seen.place, range);
            kernel(place.copy, size_t(place.room / sample), number(0));
        });
    }

    template <class Change>
    void groups(int64_t offset, int64_t length, Change change) {
        if (!self_) return raise_nil();
        if (offset < 0) return raise_negative();
        held([&](const Seen& seen) {
            const int64_t bytes = length > 0 ? length : seen.size - offset;
            if (bytes <= 0) return;
            Range range = cut(seen.size, offset, (bytes + 3) / 4 * 4);
            range.count -= range.count % 4;
            const Place place = part(seen.place, range);
            change(place.copy, size_t(place.room / 4));
        });
    }

    template <class Kernel>
    void convert(Kernel kernel) {
        if (!self_) return raise_nil();
        if (!block(2)) return;
        if (integer(0) < 0) return raise_negative();
        const Seen to = seen(self_);
        const Seen from = seen(block(2));
        const int64_t bytes = int64_t{integer(1)} * 8;
        Range source = cut(from.size, 0, bytes);
        Range destination = cut(to.size, integer(0), bytes);
        if (!from.place.real || !to.place.real) return;
        source.count = destination.count = std::min(source.count, destination.count) / 8 * 8;
        if (!touches(from.place, 0, source.count) || !touches(to.place, integer(0), source.count)) return;
        kernel(to.place.copy + destination.first, from.place.copy, size_t(source.count / 8));
        expected.floats = to.place.copy + destination.first;
        // Where a float is read across two that were written, it matters which NaN one is, and nobody says.
        const std::ptrdiff_t distance = expected.floats - from.place.copy;
        const bool overlap =
            std::abs(distance) < source.count && distance % std::ptrdiff_t(sizeof(float)) != 0;
        if (overlap && has_nan(expected.floats, source.count)) expected.sound = false;
    }

    static bool has_nan(const uint8_t* floats, int64_t bytes) {
        float number;
        for (int64_t i = 0; i < bytes; i += int64_t{sizeof number}) {
            std::memcpy(&number, floats + i, sizeof number);
            if (std::isnan(number)) return true;
        }
        return false;
    }

    void mid(int32_t offset, int32_t length) {
        if (!self_) return raise_nil();
        if (length <= 0 || offset < 0) return;
        const int32_t size = size_of(self_);
        if (size > offset) slice(self_, offset, std::min(length, size - offset));
    }

    void slice(const Block* from, int64_t offset, int64_t count) {
        const Place place = data_of(from);
        if (!place.real || count <= 0) return;
        if (model_.works(Operation::kNewBlock)) return returns_block(text_at(place.at(offset), count));
        raise("OutOfMemoryException",
              "Failed to allocate a memoryblock with " + std::to_string(count) + " bytes in size.");
    }

    void returns_block(std::string bytes) {
        if (model_.works(Operation::kGetPtr)) {
            expected.bytes = std::move(bytes);
        } else if (!model_.works(Operation::kUnlockObject)) {
            ++expected.objects;
        }
    }

    void returns_string(const uint8_t* bytes, int64_t count, uint32_t encoding) {
        if (!model_.works(Operation::kBuildString)) return;
        expected.bytes.emplace(reinterpret_cast<const char*>(bytes), size_t(count));
        const bool ascii = kKernels.all_ascii(bytes, size_t(count));
        const bool labelled = model_.works(Operation::kSetEncoding);
        expected.encoding = labelled ? ascii ? kTextEncodingUS_ASCII : encoding : kTextEncodingUnknown;
    }

    void hold(int64_t size) {
        large_->size = size;
        large_->viewed = model_.works(Operation::kViewBlock);
        returns(1);
    }

    // Exceptions

    void raise_nil() { raise("NilObjectException", "memoryblock is nil"); }
    void raise_negative() { raise("UnsupportedOperationException", "offset < 0"); }

    void raise(const char* class_name, const std::string& message) {
        const bool built = model_.works(Operation::kBuildString);
        const bool labelled = built && model_.works(Operation::kSetEncoding);
        bool made = model_.works(Operation::kNewInstance);
        if (!made) {
            class_name = "RuntimeException";
            made = model_.works(Operation::kNewInstance);
        }
        bool stays = false;
        bool told = false;
        if (made) {
            told = model_.works(Operation::kSetText) && built;
            model_.works(Operation::kSetNumber);
            if (model_.works(Operation::kRaise)) expected.raised = class_name;
            stays = !model_.works(Operation::kUnlockObject);
        }
        if (stays) ++expected.objects;
        const bool kept = built && !model_.works(Operation::kUnlockString);
        if (kept || (stays && told)) ++expected.strings;
        if (!told) return;
        expected.message = message;
        expected.message_encoding = labelled ? kTextEncodingUS_ASCII : kTextEncodingUnknown;
    }

    // Strings

    std::optional<std::string> in_encoding(const std::string& bytes, uint32_t from, uint32_t to) {
        minihost::String string;
        string.bytes = bytes;
        string.encoding = from;
        return model_.host_->text_of(string, to);
    }

    // What the host hands out of a string, and the copy that stands in for it.
    std::optional<std::string> string_data(const std::string& bytes, uint32_t encoding, uint32_t wanted) {
        if (model_.has(Operation::kGetData)) {
            if (model_.kind_[Operation::kGetData] == Answer::kFailing) return std::nullopt;
            return in_encoding(bytes, encoding, wanted);
        }
        const bool readable = model_.has(Operation::kCString);
        model_.has_LenB_ = model_.has_LenB_ || model_.works(Operation::kLoadGlobal);
        if (!readable || !model_.has_LenB_) return std::nullopt;
        if (wanted == kTextEncodingUnknown) return copied(bytes);
        const uint32_t told = model_.works(Operation::kGetEncoding) ? encoding : 0;
        if (told == wanted) return copied(bytes);
        const auto converted =
            model_.works(Operation::kConvert) ? in_encoding(bytes, encoding, wanted) : std::nullopt;
        if (!converted) return std::nullopt;
        auto copy = copied(*converted);
        if (!model_.works(Operation::kUnlockString)) ++expected.strings;
        return copy;
    }
    std::optional<std::string> copied(const std::string& bytes) {
        const bool read = model_.works(Operation::kCString);
        if ((!bytes.empty() && !read) || !model_.allocates()) return std::nullopt;
        return bytes;
    }
    // Where the host gave the data, and will not have it back, it stays.
    void dispose() {
        const bool counted =
            model_.host_->disposes_of_string_data() && model_.kind_[Operation::kGetData] == Answer::kWorks;
        if (!model_.works(Operation::kDisposeData) && counted) ++expected.string_data;
    }

    // Uses a string's bytes as they are stored, while they are held.
    template <class Use>
    void stored(const Text* asked, Use use) {
        if (!asked) return use("");
        if (model_.version_ > 2013.0) {
            const auto data = string_data(asked->bytes, asked->encoding, kTextEncodingUnknown);
            use(data.value_or(""));
            if (data) dispose();
            return;
        }
        if (model_.works(Operation::kLockString)) ++expected.text_references;
        use(asked->bytes);
        if (model_.works(Operation::kUnlockString)) --expected.text_references;
    }

    // A string's text in Mac OS Roman, the bytes as they are where nobody says what they are.
    std::string roman(const Text& value) {
        const bool tells = model_.works(Operation::kGetEncoding);
        if ((tells ? value.encoding : 0) != kTextEncodingUnknown) return converted(value, &value);
        bool ascii = false;
        std::optional<Text> built;
        stored(&value, [&](const std::string& bytes) {
            ascii = kKernels.all_ascii(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
            if (ascii) {
                if (model_.works(Operation::kLockString)) ++expected.text_references;
            } else if (model_.works(Operation::kBuildString)) {
                const bool labelled = model_.works(Operation::kSetEncoding);
                built.emplace().bytes = bytes;
                built->encoding = labelled ? kTextEncodingMacRoman : kTextEncodingUnknown;
            }
        });
        if (ascii) return taken(value);
        return built ? converted(*built, nullptr) : "";
    }

    std::string taken(const Text& value) {
        std::optional<std::string> data = value.bytes;
        const bool handed_out = model_.version_ >= 2012.0;
        if (handed_out) data = string_data(value.bytes, value.encoding, kTextEncodingUnknown);
        if (model_.works(Operation::kUnlockString)) --expected.text_references;
        if (handed_out && data) dispose();
        return data.value_or("");
    }

    // `locked` is the string that is only held, nil for one that was built for this.
    std::string converted(const Text& value, const Text* locked) {
        if (locked && model_.works(Operation::kLockString)) ++expected.text_references;
        std::optional<std::string> data;
        const bool handed_out = model_.version_ >= 2012.0;
        bool made = false;
        if (handed_out) {
            data = string_data(value.bytes, value.encoding, kTextEncodingMacRoman);
        } else if (model_.works(Operation::kConvert)) {
            data = in_encoding(value.bytes, value.encoding, kTextEncodingMacRoman);
            made = data.has_value();
            // The record's text is not terminated.
            if (made && !data->empty() && !model_.allocates()) data = "";
        }
        const bool gives_back = model_.works(Operation::kUnlockString);
        if (locked) {
            expected.text_references -= gives_back;
        } else {
            expected.strings += !gives_back;
        }
        if (made && !model_.works(Operation::kUnlockString)) ++expected.strings;
        if (handed_out && data) dispose();
        return data.value_or("");
    }

    Model& model_;
    const Block* self_;
    Large* large_;
    std::span<const Argument> arguments_;
};

namespace {

using Table = std::map<std::string, Rule, std::less<>>;

// By name and number of parameters.
const Table kCalls = {
    {"FindByteZOR/3", &Rules::find_byte},
    {"FindNotByteZOR/3", &Rules::find_not_byte},
    {"FindBytesZOR/5", &Rules::find_bytes},
    {"FindStringZOR/3", &Rules::find_string},
    {"BytesEqualZOR/4", &Rules::bytes_equal},
    {"BytesZeroZOR/2", &Rules::bytes_zero},
    {"CopyBytesZOR/3", &Rules::copy_within},
    {"CopyBytesZOR/4", &Rules::copy_between},
    {"CopyBytesToMacPtrZOR/3", &Rules::copy_to_address},
    {"CopyBytesFromMacPtrZOR/3", &Rules::copy_from_address},
    {"CopyBytesToMacHandleZOR/3", &Rules::copy_to_address},
    {"CopyBytesFromMacHandleZOR/3", &Rules::copy_from_address},
    {"GetStringZOR/2", &Rules::get_string},
    {"SetStringZOR/2", &Rules::set_string},
    {"OSTypeZOR/1", &Rules::get_code},
    {"FSSpecZOR/1", &Rules::get_specification},
    {"FillBytesZOR/3", &Rules::fill},
    {"InvertBytesZOR/2", &Rules::invert},
    {"SwapBytesZOR/2", &Rules::swap},
    {"SwapBytes16ZOR/2", &Rules::swap16},
    {"SwapBytes32ZOR/2", &Rules::swap32},
    {"MirrorBitsInBytesZOR/2", &Rules::mirror_bits_in_bytes},
    {"MirrorBytesZOR/2", &Rules::mirror_bytes},
    {"MirrorBitsZOR/2", &Rules::mirror_bits},
    {"CopyNthBytesZOR/6", &Rules::copy_nth_bytes},
    {"CopyNthBitsZOR/6", &Rules::copy_nth_bits},
    {"ExpandBitsZOR/4", &Rules::expand_bits},
    {"MidZOR/1", &Rules::mid_from},
    {"MidZOR/2", &Rules::mid_part},
    {"LeftZOR/1", &Rules::left},
    {"RightZOR/1", &Rules::right},
    {"AppendZOR/1", &Rules::append},
    {"AddressZOR/1", &Rules::address},
    {"AddressPtrZOR/1", &Rules::address},
    {"BytesZOR/0", &Rules::size},
    {"NewMemoryBlockFromPtrZOR/1", &Rules::block_from_address},
    {"MinZOR/6", &Rules::minimum},
    {"MaxZOR/6", &Rules::maximum},
    {"MultiplyUInt8ZOR/3", &Rules::scale8},
    {"MultiplyUInt16ZOR/3", &Rules::scale16},
    {"_Calc2te/4", &Rules::complete_sum},
    {"_Calc3te/11", &Rules::replace_similar},
    {"_CalcLogSweepTableZOR/5", &Rules::sweep},
    {"_ConvertPolarToCartesian/3", &Rules::to_cartesian},
    {"_ConvertCartesianToPolar/3", &Rules::to_polar},
    {"Create/1", &Rules::create},
    {"Resize/1", &Rules::resize},
    {"Close/0", &Rules::close},
    {"Address/0", &Rules::large_address},
    {"Size/0", &Rules::large_size},
    {"Memory/0", &Rules::large_memory},
};
const Table kAssignments = {
    {"OSTypeZOR/1", &Rules::set_code},
    {"FSSpecZOR/1", &Rules::set_specification},
};

}  // namespace

Rule find_rule(const std::string& name, size_t parameters, bool assignment) {
    const Table& table = assignment ? kAssignments : kCalls;
    const auto found = table.find(name + '/' + std::to_string(parameters));
    return found == table.end() ? nullptr : found->second;
}

Expected Model::call(Rule rule, const Block* self, Large* large, std::span<const Argument> arguments) {
    allocations_ = 0;
    Rules rules(*this, self, large, arguments);
    (rules.*rule)();
    return std::move(rules.expected);
}

}  // namespace fuzz
