// What is measured. A row is a member and a way of calling it; a case is a row at one size and alignment,
// with everything that runs on its bytes: the contenders. The first one is the registered member.
#pragma once

#include <concepts>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "benchmarks/host.h"
#include "benchmarks/limit.h"
#include "kernels/levels.h"

namespace bench {

// Makes the compiler believe that `value` is used and that all memory may have changed.
inline void keep(int64_t value) { asm volatile("" : : "r"(value) : "memory"); }

// A reference is part of a goal and no peer: another member, or a part of this one.
enum class Kind { kMember, kLevel, kPeer, kReference, kLimit };

struct Contender {
    std::string name;
    Kind kind;
    bool same_result;  // gives what the rule gives; a limit gives nothing, some peers round otherwise
    std::function<int64_t()> call;
    std::function<void(size_t)> repeat;  // the same call n times, without std::function in between
};

// What a row should reach, for sizes from `from` to `to`. The report computes whether it does.
struct Goal {
    std::vector<std::string> of = {};  // at least `least` times the speed of the fastest of these
    double least = 0;
    double gigabytes = 0;  // or: at least so many 10^9 bytes per second
    int instructions = 0;  // or: at most so many instructions a call
    size_t from = 4096;
    size_t to = SIZE_MAX;
    std::string who = "bundle";  // the contender that should reach it
};

// Where the bytes of the cases lie: three regions, far apart in the cache's sets.
class Buffers {
 public:
    explicit Buffers(size_t largest);
    uint8_t* region(size_t index) const;

 private:
    size_t stride_;
    std::unique_ptr<uint8_t[]> memory_;
};

// The rule of each operation, byte by byte.
inline const kernels::Kernels& rules() { return *kernels::levels().back().kernels; }

// What all cases share.
struct Setting {
    std::vector<Bundle> bundles;                     // the one to measure first
    std::vector<const kernels::Level*> levels = {};  // to be measured beside the members
    Buffers buffers;
};

class Case {
 public:
    Case(const Setting& setting, size_t size, bool misaligned);

    const size_t size;
    size_t bytes;  // what a call works on, for the figure in bytes per second

    // A region of the buffers, a byte off its alignment in misaligned cases; `random` fills `size` bytes.
    uint8_t* region(size_t index) const;
    uint8_t* random(size_t index, size_t count) const;
    REALmemoryBlock block(uint8_t* data, size_t count);
    REALmemoryBlock block(uint8_t* data) { return block(data, size); }

    // The rule that gives what must come out, as result and in the bytes of `stored`.
    template <class Call>
    void rule(std::span<uint8_t> stored_bytes, Call call) {
        stored = stored_bytes;
        plain = make(Kind::kPeer, "rule", true, call).call;
    }

    // The registered member with that many parameters, of each bundle.
    template <class Function, class Call>
    void member(std::string_view name, Call call) {
        for (const Bundle& bundle : setting_.bundles) {
            const auto function = bundle.member<Function>(name);
            contenders.push_back(make(Kind::kMember, bundle.name, true, [=] { return call(function); }));
        }
    }

    // The kernel behind it, of each level that is to be measured.
    template <class Call>
    void kernel(Call call) {
        for (const kernels::Level* level : setting_.levels) {
            contenders.push_back(
                make(Kind::kLevel, level->name, true, [=, table = level->kernels] { return call(*table); }));
        }
    }

    template <class Call>
    void peer(std::string name, Call call) {
        contenders.push_back(make(Kind::kPeer, std::move(name), true, call));
    }

    // A peer from a library that may be missing, in which case `function` is nil.
    template <class Function, class Call>
    void peer(std::string name, Function* function, Call call, bool same_result = true) {
        if (!function) return;
        contenders.push_back(make(Kind::kPeer, std::move(name), same_result, [=] { return call(function); }));
    }

    template <class Call>
    void reference(std::string name, Call call, bool same_result = true) {
        contenders.push_back(make(Kind::kReference, std::move(name), same_result, call));
    }

    // The pass of each vector width that this machine has.
    template <class Call>
    void limit(Call call) {
        for (const Limit& limit : limits()) {
            contenders.push_back(make(Kind::kLimit, limit.name, false, [=, &limit] { return call(limit); }));
        }
    }

    std::vector<Contender> contenders;
    std::function<int64_t()> plain;
    std::span<uint8_t> stored;

    const Bundle& bundle() const { return setting_.bundles.front(); }

 private:
    template <class Call>
    static int64_t result_of(Call& call) {
        if constexpr (std::same_as<decltype(call()), void>) {
            call();
            return 0;
        } else {
            return int64_t(call());
        }
    }

    template <class Call>
    static Contender make(Kind kind, std::string name, bool same_result, Call call) {
        return {std::move(name), kind, same_result, [call]() mutable { return result_of(call); },
                [call](size_t times) mutable {
                    for (; times > 0; --times) keep(result_of(call));
                }};
    }

    const Setting& setting_;
    const bool misaligned_;
    std::deque<Block> blocks_;
};

inline const std::vector<size_t> kUsualSizes = {16, 4096, 256 << 10, 16 << 20};

struct Row {
    std::string family;   // the rows of one chart
    std::string member;   // as registered
    std::string variant;  // what sets the row apart from the member's others
    std::function<void(Case&)> prepare;
    std::vector<Goal> goals = {};
    bool misaligned = false;  // measured at odd addresses too
    bool charted = false;     // the full form measures it from 16 bytes to 256 MiB
    std::vector<size_t> sizes = kUsualSizes;
    size_t largest = 256 << 20;  // that its arguments can say
};

using Rows = std::vector<Row>;

void add_search_rows(Rows& rows);
void add_find_rows(Rows& rows);
void add_copy_rows(Rows& rows);
void add_in_place_rows(Rows& rows);
void add_gather_rows(Rows& rows);
void add_number_rows(Rows& rows);
void add_float_rows(Rows& rows);

}  // namespace bench
