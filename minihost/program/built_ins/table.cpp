#include "minihost/program/built_ins/table.h"

namespace minihost {
namespace {

// The argument in the declared type: fractions are cut off, but no whole number is changed.
Value argument_of(const std::string& name, const Parameter& parameter, const Value& given) {
    if (auto value = convert(given, parameter.type)) return std::move(*value);
    throw CallError(misfit_text(name, parameter, given));
}

Callable::Function typed(const Declaration& declaration, Row::Function function) {
    if (!function) return {};
    return [declaration, function](Runtime& runtime, const ObjectRef& self, Arguments arguments) {
        std::vector<Value> values;
        for (size_t i = 0; i < arguments.size(); ++i) {
            const bool declared = i < declaration.parameters.size();
            values.push_back(declared ? argument_of(declaration.name, declaration.parameters[i], arguments[i])
                                      : arguments[i]);
        }
        return function(runtime, self, values);
    };
}

std::vector<BuiltIn> all() {
    const std::pair<const char*, Rows> tables[] = {
        {"", file_functions()},           {"", block_functions()},
        {"", program_functions()},        {"", string_functions()},
        {"", number_functions()},         {kConstructor, constructors()},
        {"MemoryBlock", block_members()}, {"FolderItem", folder_item_members()},
    };
    std::vector<BuiltIn> result;
    for (const auto& [owner, rows] : tables) {
        for (const Row& row : rows) {
            const Declaration declaration = parse_declaration(row.declaration);
            result.push_back(
                {owner, {declaration, typed(declaration, row.get), typed(declaration, row.set)}});
        }
    }
    return result;
}

}  // namespace

const std::vector<BuiltIn>& built_ins() {
    static const std::vector<BuiltIn> rows = all();
    return rows;
}

}  // namespace minihost
