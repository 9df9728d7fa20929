// minihost runs scripts in the host's language against a bundle.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>

#include "minihost/check/command.h"
#include "minihost/library/crashes.h"
#include "minihost/library/trace.h"
#include "minihost/platform/program.h"
#include "minihost/program/files.h"
#include "minihost/program/help.h"
#include "minihost/program/names.h"
#include "minihost/program/prompt.h"
#include "minihost/program/session.h"

namespace {

namespace fs = std::filesystem;

constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr int kCrashed = 70;

struct CommandLine {
    std::optional<std::string> plugin;
    std::optional<std::string> host_version;
    std::vector<std::string> without;
    std::string statements;  // of -e
    bool has_statements = false;
    bool json = false;
    bool trace = false;
    std::vector<std::string> rest;  // script and arguments
};

// The command line is wrong; an empty text says that the user knows already.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Beside the program.
fs::path default_bundle() { return minihost::platform::program_file().parent_path() / MINIHOST_BUNDLE_NAME; }

std::optional<double> host_version(const std::string& text) {
    if (text == "none") return std::nullopt;
    double version = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, version);
    if (read.ec != std::errc() || read.ptr != end || !std::isfinite(version) || version <= 0) {
        throw UsageError("--host-version takes a number above 0 or none, found " + minihost::in_quotes(text));
    }
    return version;
}

minihost::Options host_options(const CommandLine& line) {
    minihost::Options options;
    const std::vector<std::string> keys = minihost::Host::keys();
    for (const std::string& key : line.without) {
        if (std::ranges::find(keys, key) == keys.end()) {
            throw UsageError("--without takes a key of the host, found " + minihost::in_quotes(key) +
                             minihost::suggestion(key, keys));
        }
    }
    options.without.insert(line.without.begin(), line.without.end());
    if (line.host_version) options.version = host_version(*line.host_version);
    if (line.trace) options.trace = minihost::trace_to(std::cerr);
    return options;
}

// Blocks as the terminal can show them; whole, and without colour, where there is none.
minihost::HexDump::Style dump_style() {
    if (!minihost::platform::is_terminal(stdout)) return {};
    const char* no_colour = std::getenv("NO_COLOR");
    constexpr int kUsualColumns = 80;
    constexpr size_t kMostLines = 200;
    const int columns = minihost::platform::terminal_columns(stdout).value_or(kUsualColumns);
    return {.colour = !(no_colour && *no_colour),
            .line = minihost::HexDump::line_for(columns),
            .most = kMostLines};
}

class Formatter : public CLI::Formatter {
    std::string make_usage(const CLI::App*, std::string) const override {
        return "Usage: minihost [OPTIONS] [SCRIPT [ARGUMENTS...]]\n"
               "       minihost check [OPTIONS] BUNDLE\n";
    }
    std::string make_footer(const CLI::App*) const override {
        std::string text =
            "\nExit status: 0, what Quit says, 1 for a script that fails, 2 for a wrong command line,\n"
            "70 for a bundle that crashes.\n"
            "\nKeys for --without:\n";
        for (const std::string& key : minihost::Host::keys()) text += "  " + key + '\n';
        return text;
    }
};

// Nothing when the command line asked for a text that has been printed, such as the help.
std::optional<CommandLine> parse_command_line(int argc, char** argv) {
    CommandLine line;
    CLI::App app("Runs scripts in the language of the host against the bundle " MINIHOST_BUNDLE_NAME
                 ".\n"
                 "Without SCRIPT: a prompt, or the statements from standard input, which \"-\" stands for.",
                 "minihost");
    app.formatter(std::make_shared<Formatter>());
    app.allow_windows_style_options(false);  // a path may begin with a slash
    auto* statements =
        app.add_option("-e", line.statements, "Run these statements, separated by \":\" or new lines")
            ->type_name("STATEMENTS");
    app.add_option("--plugin", line.plugin, "The bundle to load")->type_name("FILE")->take_last();
    app.add_option("--host-version", line.host_version,
                   "The version that the host reports, or none for a host that reports none")
        ->type_name("NUMBER");
    app.add_option("--without", line.without, "A key that the host does not know; may be repeated")
        ->type_name("KEY")
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all();
    app.add_flag("--json", line.json,
                 "Print values as JSON, a line for each Print; a block as its bytes in hexadecimal");
    app.add_flag("--trace", line.trace, "Say each call of a host operation on the error output");
    app.set_version_flag("--version", "minihost " MINIHOST_VERSION);
    app.prefix_command();  // what follows the script is the script's
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (app.exit(error) == 0) return std::nullopt;
        throw UsageError("");
    }
    line.has_statements = statements->count() > 0;
    line.rest = app.remaining();
    if (line.plugin == "") throw UsageError("--plugin takes a file, found \"\"");
    if (!line.rest.empty() && line.rest[0] == "--") {
        line.rest.erase(line.rest.begin());
    } else if (!line.rest.empty() && line.rest[0].starts_with('-') && line.rest[0] != "-") {
        throw UsageError("unknown option " + line.rest[0] + "; see minihost --help");
    }
    return line;
}

// What the command line asks for: statements, a script, a prompt, or statements from standard input.
void run_input(minihost::Host& host, const CommandLine& line) {
    minihost::Settings settings{.arguments = line.rest, .dump = dump_style(), .json = line.json};
    const auto run = [&](const std::string& name, const std::string& statements) {
        minihost::Session(host, std::cout, settings).run(name, statements);
    };
    if (line.has_statements) return run("-e", line.statements);
    const std::string script = line.rest.empty() ? "-" : line.rest[0];
    if (!line.rest.empty()) settings.arguments.erase(settings.arguments.begin());
    if (script != "-") {
        const fs::path file = minihost::platform::path_named(script);
        if (file.has_parent_path()) settings.script_folder = file.parent_path();
        return run(script, minihost::InputFile(file).read_rest());
    }
    if (!line.rest.empty() || !minihost::platform::is_terminal(stdin))
        return run("stdin", minihost::InputFile(stdin, "standard input").read_rest());
    settings.interactive = true;
    minihost::Session session(host, std::cout, settings);
    run_prompt(session);
}

void load_bundle(minihost::Host& host, const CommandLine& line) {
    const fs::path bundle = line.plugin ? minihost::platform::path_named(*line.plugin) : default_bundle();
    if (!line.plugin && !fs::exists(bundle)) {
        throw std::runtime_error("there is no bundle " + bundle.string() +
                                 "; --plugin FILE says where another one is");
    }
    host.load(bundle);
}

// What was printed before the crash is not lost.
minihost::Place place_of_crash() {
    std::fflush(stdout);
    return minihost::Session::running();
}

// What is to be said when the program ends goes to the error output. The result is the exit status.
int run_host(const CommandLine& line) {
    minihost::Host host(host_options(line));
    int status = EXIT_SUCCESS;
    const auto fail = [&](const std::string& text) {
        std::cout << std::flush;
        std::cerr << text << '\n';
        status = kFailed;
    };
    minihost::report_crashes(kCrashed, place_of_crash);
    try {
        load_bundle(host, line);
        run_input(host, line);
    } catch (const minihost::Quit& quit) {
        status = quit.status;
    } catch (const std::exception& error) {
        fail(error.what());
    }
    if (!std::cout.flush()) fail("cannot write to standard output");
    if (minihost::report_references(host, std::cerr)) status = kFailed;
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    minihost::platform::begin_program(argc, argv);
    if (argc > 1 && std::string_view(argv[1]) == "check")
        return minihost::check::run_command(argc - 1, argv + 1);
    try {
        const auto line = parse_command_line(argc, argv);
        return line ? run_host(*line) : EXIT_SUCCESS;
    } catch (const UsageError& error) {
        if (*error.what()) std::fprintf(stderr, "minihost: %s\n", error.what());
        return kUsage;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "minihost: %s\n", error.what());
        return kFailed;
    }
}
