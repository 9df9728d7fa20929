// measure: runs the cases and prints a line of JSON for each. The command ./bench makes tables of them.
#include <sched.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cctype>
#include <iostream>
#include <sstream>

#include "benchmarks/measure.h"

namespace bench {
namespace {

struct Options {
    bool full = false;
    bool check_only = false;
    std::vector<std::string> members;
    std::vector<std::string> levels;
    std::string bundle = MEASURED_BUNDLE;
    std::string other_bundle;
    std::string other_name;
};

// The last processor, which is the one that the system uses least for itself.
void stay_on_one_processor() {
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) != 0) return;
    for (size_t i = CPU_SETSIZE; i-- > 0;) {
        if (!CPU_ISSET(i, &allowed)) continue;
        CPU_ZERO(&allowed);
        CPU_SET(i, &allowed);
        sched_setaffinity(0, sizeof allowed, &allowed);
        return;
    }
}

Rows all_rows() {
    Rows rows;
    add_search_rows(rows);
    add_find_rows(rows);
    add_copy_rows(rows);
    add_in_place_rows(rows);
    add_gather_rows(rows);
    add_number_rows(rows);
    add_float_rows(rows);
    return rows;
}

std::string lowered(std::string text) {
    for (char& c : text) c = char(std::tolower(uint8_t(c)));
    return text;
}

// "FindBytesZOR", "findbytes" and "findbytes dna" name rows; without any, all are wanted.
bool wanted(const Row& row, const std::vector<std::string>& members) {
    const std::string title = lowered(row.member + " " + row.variant);
    return members.empty() || std::ranges::any_of(members, [&](const std::string& member) {
               return title.find(lowered(member)) != std::string::npos;
           });
}

std::vector<const kernels::Level*> levels_named(const std::vector<std::string>& names) {
    std::vector<const kernels::Level*> found;
    for (const std::string& name : names) {
        const size_t before = found.size();
        for (const kernels::Level& level : kernels::levels()) {
            if ((name == "all" || name == level.name) && level.runs_here()) found.push_back(&level);
        }
        if (found.size() == before) throw std::runtime_error("no level " + name + " runs on this machine");
    }
    return found;
}

// The sizes at which a row is measured, each aligned or not.
std::vector<std::pair<size_t, bool>> sizes(const Row& row, const Options& options) {
    std::vector<std::pair<size_t, bool>> all;
    for (const size_t size : row.sizes) {
        if (options.check_only && size > 256 << 10) continue;
        all.emplace_back(size, false);
        const bool shifted = options.full || size == 4096 || size == 256 << 10;
        if (row.misaligned && size >= 4096 && shifted) all.emplace_back(size, true);
    }
    if (options.full && row.charted) {
        for (size_t size = 16; size <= row.largest; size *= 4) {
            if (std::ranges::find(row.sizes, size) == row.sizes.end()) all.emplace_back(size, false);
        }
    }
    return all;
}

void print_goals(std::ostream& out, const Row& row, size_t size) {
    const char* separator = "";
    for (const Goal& goal : row.goals) {
        if (size < goal.from || size > goal.to) continue;
        out << separator << R"({"who":")" << goal.who << R"(","least":)" << goal.least << R"(,"gigabytes":)"
            << goal.gigabytes << R"(,"instructions":)" << goal.instructions << R"(,"of":[)";
        for (size_t i = 0; i < goal.of.size(); ++i) out << (i ? "," : "") << '"' << goal.of[i] << '"';
        out << "]}";
        separator = ",";
    }
}

void print_case(const Row& row, bool misaligned, const Case& measured, const std::vector<Time>& times) {
    static const char* const kKinds[] = {"member", "level", "peer", "reference", "limit"};
    std::ostringstream out;
    out << R"({"family":")" << row.family << R"(","member":")" << row.member << R"(","variant":")"
        << row.variant << R"(","size":)" << measured.size << R"(,"bytes":)" << measured.bytes
        << R"(,"misaligned":)" << (misaligned ? "true" : "false") << R"(,"goals":[)";
    print_goals(out, row, measured.size);
    out << R"(],"contenders":[)";
    for (size_t i = 0; i < times.size(); ++i) {
        const Contender& contender = measured.contenders[i];
        const bool counted = measured.size <= 16 && contender.kind == Kind::kMember;
        out << (i ? "," : "") << R"({"name":")" << contender.name << R"(","kind":")"
            << kKinds[int(contender.kind)] << R"(","same_result":)"
            << (contender.same_result || contender.kind == Kind::kLimit ? "true" : "false") << R"(,"ns":)"
            << times[i].nanoseconds << R"(,"spread":)" << times[i].spread << R"(,"ratio":)" << times[i].ratio
            << R"(,"instructions":)" << (counted ? instructions(contender) : 0) << "}";
    }
    std::cout << out.str() << "]}" << std::endl;
}

// Times of what gives something else mean nothing. False when that is a member or a level, and no peer.
bool leave_out_wrong_ones(Case& measured, const std::string& title) {
    bool right = true;
    for (const Wrong& wrong : check(measured)) {
        std::cerr << "\n" << title << ": " << wrong.contender << " gives " << wrong.what << "\n";
        const auto found = std::ranges::find(measured.contenders, wrong.contender, &Contender::name);
        right = right && (found->kind == Kind::kPeer || found->kind == Kind::kReference);
        if (found->kind != Kind::kMember) measured.contenders.erase(found);
    }
    return right;
}

// False when a member or a level is wrong.
bool run(const Row& row, size_t size, bool misaligned, const Setting& setting, const Options& options) {
    Case measured(setting, size, misaligned);
    row.prepare(measured);
    const std::string title = row.member + " " + row.variant + ", " + std::to_string(size) + " bytes" +
                              (misaligned ? ", misaligned" : "");
    const bool right = leave_out_wrong_ones(measured, title);
    if (options.check_only || !right) return right;
    const Effort effort = options.full ? Effort{100e-6, 31, 2} : Effort{50e-6, 15, 0.25};
    print_case(row, misaligned, measured, measure(measured, effort));
    return true;
}

void show_progress(size_t done, size_t all, const std::string& title) {
    if (isatty(STDERR_FILENO)) std::cerr << "\r\033[K[" << done << "/" << all << "] " << title << std::flush;
}

int run_all(const Options& options) {
    Rows rows = all_rows();
    std::erase_if(rows, [&](const Row& row) { return !wanted(row, options.members); });
    if (rows.empty()) throw std::runtime_error("no row of that name");
    size_t count = 0;
    size_t largest = 0;
    for (const Row& row : rows) {
        for (const auto& [size, misaligned] : sizes(row, options)) ++count, largest = std::max(largest, size);
    }
    Setting setting{.bundles = {}, .levels = levels_named(options.levels), .buffers = Buffers(largest)};
    setting.bundles.emplace_back("bundle", options.bundle);
    if (!options.other_bundle.empty()) setting.bundles.emplace_back(options.other_name, options.other_bundle);

    kernels::choose_level(kernels::best_level());
    stay_on_one_processor();
    if (!options.check_only) {
        std::cout << R"({"level":")" << kernels::best_level().name << R"(","compiler":")" << __VERSION__
                  << R"(","full":)" << (options.full ? "true" : "false") << R"(,"cases":)" << count << "}\n";
    }
    size_t done = 0;
    bool right = true;
    for (const Row& row : rows) {
        for (const auto& [size, misaligned] : sizes(row, options)) {
            show_progress(++done, count, row.member + " " + row.variant);
            right = run(row, size, misaligned, setting, options) && right;
        }
    }
    show_progress(done, count, "");
    if (options.check_only && right) std::cout << count << " cases give what the rule gives\n";
    return right ? 0 : 1;
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    bench::Options options;
    CLI::App app("Measures the members of a bundle beside the best libraries and the machine's limit.");
    app.add_flag("--full", options.full, "more sizes, more samples");
    app.add_flag("--check", options.check_only, "compare results with the rule and measure nothing");
    app.add_option("--level", options.levels, "measure this level's kernels too; all for every one");
    app.add_option("--bundle", options.bundle, "the bundle to measure");
    app.add_option("--other", options.other_bundle, "a second bundle to measure beside it");
    app.add_option("--other-name", options.other_name, "what the second one is called");
    app.add_option("MEMBER", options.members, "rows to measure, by a part of their name");
    CLI11_PARSE(app, argc, argv);
    try {
        return bench::run_all(options);
    } catch (const std::exception& error) {
        std::cerr << "measure: " << error.what() << "\n";
        return 2;
    }
}
