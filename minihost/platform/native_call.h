// Native calls of functions whose parameters are known only when the program runs.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace minihost::platform {

// How an argument or a result is passed.
enum class Passed { kNothing, kInt8, kInt32, kInt64, kDouble, kPointer };

// One argument or result. Of a number that is narrower than the word only its own bytes count.
// The whole word comes first, so that Word{} clears all of it.
union Word {
    int64_t int64;
    int8_t boolean;
    int32_t integer;
    uint64_t uint64;
    double number;
    void* pointer;
};

inline constexpr size_t kMostArguments = 62;
using Words = std::array<Word, kMostArguments>;

// A function and how it is called: settled once, so that a call only passes its words. Throws
// std::invalid_argument for more arguments than there can be.
class NativeCall {
 public:
    NativeCall(void* function, std::span<const Passed> arguments, Passed result);
    ~NativeCall();
    NativeCall(const NativeCall&) = delete;
    NativeCall& operator=(const NativeCall&) = delete;

    Word operator()(Words& arguments) const;

 private:
    struct Form;
    void* function_;
    std::unique_ptr<const Form> form_;
};

}  // namespace minihost::platform
