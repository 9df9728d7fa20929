#include "minihost/program/session.h"

#include <algorithm>
#include <cctype>

#include "minihost/program/functions.h"
#include "minihost/program/names.h"
#include "minihost/program/words.h"

namespace minihost {
namespace {

std::string located(const std::string& name, Position at, const std::string& text) {
    std::string place = printable(name) + ':' + std::to_string(at.line);
    if (at.column > 0) place += ':' + std::to_string(at.column);
    return place + ": " + text;
}

const std::string* name_of_running = nullptr;
const Runtime* runtime_of_running = nullptr;

// A script, while it runs.
struct Running {
    Running(const std::string& name, const Runtime& runtime) {
        runtime_of_running = &runtime;
        name_of_running = &name;
    }
    ~Running() { name_of_running = nullptr; }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;
};

}  // namespace

Session::Session(Host& host, std::ostream& out, const Settings& settings)
    : runtime_{host, out, settings.arguments, settings.script_folder, HexDump(settings.dump), settings.json},
      interactive_(settings.interactive) {}

Place Session::running() {
    return name_of_running ? Place{name_of_running->c_str(), runtime_of_running->at.line} : Place{};
}

bool Session::run(const std::string& name, std::string_view text, bool more_can_come) {
    runtime_.at = {1, 0};
    const Running running(name, runtime_);
    try {
        minihost::run(parse(text, runtime_, scopes_, interactive_), runtime_);
        return true;
    } catch (const ScriptError& error) {
        const bool incomplete = dynamic_cast<const IncompleteScript*>(&error) != nullptr;
        if (interactive_ && more_can_come && incomplete) return false;
        throw std::runtime_error(located(name, error.at, error.what()));
    } catch (const Interrupted& interruption) {
        throw std::runtime_error(located(name, {runtime_.at.line, 0}, interruption.what()));
    } catch (const std::exception& exception) {
        throw std::runtime_error(located(name, runtime_.at, exception.what()));
    }
}

// The class of the variable before the dot, if it is one.
std::string Session::class_before(std::string_view dot) const {
    const auto is_name = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
    dot.remove_suffix(1);
    size_t start = dot.size();
    while (start > 0 && is_name(dot[start - 1])) --start;
    const Variable* found = scopes_.find(dot.substr(start));
    return found ? found->type.class_name : "";
}

std::vector<std::string> Session::completions(std::string_view before, std::string_view word) const {
    std::vector<std::string> names;
    if (before.ends_with('.')) {
        names = member_names(runtime_.host, class_before(before));
    } else {
        names = function_names(runtime_.host);
        for (const Keyword& keyword : keywords()) names.emplace_back(keyword.text);
        for (const auto& more : {type_names(runtime_.host), scopes_.names()})
            names.insert(names.end(), more.begin(), more.end());
        names.insert(names.end(), {"help", "references"});
    }
    std::erase_if(names, [&](const std::string& name) { return !lower(name).starts_with(lower(word)); });
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

}  // namespace minihost
