// Native calls of functions whose parameters are known only from a declaration.
#pragma once

#include <ffi.h>

#include <array>
#include <span>
#include <vector>

#include "minihost/library/value.h"

namespace minihost {

// One argument or result as the processor passes it.
union Word {
    ffi_arg narrow;  // a result that is narrower than a register
    int32_t integer;
    int64_t int64;
    uint64_t uint64;
    double number;
    REALboolean boolean;
    void* pointer;
};

inline constexpr size_t kMostParameters = 60;         // of a member
using Words = std::array<Word, kMostParameters + 2>;  // and its object, and an assigned value

// The value's alternative says which kind of word it is. References stay with the value.
Word to_word(const Value& value);

// A function and how it is called: settled once, so that a call only passes its words.
class NativeCall {
 public:
    NativeCall(void* function, std::span<const Kind> parameters, Kind result);
    NativeCall(const NativeCall&) = delete;
    NativeCall& operator=(const NativeCall&) = delete;

    Word operator()(Words& arguments) const;

 private:
    void (*function_)();
    std::vector<ffi_type*> types_;
    ffi_cif interface_;
};

}  // namespace minihost
