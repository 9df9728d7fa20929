#include "minihost/check/command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <iostream>

#include "minihost/check/catalogue.h"
#include "minihost/platform/files.h"
#include "minihost/program/json.h"
#include "minihost/program/names.h"

namespace minihost::check {
namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

struct Request {
    Subject subject;
    std::vector<std::string> include;
    std::vector<std::string> exclude;
    bool list = false;
    bool json = false;
};

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// "*" stands for any letters, also none.
bool matches(std::string_view pattern, std::string_view name) {
    if (pattern.empty()) return name.empty();
    if (pattern[0] == '*') {
        return matches(pattern.substr(1), name) || (!name.empty() && matches(pattern, name.substr(1)));
    }
    return !name.empty() && pattern[0] == name[0] && matches(pattern.substr(1), name.substr(1));
}

bool any_matches(const std::vector<std::string>& patterns, std::string_view name) {
    return std::ranges::any_of(patterns, [&](const std::string& pattern) { return matches(pattern, name); });
}

// A pattern for nothing is a mistake: what it was to name would go unchecked, or checked, without a word.
void require_matches(const char* option, const std::vector<std::string>& patterns) {
    std::vector<std::string> names;
    for (const Check& check : catalogue()) names.emplace_back(check.name);
    for (const std::string& pattern : patterns) {
        const auto named = [&](const std::string& name) { return matches(pattern, name); };
        if (std::ranges::none_of(names, named))
            throw UsageError(std::string(option) + " " + in_quotes(pattern) + " names no check" +
                             suggestion(pattern, names));
    }
}

// Nothing when the command line asked for a text that has been printed.
std::optional<Request> parse(int argc, char** argv) {
    Request request;
    std::string bundle;
    double limit = 10;
    CLI::App app(
        "Checks a bundle: what it registers, and whether its members stand all that a host and a program can "
        "do.",
        "minihost check");
    app.allow_windows_style_options(false);  // a path may begin with a slash
    app.add_option("BUNDLE", bundle, "The file");
    app.add_flag("--list", request.list, "List the checks and end");
    const auto add_patterns = [&](const char* name, std::vector<std::string>& patterns, const char* text) {
        app.add_option(name, patterns, text)
            ->type_name("PATTERN")
            ->expected(1)
            ->allow_extra_args(false)
            ->take_all();
    };
    add_patterns("--include", request.include,
                 "Run these checks only; * stands for any letters; may be repeated");
    add_patterns("--exclude", request.exclude, "Do not run these checks; may be repeated");
    app.add_option("--seed", request.subject.seed,
                   "Of the calls that are made up: the same ones for the same number")
        ->type_name("NUMBER");
    app.add_option("--calls", request.subject.calls, "Calls of each member in a check")
        ->type_name("NUMBER")
        ->check(CLI::Range(size_t(1), size_t(10'000'000)));
    app.add_option("--limit", limit, "Seconds after which a member that does not end is a hang")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.01, 86400.0));
    app.add_flag("--json", request.json, "Print one JSON object");
    app.footer(
        "\nExit status: 0 when every check passed, 1 when one failed or had to be skipped, 2 for a wrong "
        "command line.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (app.exit(error) == 0) return std::nullopt;
        throw UsageError("");
    }
    require_matches("--include", request.include);
    require_matches("--exclude", request.exclude);
    if (!request.list && bundle.empty()) throw UsageError("BUNDLE is missing; see minihost check --help");
    request.subject.bundle = platform::path_named(bundle);
    request.subject.limit = std::chrono::milliseconds(int64_t(limit * 1000));
    return request;
}

std::vector<const Check*> chosen(const Request& request) {
    std::vector<const Check*> checks;
    for (const Check& check : catalogue()) {
        const bool included = request.include.empty() || any_matches(request.include, check.name);
        if (included && !any_matches(request.exclude, check.name)) checks.push_back(&check);
    }
    if (checks.empty()) throw UsageError("no check is left");
    return checks;
}

const char* word_for(const Outcome& outcome) {
    if (!outcome.skipped.empty()) return "skipped";
    return outcome.findings.empty() ? "ok" : "FAILED";
}

// One line; a single finding stands in it, several follow. A script stands below what it shows.
void print_line(const Check& check, const Outcome& outcome) {
    const size_t count = outcome.findings.size();
    const std::string reason = count == 1                 ? outcome.findings.front().text
                               : count > 1                ? std::to_string(count) + " findings"
                               : !outcome.skipped.empty() ? outcome.skipped
                                                          : outcome.extent;
    std::string line = std::string(word_for(outcome));
    line.resize(9, ' ');
    line += check.name;
    if (!reason.empty()) line += ": " + printable(reason);
    std::cout << line << '\n';
    for (const Finding& finding : outcome.findings) {
        if (count > 1) std::cout << "         - " << printable(finding.text) << '\n';
        if (!finding.script.empty()) std::cout << "             " << printable(finding.script) << '\n';
    }
    std::cout.flush();
}

std::string json_of(const Check& check, const Outcome& outcome) {
    std::string text =
        "{\"name\": " + json_string(check.name) + ", \"result\": " + json_string(lower(word_for(outcome)));
    if (!outcome.extent.empty()) text += ", \"extent\": " + json_string(outcome.extent);
    if (!outcome.skipped.empty()) text += ", \"reason\": " + json_string(outcome.skipped);
    text += ", \"findings\": [";
    for (const Finding& finding : outcome.findings) {
        if (&finding != &outcome.findings.front()) text += ", ";
        text += "{\"text\": " + json_string(finding.text);
        if (!finding.script.empty()) text += ", \"script\": " + json_string(finding.script);
        text += '}';
    }
    return text + "]}";
}

int run_checks(const Request& request) {
    const std::vector<const Check*> checks = chosen(request);
    const auto start = std::chrono::steady_clock::now();
    std::error_code error;
    if (!std::filesystem::is_regular_file(request.subject.bundle, error))
        throw UsageError("there is no bundle " + request.subject.bundle.string());
    size_t ok = 0;
    size_t failed = 0;
    std::string list;
    run(request.subject, checks, [&](const Check& check, const Outcome& outcome) {
        if (outcome.findings.empty() && outcome.skipped.empty()) ++ok;
        if (!outcome.findings.empty()) ++failed;
        if (!request.json) print_line(check, outcome);
        list += (list.empty() ? "\n  " : ",\n  ") + json_of(check, outcome);
    });
    const size_t skipped = checks.size() - ok - failed;
    const std::string seed = std::to_string(request.subject.seed);
    if (request.json) {
        std::cout << "{\"bundle\": " << json_string(request.subject.bundle.string()) << ", \"seed\": " << seed
                  << ", \"passed\": " << ok << ", \"failed\": " << failed << ", \"skipped\": " << skipped
                  << ", \"checks\": [" << list << "\n]}\n";
    } else {
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        char seconds[32];
        std::snprintf(seconds, sizeof seconds, "%.1f", time.count());
        std::cout << ok << " passed, " << failed << " failed, " << skipped << " skipped in " << seconds
                  << " s, seed " << seed << '\n';
    }
    return failed > 0 || skipped > 0 ? kFailed : 0;
}

void print_list() {
    for (const Check& check : catalogue()) {
        std::string name = check.name;
        name.resize(14, ' ');
        std::cout << name << check.description << '\n';
    }
}

}  // namespace

int run_command(int argc, char** argv) {
    try {
        const auto request = parse(argc, argv);
        if (!request) return 0;
        if (!request->list) return run_checks(*request);
        print_list();
        return 0;
    } catch (const UsageError& error) {
        if (*error.what()) std::cerr << "minihost check: " << error.what() << '\n';
        return kUsage;
    } catch (const std::exception& error) {
        std::cerr << "minihost check: " << error.what() << '\n';
        return kFailed;
    }
}

}  // namespace minihost::check
