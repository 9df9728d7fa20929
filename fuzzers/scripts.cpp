// Scripts: any text is parsed, or refused with its line. What can be parsed runs, if it has no loop, asks for
// nothing of the file system, and cannot grow without bounds; it ends, or ends with a message, and no
// reference stays open. It runs in a host without a bundle: whoever gives members an address may read
// anywhere.
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "minihost/library/names.h"
#include "minihost/program/built_ins/table.h"
#include "minihost/program/session.h"

using namespace minihost;

namespace {

bool contains(std::string_view text, std::string_view name) {
    const auto same = [](char a, char b) { return lower_case(a) == lower_case(b); };
    return std::search(text.begin(), text.end(), name.begin(), name.end(), same) != text.end();
}

// The names of functions that read or write files, and words that begin loops.
const std::vector<std::string>& unwanted() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> all = {"For", "While"};
        for (const auto& rows : {file_functions(), folder_item_members()}) {
            for (const Row& row : rows) all.push_back(parse_declaration(row.declaration).name);
        }
        return all;
    }();
    return names;
}

bool can_run(std::string_view text) {
    const auto doublings =
        std::ranges::count_if(text, [](char c) { return c == '+' || c == '*' || c == '^'; });
    return doublings < 12 &&
           std::ranges::none_of(unwanted(), [&](const std::string& name) { return contains(text, name); });
}

void require(bool condition, const std::string& what) {
    if (condition) return;
    std::fprintf(stderr, "%s\n", what.c_str());
    std::abort();
}

}  // namespace

// NOLINTNEXTLINE(bugprone-reserved-identifier): the sanitizer's name
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1:max_allocation_size_mb=4096";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    Host host;
    std::ostringstream out;
    try {
        if (can_run(text)) {
            Session(host, out).run("s", text);
        } else {
            Runtime runtime{host, out, {}, ".", HexDump({})};
            Scopes scopes;
            parse(text, runtime, scopes, false);
        }
    } catch (const Quit&) {
    } catch (const std::runtime_error& error) {
        require(*error.what() != '\0', "a refusal without a reason");
    }
    require(host.open_references().empty(), "references stay open");
    require(host.faults().empty(), "the host reports a fault");
    return 0;
}
