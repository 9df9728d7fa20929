// Searches for patterns. Four pairs of haystack and needle for each row, since a single needle may be a lucky
// one; a call goes through all four.
#include <cstring>

#include "benchmarks/corpus.h"
#include "benchmarks/peers/peers.h"
#include "benchmarks/rows/goals.h"

namespace bench {
namespace {

constexpr size_t kPairs = 4;

struct Pair {
    std::string haystack;
    std::string needle;
};

struct Search {
    const uint8_t* haystack;
    size_t n;
    const uint8_t* needle;
    size_t m;
    REALmemoryBlock haystack_block;
    REALmemoryBlock needle_block;
};
using Searches = std::vector<Search>;

// The sum of the indices: differs when one does.
template <class Find>
uint64_t sum(const Searches& searches, Find find) {
    uint64_t indices = 0;
    for (const Search& search : searches) indices += uint64_t(int64_t(find(search)));
    return indices;
}

template <class Call>
auto raw(Call call) {
    return [call](const Search& s) { return call(s.haystack, s.n, s.needle, s.m); };
}

size_t libc_find(const uint8_t* haystack, size_t n, const uint8_t* needle, size_t m) {
    const void* found = memmem(haystack, n, needle, m);
    return found ? size_t(static_cast<const uint8_t*>(found) - haystack) : SIZE_MAX;
}

// Lays the pairs out in the buffers, haystacks in the first region and needles in the second.
Searches lay_out(Case& c, const std::vector<Pair>& pairs) {
    Searches searches;
    uint8_t* haystack = c.region(0);
    uint8_t* needle = c.region(1);
    c.bytes = 0;
    for (const Pair& pair : pairs) {
        const size_t n = pair.haystack.size();
        const size_t m = pair.needle.size();
        std::memcpy(haystack, pair.haystack.data(), n);
        std::memcpy(needle, pair.needle.data(), m);
        searches.push_back({haystack, n, needle, m, c.block(haystack, n), c.block(needle, m)});
        haystack += (n + 63) / 64 * 64;
        needle += (m + 63) / 64 * 64;
        c.bytes += n;
    }
    return searches;
}

using FindBytes = int32_t(REALmemoryBlock, int32_t, int32_t, REALmemoryBlock, int32_t, int32_t);
constexpr auto kFindBytes = [](FindBytes* member, const Search& s) {
    return member(s.haystack_block, 0, 0, s.needle_block, 0, 0);
};

// The rule here is memmem, since the plain kernel would take minutes for the longest needles.
void add_contenders(Case& c, const Searches& all) {
    c.rule({}, [=] { return sum(all, raw(libc_find)); });
    c.member<FindBytes>("FindBytesZOR", [=](auto* member) {
        return sum(all, [=](const Search& s) { return kFindBytes(member, s); });
    });
    c.kernel([=](const kernels::Kernels& k) { return sum(all, raw(k.find)); });
    c.peer("libc memmem", [=] { return sum(all, raw(libc_find)); });
    c.peer("StringZilla", peers::stringzilla_find, [=](auto* f) { return sum(all, raw(f)); });
    c.peer("memchr crate", peers::memchr_crate_find, [=](auto* f) { return sum(all, raw(f)); });
}

// Half again StringZilla's time, and the call of a member that does nothing but ask for both blocks.
void add_small_call_allowance(Case& c, const Searches& all) {
    if (!peers::stringzilla_find) return;
    auto* const call = c.bundle().member<FindBytes>("FindBytesZOR");
    c.reference("1.5 StringZilla and the call", [=, turn = 0U]() mutable {
        const uint64_t found = sum(all, raw(peers::stringzilla_find));
        for (const Search& s : all) keep(call(s.haystack_block, int32_t(s.n), 0, s.needle_block, 0, 0));
        if (++turn % 2 == 0) keep(int64_t(sum(all, raw(peers::stringzilla_find))));
        return found;
    });
}

std::string needle_of(const std::string& kind, size_t m, size_t which) {
    // From the middle of another text of its kind, so that it begins anywhere in a word.
    return corpus(kind, 8192 + m, uint32_t(100 + which)).substr(4096 + 37 * which, m);
}

Pair absent(const std::string& kind, size_t n, size_t m, size_t which) {
    const std::string needle = needle_of(kind, m, which);
    return {without(corpus(kind, n, uint32_t(which)), needle), needle};
}

Pair present(const std::string& kind, size_t n, size_t m, size_t which) {
    Pair pair = absent(kind, n, m, which);
    pair.haystack.replace(n - m, m, pair.needle);
    return pair;
}

using MakePair = std::function<Pair(size_t n, size_t which)>;

std::function<void(Case&)> search(MakePair make, size_t pairs = kPairs) {
    return [=](Case& c) {
        std::vector<Pair> all;
        for (size_t which = 0; which < pairs; ++which) all.push_back(make(c.size, which));
        const Searches searches = lay_out(c, all);
        add_contenders(c, searches);
        if (c.size == 64) add_small_call_allowance(c, searches);
    };
}

const std::vector<std::string> kRivals = {"libc memmem", "StringZilla", "memchr crate"};
const Goal kFastest = {.of = kRivals, .least = 0.95, .from = 16};

void add(Rows& rows, const std::string& variant, std::vector<size_t> sizes, MakePair make,
         std::vector<Goal> goals, size_t pairs = kPairs) {
    rows.push_back({"find", "FindBytesZOR", variant, search(std::move(make), pairs), std::move(goals), false,
                    false, std::move(sizes)});
}

void add_texts(Rows& rows) {
    for (const std::string kind : {"text", "dna", "logs", "random"}) {
        for (const size_t m : {1U, 2U, 4U, 8U, 16U, 64U, 256U, 1024U}) {
            const std::string title = kind + ", " + std::to_string(m) + " bytes, ";
            add(rows, title + "absent", {256 << 10},
                [=](size_t n, size_t which) { return absent(kind, n, m, which); }, {kFastest});
            add(rows, title + "at the end", {256 << 10},
                [=](size_t n, size_t which) { return present(kind, n, m, which); }, {kFastest});
        }
    }
    rows.push_back({"find",
                    "FindBytesZOR",
                    "text, 16 bytes, absent, by size",
                    search([](size_t n, size_t which) { return absent("text", n, 16, which); }, 1),
                    {kFastest},
                    false,
                    true,
                    {4096, 16 << 20}});
    const Goal small = {.of = {"1.5 StringZilla and the call"}, .least = 1, .from = 64, .to = 64};
    add(rows, "short text, 8 bytes, absent", {16, 32, 64, 128, 256},
        [](size_t n, size_t which) { return absent("text", n, 8, which); }, {kFastest, small});
    add(rows, "short text, 8 bytes, at the end", {16, 32, 64, 128, 256},
        [](size_t n, size_t which) { return present("text", n, 8, which); }, {kFastest});
}

std::string run(char letter, size_t n) { return std::string(n, letter); }

// `text` with a letter changed.
std::string with(std::string text, size_t at, char letter) {
    text[at] = letter;
    return text;
}

std::string repeated(const std::string& piece, size_t n) {
    std::string all;
    while (all.size() < n) all += piece;
    all.resize(n);
    return all;
}

// Copies of the needle one after another, each with one byte changed, wherever a search may look first.
std::string near_misses(const std::string& needle, size_t n) {
    std::string all;
    for (size_t copy = 0; all.size() < n; ++copy) {
        const size_t at = copy * 2654435761U % needle.size();
        all += with(needle, at, char(needle[at] ^ 1));
    }
    all.resize(n);
    return all;
}

// What is hard for searches that compare again from every start.
void add_hard_cases(Rows& rows) {
    const std::vector<Goal> goals = {kFastest, {.gigabytes = 2}};
    const auto add_fixed = [&](const std::string& title, std::function<Pair(size_t)> make) {
        add(
            rows, title, {1 << 20}, [=](size_t n, size_t) { return make(n); }, goals, 1);
    };
    for (const size_t m : {8U, 64U, 1024U, 65536U}) {
        const std::string bytes = std::to_string(m) + " bytes";
        add_fixed("a..ab in a..a, " + bytes, [=](size_t n) {
            return Pair{run('a', n), with(run('a', m), m - 1, 'b')};
        });
        add_fixed("ba..a in a..a, " + bytes, [=](size_t n) {
            return Pair{run('a', n), with(run('a', m), 0, 'b')};
        });
        add_fixed("a..aba..a in a..a, " + bytes, [=](size_t n) {
            return Pair{run('a', n), with(run('a', m), m / 2, 'b')};
        });
        add_fixed("periodic, last byte differs, " + bytes, [=](size_t n) {
            return Pair{repeated("abcab", n), with(repeated("abcab", m), m - 1, 'x')};
        });
    }
    for (const size_t m : {8U, 64U}) {
        for (const char end : {'e', ' '}) {
            add_fixed(std::string("ends frequent (") + (end == 'e' ? "e..e" : "space") + ") in text, " +
                          std::to_string(m) + " bytes",
                      [=](size_t n) {
                          const std::string needle = with(with(run('q', m), 0, end), m - 1, end);
                          return Pair{without(corpus("text", n, 0), needle), needle};
                      });
        }
    }
    add_fixed("text, 65536 bytes", [](size_t n) { return absent("text", n, 65536, 0); });
}

// Made against whatever a search looks at first: only linear time helps.
void add_hostile_cases(Rows& rows) {
    const std::vector<Goal> goals = {kFastest, {.gigabytes = 0.3}};
    for (const size_t m : {64U, 1024U, 65536U}) {
        const std::string bytes = std::to_string(m) + " bytes";
        add(
            rows, "near misses, dna, " + bytes, {1 << 20},
            [=](size_t n, size_t) {
                const std::string needle = needle_of("dna", m, 0);
                return Pair{near_misses(needle, n), needle};
            },
            goals, 1);
        add(
            rows, "near misses, a..a, " + bytes, {1 << 20},
            [=](size_t n, size_t) {
                return Pair{near_misses(run('a', m), n), run('a', 2 * m)};
            },
            goals, 1);
        add(
            rows, "Fibonacci, last byte differs, " + bytes, {1 << 20},
            [=](size_t n, size_t) {
                const std::string word = fibonacci(m);
                return Pair{fibonacci(n), with(word, m - 1, 'c')};
            },
            goals, 1);
    }
}

void find_string(Case& c) {
    const Searches all = lay_out(c, {absent("text", c.size, 8, 0)});
    const Search s = all[0];
    const String target{s.needle, int32_t(s.m)};
    c.rule({}, [=] { return libc_find(s.haystack, s.n, s.needle, s.m); });
    c.member<int32_t(REALmemoryBlock, int32_t, int32_t, REALstring)>(
        "FindStringZOR", [=](auto* member) { return member(s.haystack_block, 0, 0, handle(target)); });
    c.peer("libc memmem", [=] { return libc_find(s.haystack, s.n, s.needle, s.m); });
    c.peer("StringZilla", peers::stringzilla_find,
           [=](auto* f) { return f(s.haystack, s.n, s.needle, s.m); });
    c.peer("memchr crate", peers::memchr_crate_find,
           [=](auto* f) { return f(s.haystack, s.n, s.needle, s.m); });
}

}  // namespace

void add_find_rows(Rows& rows) {
    add_texts(rows);
    add_hard_cases(rows);
    add_hostile_cases(rows);
    rows.push_back(
        {"find", "FindStringZOR", "text, 8 bytes, absent", find_string, {at_least(0.95, kRivals)}});
}

}  // namespace bench
