#include "minihost/program/scopes.h"

#include "minihost/program/names.h"

namespace minihost {

const Variable* Scopes::find(std::string_view name) const {
    const std::string key = lower(name);
    for (auto block = blocks_.rbegin(); block != blocks_.rend(); ++block) {
        const auto found = block->find(key);
        if (found != block->end()) return &found->second;
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
