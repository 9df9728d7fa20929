#include "minihost/platform/native_call.h"

#include <ffi.h>

#include <stdexcept>
#include <vector>

namespace minihost::platform {
namespace {

ffi_type* native_type(Passed passed) {
    switch (passed) {
        case Passed::kNothing:
            return &ffi_type_void;
        case Passed::kInt8:
            return &ffi_type_sint8;
        case Passed::kInt32:
            return &ffi_type_sint32;
        case Passed::kInt64:
            return &ffi_type_sint64;
        case Passed::kDouble:
            return &ffi_type_double;
        default:
            return &ffi_type_pointer;
    }
}

// A result that is narrower than a register comes as a whole one.
union Result {
    ffi_arg whole;
    Word word;
};

}  // namespace

struct NativeCall::Form {
    std::vector<ffi_type*> types;
    mutable ffi_cif interface = {};  // the library wants it without const, and only reads it
};

NativeCall::NativeCall(void* function, std::span<const Passed> arguments, Passed result)
    : function_(function) {
    auto form = std::make_unique<Form>();
    for (const Passed passed : arguments) form->types.push_back(native_type(passed));
    if (arguments.size() > kMostArguments ||
        ffi_prep_cif(&form->interface, FFI_DEFAULT_ABI, unsigned(arguments.size()), native_type(result),
                     form->types.data()) != FFI_OK) {
        throw std::invalid_argument("there is no call with such parameters");
    }
    form_ = std::move(form);
}

NativeCall::~NativeCall() = default;

Word NativeCall::operator()(Words& arguments) const {
    std::array<void*, kMostArguments> addresses;
    for (size_t i = 0; i < form_->types.size(); ++i) addresses[i] = &arguments[i];
    Result result = {};
    ffi_call(&form_->interface, reinterpret_cast<void (*)()>(function_), &result, addresses.data());
    return result.word;
}

}  // namespace minihost::platform
