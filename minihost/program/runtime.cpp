#include "minihost/program/runtime.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <ostream>

#include "minihost/program/names.h"

namespace minihost {
namespace {

// The shortest text that reads back as the same number.
std::string show_double(double number) {
    if (std::isnan(number)) return "nan";
    const double magnitude = std::fabs(number);
    const bool plain = number == 0 || (magnitude >= 1e-5 && magnitude < 1e16);
    std::array<char, 32> buffer{};
    const auto format = plain ? std::chars_format::fixed : std::chars_format::scientific;
    const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, format);
    return {buffer.data(), written.ptr};
}

// A size of 0 is an unknown one where there are bytes.
std::string block_text(int32_t size, const void* data) {
    return size > 0 || (size == 0 && !data) ? " of " + std::to_string(size) + " bytes"
                                            : " without a known size";
}

std::string show_object(Runtime& runtime, REALobject object) {
    Host& host = runtime.host;
    if (!object) return "Nil";
    const std::string& name = host.class_of(object).name;
    if (same_name(name, "FolderItem")) return host.path_of(object).string();
    if (same_name(name, "MemoryBlock"))
        return name + block_text(host.block_size(object), host.block_data(object));
    return name;
}

template <class... Functions>
struct Overloaded : Functions... {
    using Functions::operator()...;
};
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

}  // namespace

void raise(Runtime& runtime, std::string_view class_name, std::string_view message) {
    runtime.host.raise(class_name, message);
}

Type object_type(std::string_view class_name) { return {Kind::Object, std::string(class_name)}; }

std::vector<std::string> type_names(Host& host) {
    std::vector<std::string> names = built_in_type_names();
    for (const Class* type : host.classes()) names.push_back(type->name);
    return names;
}

bool is_whole(const Type& type) {
    return type.kind == Kind::Integer || type.kind == Kind::Int64 || type.kind == Kind::UInt64;
}

bool is_number(const Type& type) { return is_whole(type) || type.kind == Kind::Double; }

bool fits(const Host& host, const Type& declared, const Type& found) {
    return distance(host, declared, found).has_value();
}

Value default_value(const Type& type) {
    switch (type.kind) {
        case Kind::Integer:
            return int32_t{};
        case Kind::Int64:
            return int64_t{};
        case Kind::UInt64:
            return uint64_t{};
        case Kind::Double:
            return double{};
        case Kind::Boolean:
            return false;
        case Kind::String:
            return StringRef();
        case Kind::Ptr:
            return Pointer();
        case Kind::Object:
            return ObjectRef();
        case Kind::Nothing:
            break;
    }
    return {};
}

std::optional<Value> convert(const Value& value, const Type& type) {
    if (is_number(type)) {
        if (type == kDouble) return number<double>(value);
        const auto* fraction = std::get_if<double>(&value);
        return convert_scalar(fraction ? Value(std::trunc(*fraction)) : value, type.kind);
    }
    if (same_name(type.class_name, "Variant")) return value;
    const auto* object = std::get_if<ObjectRef>(&value);
    if (std::holds_alternative<std::monostate>(value) || (object && !*object)) return default_value(type);
    if (type.kind == Kind::Ptr && object) return Pointer{Host::current().block_data(object->get())};
    return value;
}

std::string range_text(const Type& type) {
    return with_number(type.kind, [&](auto zero) {
        using Limits = std::numeric_limits<decltype(zero)>;
        return text_of(type) + " (" + std::to_string(Limits::min()) + " to " + std::to_string(Limits::max()) +
               ')';
    });
}

std::string show(Runtime& runtime, const Value& value) {
    return std::visit(Overloaded{
                          [](std::monostate) -> std::string { return "Nil"; },
                          [](bool truth) -> std::string { return truth ? "True" : "False"; },
                          [](double number) { return show_double(number); },
                          [](auto number) { return std::to_string(number); },
                          [](Pointer pointer) -> std::string {
                              return pointer.address ? address_text(pointer.address) : "Nil";
                          },
                          [&](const StringRef& string) -> std::string {
                              if (!string) return "";
                              const auto text = runtime.host.text_of(string.get(), *encoding_number("UTF-8"));
                              return text ? *text : std::string(runtime.host.bytes_of(string.get()));
                          },
                          [&](const ObjectRef& object) { return show_object(runtime, object.get()); },
                      },
                      value);
}

void print_block(Runtime& runtime, const ObjectRef& block) {
    const int32_t size = block ? runtime.host.block_size(block.get()) : 0;
    const auto* data = block ? static_cast<const uint8_t*>(runtime.host.block_data(block.get())) : nullptr;
    if (!data || size <= 0) {
        runtime.out << show(runtime, block) << '\n';
    } else {
        runtime.dump.print(runtime.out, runtime.host.serial_of(block.get()), {data, size_t(size)});
    }
}

std::string_view bytes_of(Runtime& runtime, const Value& string) {
    const StringRef& held = std::get<StringRef>(string);
    return held ? runtime.host.bytes_of(held.get()) : std::string_view();
}

Value utf8_string(Runtime& runtime, std::string_view bytes) {
    return runtime.host.new_string(bytes, *encoding_number("UTF-8"));
}

}  // namespace minihost
