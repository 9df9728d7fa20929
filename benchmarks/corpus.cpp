#include "benchmarks/corpus.h"

#include <random>
#include <sstream>
#include <vector>

namespace bench {
namespace {

using Numbers = std::minstd_rand;

size_t below(Numbers& numbers, size_t limit) { return size_t(numbers() >> 4) % limit; }

// By how frequent they are.
const std::vector<std::string>& words() {
    static const std::vector<std::string> kWords = [] {
        std::istringstream list(
            "the of and to a in that is was he for it with as his on be at by I this had not are but from or "
            "have an they which one you were her all she there would their we him been has when who will "
            "more "
            "no if out so said what up its about into than them can only other new some could time these two "
            "may then do first any my now such like our over man me even most made after also did many "
            "before "
            "must through back years where much your way well down should because each just those people how "
            "too little state good very make world still own see men work long get here between both life "
            "being under never day same another know while last might us great old year off come since "
            "against "
            "go came right used take three himself few house use during without again place American around "
            "however home small found thought went say part once general high upon school every does got "
            "united left number course war until always away something fact though water less public put "
            "think almost hand enough far took head yet government system better set told nothing night end "
            "why called find going look asked later knew point next city business give group toward young "
            "days let room within children side social given order often present several national second "
            "rather possible per among form important things looked early white case large large big need");
        std::vector<std::string> all;
        for (std::string word; list >> word;) all.push_back(word);
        return all;
    }();
    return kWords;
}

// Zipf's law: the k-th word comes 1/k times as often as the first.
std::string text(size_t n, Numbers& numbers) {
    std::vector<double> weights;
    for (size_t k = 1; k <= words().size(); ++k) weights.push_back(1.0 / double(k));
    std::discrete_distribution<size_t> pick(weights.begin(), weights.end());
    std::string result;
    bool starts = true;
    while (result.size() < n) {
        std::string word = words()[pick(numbers)];
        if (starts) word[0] = char(word[0] & ~0x20);
        starts = below(numbers, 12) == 0;
        result += word;
        result += starts ? (below(numbers, 6) == 0 ? ".\n" : ". ") : below(numbers, 10) == 0 ? ", " : " ";
    }
    return result;
}

std::string logs(size_t n, Numbers& numbers) {
    static const char* const kLevels[] = {"INFO ", "INFO ", "INFO ", "DEBUG", "WARN "};
    static const char* const kPaths[] = {"/api/v1/items", "/api/v1/users", "/static/app.js", "/health"};
    std::ostringstream lines;
    for (int second = 0; size_t(lines.tellp()) < n; ++second) {
        lines << "2026-03-14T" << 10 + second / 3600 % 14 << ':' << 10 + second / 60 % 50 << ':'
              << 10 + second % 50 << '.' << 100 + below(numbers, 900) << "Z " << kLevels[below(numbers, 5)]
              << " [worker-" << below(numbers, 16) << "] request id=" << std::hex << numbers() << std::dec
              << " path=" << kPaths[below(numbers, 4)] << '/' << below(numbers, 10000)
              << " status=" << (below(numbers, 20) == 0 ? 404 : 200) << " time=" << below(numbers, 300)
              << "ms\n";
    }
    return lines.str();
}

}  // namespace

std::string corpus(const std::string& kind, size_t n, uint32_t seed) {
    Numbers numbers(seed + 1);
    std::string result;
    if (kind == "text") result = text(n, numbers);
    if (kind == "logs") result = logs(n, numbers);
    while (result.size() < n) result += kind == "dna" ? "acgt"[below(numbers, 4)] : char(below(numbers, 256));
    result.resize(n);
    return result;
}

std::string without(std::string haystack, const std::string& needle) {
    Numbers numbers(1);
    for (size_t at = 0; (at = haystack.find(needle, at)) != std::string::npos;) {
        haystack[at + below(numbers, needle.size())] = haystack[below(numbers, haystack.size())];
        at = at > needle.size() ? at - needle.size() : 0;
    }
    return haystack;
}

std::string fibonacci(size_t n) {
    std::string before = "b";
    std::string word = "a";
    while (word.size() < n) {
        std::string next = word + before;
        before = std::move(word);
        word = std::move(next);
    }
    word.resize(n);
    return word;
}

}  // namespace bench
