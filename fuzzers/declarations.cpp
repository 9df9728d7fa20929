// Declarations: any text is read, or refused with a reason. What was read can be written down and read again,
// and is the same then; capitals and blanks do not matter.
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "minihost/library/declaration.h"

using namespace minihost;

namespace {

// A default value: a number or a Boolean.
std::string text_of(const Value& value) {
    char text[32] = "";
    if (const auto* truth = std::get_if<bool>(&value)) return *truth ? "true" : "false";
    if (const auto* number = std::get_if<int32_t>(&value)) return std::to_string(*number);
    if (const auto* number = std::get_if<int64_t>(&value)) return std::to_string(*number);
    if (const auto* number = std::get_if<uint64_t>(&value)) return std::to_string(*number);
    std::snprintf(text, sizeof text, "%.17g", std::get<double>(value));
    return text;
}

std::string written(const Declaration& declaration) {
    std::string text = declaration.name + " ( ";
    for (size_t i = 0; i < declaration.parameters.size(); ++i) {
        const Parameter& parameter = declaration.parameters[i];
        text += (i > 0 ? " , " : "") + parameter.name + " AS " + to_string(parameter.type);
        if (parameter.default_value) text += " = " + text_of(*parameter.default_value);
    }
    text += " )";
    return declaration.result.kind == Kind::Nothing ? text : text + " aS " + to_string(declaration.result);
}

bool same(const Declaration& a, const Declaration& b) {
    if (a.name != b.name || a.result != b.result || a.parameters.size() != b.parameters.size()) return false;
    for (size_t i = 0; i < a.parameters.size(); ++i) {
        const Parameter& x = a.parameters[i];
        const Parameter& y = b.parameters[i];
        if (x.name != y.name || x.type != y.type || x.default_value != y.default_value) return false;
    }
    return true;
}

void require(bool condition, std::string_view input) {
    if (condition) return;
    std::fprintf(stderr, "not read as it is written: %.*s\n", int(input.size()), input.data());
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    try {
        const Declaration declaration = parse_declaration(input);
        require(declaration.text == input && !declaration.name.empty(), input);
        require(declaration.required() <= declaration.parameters.size(), input);
        require(same(parse_declaration(written(declaration)), declaration), input);
    } catch (const std::invalid_argument& refusal) {
        require(*refusal.what() != '\0', input);
    }
    return 0;
}
