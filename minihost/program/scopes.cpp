#include "minihost/program/scopes.h"

#include <ranges>

#include "minihost/program/names.h"

namespace minihost {

const Variable* Scopes::find(std::string_view name) const {
    for (const auto& block : std::views::reverse(blocks_)) {
        const auto found = block.find(lower(name));
        if (found != block.end()) return &found->second;
    }
    return nullptr;
}

bool Scopes::declares(std::string_view name) const { return blocks_.back().contains(lower(name)); }

const Variable& Scopes::declare(const Variable& variable) {
    return blocks_.back()[lower(variable.name)] = variable;
}

std::vector<std::string> Scopes::names() const {
    std::vector<std::string> names;
    for (const auto& block : blocks_) {
        for (const auto& [key, variable] : block) names.push_back(variable.name);
    }
    return names;
}

}  // namespace minihost
