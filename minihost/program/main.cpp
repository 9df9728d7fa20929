// minihost runs scripts in the host's language against a bundle.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>

#include "minihost/program/help.h"
#include "minihost/program/names.h"
#include "minihost/program/prompt.h"
#include "minihost/program/session.h"

namespace {

namespace fs = std::filesystem;

constexpr int kFailed = 1;
constexpr int kUsage = 2;

struct CommandLine {
    std::optional<std::string> plugin;
    std::optional<std::string> host_version;
    std::vector<std::string> without;
    std::string statements;  // of -e
    bool has_statements = false;
    std::vector<std::string> rest;  // script and arguments
};

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Beside the program, or where an installation puts it.
fs::path default_bundle() {
    std::error_code error;
    const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
    const fs::path beside = folder / MINIHOST_BUNDLE_NAME;
    return fs::exists(beside, error)
               ? beside
               : (folder / MINIHOST_BUNDLE_FOLDER / MINIHOST_BUNDLE_NAME).lexically_normal();
}

minihost::Options host_options(const CommandLine& line) {
    minihost::Options options;
    options.without.insert(line.without.begin(), line.without.end());
    for (const std::string& key : line.without) {
        if (!minihost::Host::knows_key(key))
            throw UsageError("--without takes a key of the host, found " + minihost::in_quotes(key));
    }
    if (line.host_version == "none") {
        options.version.reset();
    } else if (line.host_version) {
        double version = 0;
        const char* end = line.host_version->data() + line.host_version->size();
        const auto read = std::from_chars(line.host_version->data(), end, version);
        if (read.ec != std::errc() || read.ptr != end || !std::isfinite(version)) {
            throw UsageError("--host-version takes a number or none, found " +
                             minihost::in_quotes(*line.host_version));
        }
        options.version = version;
    }
    return options;
}

bool terminal_wants_colour() {
    const char* no_colour = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) && !(no_colour && *no_colour);
}

class Formatter : public CLI::Formatter {
    std::string make_usage(const CLI::App*, std::string) const override {
        return "Usage: minihost [OPTIONS] [SCRIPT [ARGUMENTS...]]\n";
    }
};

// What the command line asks for: a line, a script, a prompt, or statements from standard input.
void run(minihost::Host& host, const CommandLine& line) {
    minihost::Settings settings{.arguments = line.rest, .colour = terminal_wants_colour()};
    if (line.has_statements) {
        minihost::Session(host, std::cout, settings).run("-e", line.statements);
    } else if (!line.rest.empty()) {
        const std::string script = line.rest[0];
        settings.arguments.erase(settings.arguments.begin());
        if (fs::path(script).has_parent_path()) settings.script_folder = fs::path(script).parent_path();
        minihost::Session(host, std::cout, settings).run(script, minihost::read_file(script));
    } else if (isatty(STDIN_FILENO)) {
        settings.interactive = true;
        minihost::Session session(host, std::cout, settings);
        run_prompt(session);
    } else {
        const std::string statements = minihost::read_rest(stdin, "standard input");
        minihost::Session(host, std::cout, settings).run("stdin", statements);
    }
}

int run(const CommandLine& line) {
    if (line.plugin == "") throw UsageError("--plugin takes a file, found \"\"");
    minihost::Host host(host_options(line));
    bool failed = false;
    try {
        host.load(line.plugin ? fs::path(*line.plugin) : default_bundle());
        run(host, line);
    } catch (const std::exception& error) {
        std::cout << std::flush;
        std::cerr << error.what() << '\n';
        failed = true;
    }
    std::cout << std::flush;
    if (!std::cout) {
        std::cerr << "cannot write to standard output\n";
        failed = true;
    }
    if (minihost::report_references(host, std::cerr)) failed = true;
    return failed ? kFailed : EXIT_SUCCESS;
}

int start(int argc, char** argv) {
    CommandLine line;
    CLI::App app("Runs scripts in the language of the host against the bundle " MINIHOST_BUNDLE_NAME
                 ".\n"
                 "Without SCRIPT: a prompt, or the statements from standard input.",
                 "minihost");
    app.formatter(std::make_shared<Formatter>());
    auto* statements =
        app.add_option("-e", line.statements, "Run these statements, separated by \":\" or new lines");
    app.add_option("--plugin", line.plugin, "The bundle to load")->type_name("FILE")->take_last();
    app.add_option("--host-version", line.host_version,
                   "The version that the host reports, or none for a host that reports none")
        ->type_name("NUMBER");
    app.add_option("--without", line.without, "A key that the host does not know; may be repeated")
        ->type_name("KEY")
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all();
    statements->type_name("STATEMENTS");
    app.set_version_flag("--version", "minihost " MINIHOST_VERSION);
    app.prefix_command();  // what follows the script is the script's
    try {
        app.parse(argc, argv);
        line.has_statements = statements->count() > 0;
        line.rest = app.remaining();
        if (!line.rest.empty() && line.rest[0] == "--") {
            line.rest.erase(line.rest.begin());
        } else if (!line.rest.empty() && line.rest[0].starts_with('-')) {
            throw UsageError("unknown option " + line.rest[0] + "; see minihost --help");
        }
        return run(line);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_SUCCESS : kUsage;
    } catch (const UsageError& error) {
        std::cerr << "minihost: " << error.what() << '\n';
        return kUsage;
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return start(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "minihost: %s\n", error.what());
        return kFailed;
    }
}
