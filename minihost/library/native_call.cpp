#include "minihost/library/native_call.h"

#include <stdexcept>

namespace minihost {
namespace {

ffi_type* native_type(Kind kind) {
    switch (kind) {
        case Kind::Nothing:
            return &ffi_type_void;
        case Kind::Integer:
            return &ffi_type_sint32;
        case Kind::Int64:
            return &ffi_type_sint64;
        case Kind::UInt64:
            return &ffi_type_uint64;
        case Kind::Double:
            return &ffi_type_double;
        case Kind::Boolean:
            return &ffi_type_sint8;
        default:
            return &ffi_type_pointer;
    }
}

}  // namespace

Word to_word(const Value& value) {
    struct {
        Word operator()(std::monostate) const { return {.pointer = nullptr}; }
        Word operator()(int32_t v) const { return {.integer = v}; }
        Word operator()(int64_t v) const { return {.int64 = v}; }
        Word operator()(uint64_t v) const { return {.uint64 = v}; }
        Word operator()(double v) const { return {.number = v}; }
        Word operator()(bool v) const { return {.boolean = REALboolean(v)}; }
        Word operator()(Pointer v) const { return {.pointer = v.address}; }
        Word operator()(const StringRef& v) const { return {.pointer = v.get()}; }
        Word operator()(const ObjectRef& v) const { return {.pointer = v.get()}; }
    } visitor;
    return std::visit(visitor, value);
}

NativeCall::NativeCall(void* function, std::span<const Kind> parameters, Kind result)
    : function_(reinterpret_cast<void (*)()>(function)) {
    for (const Kind kind : parameters) types_.push_back(native_type(kind));
    if (types_.size() > std::tuple_size_v<Words> ||
        ffi_prep_cif(&interface_, FFI_DEFAULT_ABI, unsigned(types_.size()), native_type(result),
                     types_.data()) != FFI_OK) {
        throw std::invalid_argument("there is no call with such parameters");
    }
}

Word NativeCall::operator()(Words& arguments) const {
    std::array<void*, std::tuple_size_v<Words>> addresses;
    for (size_t i = 0; i < types_.size(); ++i) addresses[i] = &arguments[i];
    Word result = {};
    ffi_call(const_cast<ffi_cif*>(&interface_), function_, &result, addresses.data());
    return result;
}

}  // namespace minihost
