// Every argument is passed in a slot of 8 bytes. One of the first four slots is a register: that of its place
// for whole numbers, or that of its place for floating-point numbers. What a function with "..." is given is
// passed in both, with the same bits, and so suits any function; only its first argument has a type of its
// own. Slots that a function does not know of cost it nothing.
#include "minihost/platform/native_call.h"

#include <stdexcept>
#include <type_traits>
#include <utility>

namespace minihost::platform {
namespace {

template <class Argument>
Argument value_of(const Word& word) {
    if constexpr (std::is_same_v<Argument, double>) {
        return word.number;
    } else {
        return word.int64;
    }
}

template <class Result, class Argument, size_t... kStacked>
Result call(void* function, const Words& words, std::index_sequence<kStacked...>) {
    return reinterpret_cast<Result (*)(Argument, ...)>(function)(
        value_of<Argument>(words[0]), words[1].number, words[2].number, words[3].number,
        words[4 + kStacked].int64...);
}

template <class Result, class Argument>
Result call(void* function, const Words& words, size_t count) {
    if (count <= 4) return call<Result, Argument>(function, words, std::make_index_sequence<0>());
    if (count <= 8) return call<Result, Argument>(function, words, std::make_index_sequence<4>());
    if (count <= 16) return call<Result, Argument>(function, words, std::make_index_sequence<12>());
    return call<Result, Argument>(function, words, std::make_index_sequence<kMostArguments - 4>());
}

template <class Result>
Result call(void* function, const Words& words, size_t count, bool first_is_double) {
    return first_is_double ? call<Result, double>(function, words, count)
                           : call<Result, int64_t>(function, words, count);
}

}  // namespace

struct NativeCall::Form {
    size_t count;
    bool first_is_double;
    bool result_is_double;
};

NativeCall::NativeCall(void* function, std::span<const Passed> arguments, Passed result)
    : function_(function),
      form_(new Form{arguments.size(), !arguments.empty() && arguments[0] == Passed::kDouble,
                     result == Passed::kDouble}) {
    if (arguments.size() > kMostArguments)
        throw std::invalid_argument("there is no call with such parameters");
}

NativeCall::~NativeCall() = default;

Word NativeCall::operator()(Words& arguments) const {
    const auto [count, first_is_double, result_is_double] = *form_;
    if (result_is_double) return {.number = call<double>(function_, arguments, count, first_is_double)};
    return {.int64 = call<int64_t>(function_, arguments, count, first_is_double)};
}

}  // namespace minihost::platform
