// The variables that can be seen at a place of a script.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "minihost/library/value.h"

namespace minihost {

struct Variable {
    std::string name;
    Type type;
    size_t slot;  // where the running script keeps its value
};

class Scopes {
 public:
    // The innermost one of the name, or nil.
    const Variable* find(std::string_view name) const;
    // Whether the innermost block declares the name already.
    bool declares(std::string_view name) const;
    // In the innermost block; hides, or in the same block replaces, what bears the name.
    const Variable& declare(const Variable& variable);
    bool outermost() const { return blocks_.size() == 1; }
    std::vector<std::string> names() const;

    // A block of its own, which ends with this object.
    class Inner {
     public:
        explicit Inner(Scopes& scopes) : scopes_(scopes) { scopes_.blocks_.emplace_back(); }
        ~Inner() { scopes_.blocks_.pop_back(); }
        Inner(const Inner&) = delete;
        Inner& operator=(const Inner&) = delete;

     private:
        Scopes& scopes_;
    };

 private:
    std::vector<std::map<std::string, Variable>> blocks_{1};  // innermost last, by name in lower case
};

}  // namespace minihost
