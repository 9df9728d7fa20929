#include "minihost/library/trace.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "minihost/library/state.h"

namespace minihost {
namespace {

// In quotation marks, cut after some bytes, with what does not print as \x0A and the like.
std::string short_text(std::string_view text) {
    constexpr size_t kMost = 32;
    std::string result(1, '"');
    for (const char c : text.substr(0, kMost)) {
        const auto byte = static_cast<unsigned char>(c);
        char code[8];
        std::snprintf(code, sizeof code, "\\x%02X", unsigned{byte});
        if (byte < ' ' || byte > '~') {
            result += code;
        } else {
            result += c;
        }
    }
    return result.append(text.size() > kMost ? "…\"" : "\"");
}

class Tracer {
 public:
    explicit Tracer(std::ostream& out) : out_(out) {}

    void operator()(const OperationCall& call) {
        const Host::State& state = *Host::State::current;
        std::string line = "trace: ";
        if (state.running) line += state.running->callee().part + *state.running->callee().name + ": ";
        line.append(call.key).append("(");
        for (size_t i = 0; i < call.arguments.size(); ++i) {
            if (i > 0) line += ", ";
            line += std::visit([this](auto value) { return this->text_of(value); }, call.arguments[i]);
        }
        line += ')';
        if (call.result.index() != 0)
            line += " = " + std::visit([this](auto value) { return this->text_of(value); }, call.result);
        out_ << line << '\n';
    }

 private:
    static std::string text_of(std::monostate) { return ""; }
    static std::string text_of(int32_t number) { return std::to_string(number); }
    // The only numbers without a sign are encodings.
    static std::string text_of(uint32_t encoding) {
        return encoding == kTextEncodingUnknown ? "no encoding" : encoding_name(encoding);
    }
    static std::string text_of(double number) {
        char text[32];
        std::snprintf(text, sizeof text, "%.15g", number);
        return text;
    }
    static std::string text_of(const char* text) { return text ? short_text(text) : "nil"; }
    std::string text_of(const void* handle) {
        if (!handle) return "nil";
        const Host::State& state = *Host::State::current;
        if (const auto found = state.objects.find(handle); found != state.objects.end())
            return names_[handle] = found->second.type->name + '#' + std::to_string(found->second.serial);
        if (const auto found = state.strings.find(handle); found != state.strings.end())
            return names_[handle] = "String " + short_text(found->second.bytes);
        if (const auto record = std::ranges::find(state.class_records, handle);
            record != state.class_records.end()) {
            return short_text((*record)->name);
        }
        if (const auto record = std::ranges::find(state.global_records, handle);
            record != state.global_records.end()) {
            return short_text((*record)->declaration);
        }
        return last_name_of(handle);
    }

    // What has just given its last reference back is still named; then its address is one like others.
    std::string last_name_of(const void* address) {
        if (const auto named = names_.extract(address)) return named.mapped();
        return address_text(address);
    }

    std::ostream& out_;
    std::map<const void*, std::string> names_;
};

}  // namespace

std::function<void(const OperationCall&)> trace_to(std::ostream& out) { return Tracer(out); }

}  // namespace minihost
