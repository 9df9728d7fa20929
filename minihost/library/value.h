// Values of the host language, and the counted references through which C++ code holds the host's
// objects and strings.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "plugin/records.h"

namespace minihost {

enum class Kind { Nothing, Integer, Int64, UInt64, Double, Boolean, String, Ptr, Object };

// A type of the host language. `class_name` is set for objects only, in its registered spelling.
struct Type {
    Kind kind = Kind::Nothing;
    std::string class_name;

    bool operator==(const Type&) const = default;
};

std::string to_string(const Type& type);

// Adds and gives back references of the running host (see host.h).
void retain(REALobject object);
void release(REALobject object) noexcept;
void retain(REALstring string);
void release(REALstring string) noexcept;

// One reference to a host object or string; nil by default.
template <class Handle>
class Ref {
 public:
    Ref() = default;
    // Takes over a reference that the caller holds.
    static Ref adopt(Handle handle) {
        Ref ref;
        ref.handle_ = handle;
        return ref;
    }
    // Adds a reference of its own.
    static Ref share(Handle handle) {
        if (handle) retain(handle);
        return adopt(handle);
    }
    Ref(const Ref& other) : Ref(share(other.handle_)) {}
    Ref(Ref&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Ref& operator=(Ref other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~Ref() {
        if (handle_) release(handle_);
    }

    Handle get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }
    bool operator==(const Ref&) const = default;

 private:
    Handle handle_ = nullptr;
};

using ObjectRef = Ref<REALobject>;
using StringRef = Ref<REALstring>;

// A raw address: the host type Ptr.
struct Pointer {
    void* address = nullptr;
    bool operator==(const Pointer&) const = default;
};

// The same on every system: "0x7f0012345678".
std::string address_text(const void* address);

// A value of the host language. std::monostate stands for Nil and for "no result"; a nil object, a
// nil string and a nil Ptr may also be given as an empty ObjectRef, StringRef or Pointer, and a member's nil
// result comes so.
using Value =
    std::variant<std::monostate, int32_t, int64_t, uint64_t, double, bool, Pointer, StringRef, ObjectRef>;

// A number or a Boolean as another kind; nothing where that would lose something, and for all other values.
std::optional<Value> convert_scalar(const Value& value, Kind kind);

}  // namespace minihost
