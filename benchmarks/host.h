// The thinnest host that the members can run on, so that what is measured is theirs: a block's handle points
// to its address and size. minihost loads the bundle and reads the registered records; its own operations on
// blocks and strings, which keep accounts, are replaced.
#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

#include "plugin/records.h"

namespace bench {

struct Block : REALmemoryBlockStruct {
    void* data;
    int32_t size;
};

// A string's handle points to one.
struct String {
    const void* bytes;
    int32_t count;
};

inline REALstring handle(const String& string) {
    return reinterpret_cast<REALstring>(const_cast<String*>(&string));
}

// Releases what a member returned.
void release(REALmemoryBlock block);
void release(REALstring string);

template <class Function>
inline constexpr size_t kParameters = 0;
template <class Result, class Self, class... Parameters>
inline constexpr size_t kParameters<Result(Self, Parameters...)> = sizeof...(Parameters);

// The members of a loaded bundle. It stays loaded: several can be called in one program.
class Bundle {
 public:
    Bundle(std::string label, const std::string& file);

    // The registered function of the member with as many parameters as `Function` has after the block.
    template <class Function>
    Function* member(std::string_view method) const {
        return reinterpret_cast<Function*>(find(method, kParameters<Function>));
    }

    std::string name;

 private:
    void* find(std::string_view method, size_t parameters) const;

    std::map<std::pair<std::string, size_t>, void*, std::less<>>
        members_;  // by name and number of parameters
};

}  // namespace bench
