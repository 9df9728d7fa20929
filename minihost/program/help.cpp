#include "minihost/program/help.h"

#include <algorithm>
#include <ostream>
#include <vector>

#include "minihost/program/functions.h"
#include "minihost/program/manual.h"
#include "minihost/program/names.h"

namespace minihost {
namespace {

// One declaration and where it belongs.
struct Entry {
    std::string owner;  // empty for functions
    std::string name;
    std::string text;
};

Entry entry_of(const Method& method) {
    return {method.owner, method.declaration.name,
            method.declaration.text + (method.setter ? "   (can be assigned)" : "")};
}

void add_members(std::vector<Entry>& entries, const Class& type) {
    for (const Property& property : type.properties) {
        entries.push_back(
            {type.name, property.name, property.name + " as " + to_string(property.type) + "   (read only)"});
    }
    for (const Method& method : type.methods) entries.push_back(entry_of(method));
}

// What the bundle registered, in its order; the members that only the host has are left out.
std::vector<Entry> registered(const Host& host) {
    std::vector<Entry> entries;
    for (const REALclassDefinition* record : host.registered_classes())
        add_members(entries, *host.find_class(record->name));
    for (const Method& method : host.globals()) entries.push_back(entry_of(method));
    return entries;
}

// All there is; of a class also what it is derived from.
std::vector<Entry> everything(const Host& host) {
    std::vector<Entry> entries;
    for (const Class* type : host.classes()) {
        if (type->super) entries.push_back({type->name, type->name, "is a " + type->super->name});
        add_members(entries, *type);
    }
    for (const Method& method : host.globals()) entries.push_back(entry_of(method));
    for (const BuiltIn& built_in : built_ins()) {
        const Declaration& declaration = built_in.callable.declaration;
        entries.push_back({built_in.owner, declaration.name,
                           declaration.text + (built_in.callable.set ? "   (can be assigned)" : "")});
    }
    return entries;
}

void print_entries(std::ostream& out, const std::vector<Entry>& entries) {
    std::string owner = "none";
    for (const Entry& entry : entries) {
        if (entry.owner != owner) out << (entry.owner.empty() ? "Functions" : entry.owner) << '\n';
        owner = entry.owner;
        out << "  " << entry.text << '\n';
    }
}

// The manual's entry for a name, or of a task all entries that serve it; false when it has neither.
bool print_manual(std::ostream& out, const std::string& name) {
    bool found = false;
    for (const ManualEntry& entry : manual()) {
        const bool named = same_name(entry.name, name) && !entry.text.empty();
        if (!named && !(name == "language" && entry.page == "language")) continue;
        out << (found ? "\n" : "") << entry.name << '\n' << for_terminal(entry.text);
        found = true;
    }
    if (found) return true;
    for (const ManualEntry& entry : manual()) {
        const bool serves =
            std::ranges::any_of(entry.tasks, [&](const std::string& task) { return same_name(task, name); });
        if (!serves) continue;
        out << entry.name << std::string(entry.name.size() < 26 ? 26 - entry.name.size() : 1, ' ')
            << entry.summary << '\n';
        found = true;
    }
    return found;
}

// What may be asked for.
std::vector<std::string> topics(const std::vector<Entry>& entries) {
    std::vector<std::string> known = {"language"};
    for (const Entry& entry : entries) known.insert(known.end(), {entry.name, entry.owner});
    for (const ManualEntry& entry : manual())
        known.insert(known.end(), entry.tasks.begin(), entry.tasks.end());
    std::erase(known, "");
    return known;
}

void print_overview(Runtime& runtime) {
    print_entries(runtime.out, registered(runtime.host));
    runtime.out << "\nBrought along by minihost:\n ";
    std::string last;
    for (const BuiltIn& built_in : built_ins()) {
        const std::string& function = built_in.callable.declaration.name;
        if (built_in.owner.empty() && function != last) runtime.out << ' ' << function;
        last = function;
    }
    runtime.out << "\n\nhelp NAME shows the manual's entry for a member, help TASK (help find, help sound) "
                   "the members "
                   "for it,\nhelp language the language of scripts.\n";
}

}  // namespace

void print_help(Runtime& runtime, const std::string& name) {
    if (name.empty()) return print_overview(runtime);
    if (print_manual(runtime.out, name)) return;
    std::vector<Entry> entries = everything(runtime.host);
    const std::vector<std::string> known = topics(entries);
    std::erase_if(entries, [&](const Entry& entry) {
        return !same_name(entry.name, name) && !same_name(entry.owner, name);
    });
    const std::string language = for_terminal(language_rows(name));
    if (entries.empty() && language.empty())
        runtime.out << "there is nothing called " << name << suggestion(name, known) << '\n';
    print_entries(runtime.out, entries);
    runtime.out << language;
}

bool report_references(const Host& host, std::ostream& out) {
    for (const std::string& line : host.open_references()) out << "not given back: " << line << '\n';
    for (const std::string& fault : host.faults()) out << "fault: " << fault << '\n';
    return !host.open_references().empty() || !host.faults().empty();
}

}  // namespace minihost
