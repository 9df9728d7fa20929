#include "minihost/check/catalogue.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <utility>

#include "minihost/check/apart.h"
#include "minihost/platform/image_file.h"
#include "minihost/program/names.h"

namespace minihost::check {
namespace {

constexpr const char* kEntryPoint = "REALPluginMain";

std::string version_text(const std::optional<double>& version) {
    if (!version) return "none";
    char text[32];
    std::snprintf(text, sizeof text, "%g", *version);
    return text;
}

// The file

Outcome check_entry(const Subject& subject) {
    const auto load = [&](Host& host, Report& report) {
        report.doing(kEntryPoint);
        try {
            host.load(subject.bundle);
        } catch (const LoadError& error) {
            // Records that cannot be read are the next check's.
            if (host.load_errors().empty()) report.add({error.what()});
        }
    };
    return {apart(subject, {}, load)};
}

Outcome check_exports(const Subject& subject) {
    Outcome outcome;
    const auto image = platform::read_image_file(subject.bundle);
    for (const std::string& name : image.exports) {
        if (name != kEntryPoint) outcome.findings.push_back({"exports " + name});
    }
    if (std::ranges::find(image.exports, kEntryPoint) == image.exports.end())
        outcome.findings.push_back({std::string("does not export ") + kEntryPoint});
    return outcome;
}

Outcome check_libraries(const Subject& subject) {
    Outcome outcome;
    for (const std::string& name : platform::read_image_file(subject.bundle).needs) {
        if (!platform::is_system_library(name)) outcome.findings.push_back({"needs " + name});
        outcome.extent += (outcome.extent.empty() ? "needs " : ", ") + name;
    }
    return outcome;
}

// What is registered

Outcome check_declarations(const Subject& subject) {
    const auto list_errors = [&](Host& host, Report& report) {
        report.doing(kEntryPoint);
        try {
            host.load(subject.bundle);
        } catch (const LoadError&) {
        }
        for (const std::string& error : host.load_errors()) report.add({error});
    };
    return {apart(subject, {}, list_errors)};
}

struct HostVersion {
    std::optional<double> number;
    int32_t word;
};
constexpr HostVersion kHostVersions[] = {{std::nullopt, 9}, {2009.5, 9},   {2012.0, 10}, {2013.0, 11},
                                         {2013.03, 12},     {2013.04, 12}, {2099.0, 12}};

// A host reads records by their own word, so that a wrong layout shows as records that cannot be read.
Outcome check_versions(const Subject& subject) {
    Outcome outcome;
    for (const HostVersion& version : kHostVersions) {
        const auto compare_words = [&](Host& host, Report& report) {
            const auto announced = host.announced_version();
            if (!announced) return report.add({"announces no version word"});
            if (*announced > version.word)
                report.add({"announces " + std::to_string(*announced) + " to a host that knows up to " +
                            std::to_string(version.word)});
            for (const REALclassDefinition* record : host.registered_classes()) {
                if (record->version != *announced)
                    report.add({"announces " + std::to_string(*announced) + ", but the record of " +
                                record->name + " has " + std::to_string(record->version)});
            }
        };
        Options options;
        options.version = version.number;
        for (const Finding& finding : apart_loaded(subject, options, compare_words))
            outcome.findings.push_back(
                {"host version " + version_text(version.number) + ": " + finding.text});
    }
    outcome.extent = std::to_string(std::size(kHostVersions)) + " host versions";
    return outcome;
}

Outcome check_duplicates(const Subject& subject) {
    const auto find_duplicates = [](Host& host, Report& report) {
        std::map<std::string, int> times;
        for (const Member& member : members_of(host)) {
            if (++times[signature(member)] == 2 && !member.assigns) {
                const std::string owner = member.owner().empty() ? "" : member.owner() + '.';
                report.add({"registers " + owner + member.name() + " twice with the same parameters"});
            }
        }
    };
    return {apart_loaded(subject, {}, find_duplicates)};
}

// Some calls of every member, in one process.
void call_all(const Subject& subject, Host& host, Report& report, bool without_bytes = false) {
    constexpr size_t kCalls = 20;
    Arena arena;
    const size_t count = members_of(host).size();
    for (size_t i = 0; i < count; ++i) {
        const Calls calls(subject, host, i);
        if (subject.broken.contains(signature(calls.member()))) continue;
        for (size_t number = 0; number < std::min(subject.calls, kCalls); ++number) {
            Call call = calls.call(number);
            if (without_bytes) std::ranges::fill(call.blocks, "");
            const std::string script = script_of(calls.member(), call);
            report.doing(calls.member().name(), script);
            arena.place(call.blocks, Arena::kMiddle);
            try {
                perform(host, calls.member(), call, arena);
            } catch (const BundleError& error) {
                return report.add({error.what(), script});
            }
        }
    }
}

Outcome check_keys(const Subject& subject) {
    const auto find_unknown = [&](Host& host, Report& report) {
        call_all(subject, host, report);
        const std::vector<std::string> known = Host::keys();
        for (const std::string& key : host.requested_keys()) {
            if (std::ranges::find(known, key) == known.end())
                report.add({"asks for " + in_quotes(key) + ", which minihost does not know" +
                            suggestion(key, known)});
        }
    };
    return {apart_loaded(subject, {}, find_unknown)};
}

// What is called

Outcome check_instances(const Subject& subject) {
    std::vector<std::string> names;
    // The findings of this one are the classes' names.
    for (const Finding& found : apart_loaded(subject, {}, [](Host&host, Report&report) {
             for (const Class* type : host.classes()) {
                 if (type->record) report.add({type->name});
             }
         })) {
        names.push_back(found.text);
    }
    Outcome outcome;
    for (const std::string& name : names) {
        const std::string script = "Dim made As New " + name;
        const std::string object = "an object of " + name;
        const auto make_and_destroy = [&](Host& host, Report& report) {
            for (int i = 0; i < 3; ++i) {
                report.doing(object, script);
                try {
                    if (!host.new_instance(name))
                        report.add({"no object of " + name + " can be made", script});
                } catch (const BundleError& error) {
                    return report.add({error.what(), script});
                } catch (const HostException& exception) {
                    return report.add({"the constructor of " + name + " raised " + exception.what(), script});
                }
                for (const std::string& fault : host.faults()) return report.add({fault, script});
                for (const std::string& open : host.open_references())
                    return report.add({std::string(object).append(" leaves ").append(open), script});
            }
        };
        const Findings found = apart_loaded(subject, {}, make_and_destroy);
        outcome.findings.insert(outcome.findings.end(), found.begin(), found.end());
    }
    outcome.extent = std::to_string(names.size()) + (names.size() == 1 ? " class" : " classes");
    return outcome;
}

std::vector<std::string> signatures(const Subject& subject) {
    std::vector<std::string> all;
    for (const Finding& found : apart_loaded(subject, {}, [](Host&host, Report&report) {
             for (const Member& member : members_of(host)) report.add({signature(member)});
         })) {
        all.push_back(found.text);
    }
    return all;
}

// Makes some calls of each member until `test` says what is wrong with one. A process for each member, so
// that one that crashes hides no other.
using Test = std::function<std::string(Host&, const Member&, const Call&, size_t number, Arena&)>;
Outcome each_call(const Subject& subject, const Test& test) {
    Outcome outcome;
    const std::vector<std::string> members = signatures(subject);
    if (members.empty()) return {.skipped = "it registers no members"};
    for (size_t i = 0; i < members.size(); ++i) {
        const auto make_calls = [&](Host& host, Report& report) {
            Arena arena;
            const Calls calls(subject, host, i);
            for (size_t number = 0; number < subject.calls; ++number) {
                const Call call = calls.call(number);
                const std::string script = script_of(calls.member(), call);
                report.doing(calls.member().name(), script);
                std::string found;
                try {
                    found = test(host, calls.member(), call, number, arena);
                } catch (const BundleError& error) {
                    found = error.what();
                }
                if (!found.empty()) return report.add({calls.member().name() + ": " + found, script});
            }
        };
        if (subject.broken.contains(members[i])) continue;
        const Findings found = apart_loaded(subject, {}, make_calls);
        outcome.findings.insert(outcome.findings.end(), found.begin(), found.end());
        if (!found.empty()) outcome.members.insert(members[i]);
    }
    const size_t count = members.size() - subject.broken.size();
    outcome.extent = std::to_string(count) + (count == 1 ? " member, " : " members, ") +
                     std::to_string(subject.calls) + " calls each";
    return outcome;
}

Outcome check_calls(const Subject& subject) {
    return each_call(subject, [](Host& host, const Member& member, const Call& call, size_t, Arena& arena) {
        arena.place(call.blocks, Arena::kMiddle);
        perform(host, member, call, arena);
        return std::string();
    });
}

Outcome check_bounds(const Subject& subject) {
    return each_call(subject,
                     [](Host& host, const Member& member, const Call& call, size_t number, Arena& arena) {
                         constexpr Arena::Place kPlaces[] = {Arena::kEnd, Arena::kStart, Arena::kMiddle};
                         arena.place(call.blocks, kPlaces[number % std::size(kPlaces)]);
                         perform(host, member, call, arena);
                         return arena.damage();
                     });
}

Outcome check_references(const Subject& subject) {
    return each_call(
        subject, [](Host& host, const Member& member, const Call& call, size_t, Arena& arena) -> std::string {
            arena.place(call.blocks, Arena::kMiddle);
            perform(host, member, call, arena);
            if (!host.faults().empty()) return host.faults().front();
            const auto open = host.open_references();
            return open.empty() ? "" : "not given back: " + open.front();
        });
}

Outcome check_repeat(const Subject& subject) {
    return each_call(
        subject, [](Host& host, const Member& member, const Call& call, size_t, Arena& arena) -> std::string {
            arena.place(call.blocks, Arena::kMiddle);
            const std::string first = perform(host, member, call, arena);
            arena.place(call.blocks, Arena::kMiddle);
            if (perform(host, member, call, arena) == first) return "";
            return "another result, exception or content of a block for the same call";
        });
}

// Hosts that lack something

struct Variation {
    std::string name;
    Options options;
    bool without_bytes = false;  // of blocks, where these would be of unknown size
};

Outcome each_variation(const Subject& subject, const std::vector<Variation>& variations, const char* kind) {
    Outcome outcome;
    for (const Variation& variation : variations) {
        const auto make_calls = [&](Host& host, Report& report) {
            call_all(subject, host, report, variation.without_bytes);
        };
        for (const Finding& finding : apart_loaded(subject, variation.options, make_calls))
            outcome.findings.push_back({variation.name + ": " + finding.text, finding.script});
    }
    outcome.extent = std::to_string(variations.size()) + ' ' + kind;
    return outcome;
}

constexpr std::string_view kSizeKey = "memoryBlockGetSize";

Outcome check_old_hosts(const Subject& subject) {
    std::vector<Variation> variations;
    for (const HostVersion& version : kHostVersions) {
        Options options;
        options.version = version.number;
        variations.push_back({"--host-version " + version_text(version.number), std::move(options)});
    }
    return each_variation(subject, variations, "host versions");
}

Outcome check_missing(const Subject& subject) {
    std::vector<Variation> variations;
    for (const std::string& key : Host::keys()) {
        Options options;
        options.without.insert(key);
        variations.push_back({"--without " + key, std::move(options), key == kSizeKey});
    }
    return each_variation(subject, variations, "host operations");
}

Outcome check_late(const Subject& subject) {
    std::vector<Variation> variations;
    for (const std::string& key : Host::keys()) {
        Options options;
        options.late.insert(key);
        variations.push_back({key + " at the second request only", std::move(options), key == kSizeKey});
    }
    return each_variation(subject, variations, "host operations");
}

void* give_nothing() { return nullptr; }

// Those whose answer may be nil or false.
Outcome check_failing(const Subject& subject) {
    std::vector<Variation> variations;
    for (const char* key :
         {"newMemoryBlock", "PtrToMemoryBlock", "REALBuildString", "REALConvertString", "PluginGetStringData",
          "REALLoadGlobalMethod", "PluginNewInstance", "FolderItemFromFSSpec", "memoryBlockGetPtr"}) {
        Options options;
        options.replace[key] = reinterpret_cast<void*>(give_nothing);
        variations.push_back({std::string(key) + " giving nothing", std::move(options)});
    }
    return each_variation(subject, variations, "host operations");
}

constexpr Check kCatalogue[] = {
    {"entry", "The file is a bundle, and its entry point returns", check_entry, false},
    {"exports", "It exports its entry point and nothing else", check_exports, false},
    {"libraries", "It needs the C and C++ libraries at the most", check_libraries, false},
    {"declarations", "Every record and declaration can be read", check_declarations, false},
    {"versions", "Its version word and the layout of its records suit each host version", check_versions,
     true},
    {"duplicates", "No member is registered twice", check_duplicates, true},
    {"keys", "It asks for no host operation that there is not", check_keys, true},
    {"instances", "Objects of its classes can be made and destroyed", check_instances, true},
    {"calls", "Members stand hostile arguments: no crash, no hang, no C++ exception", check_calls, true},
    {"bounds", "Members touch nothing in front of a block or behind it", check_bounds, true},
    {"references", "Members give back each reference that they take, once", check_references, true},
    {"repeat", "The same call on the same bytes does the same again", check_repeat, true},
    {"old-hosts", "Members stand each host version", check_old_hosts, true},
    {"missing", "Members stand a host without each host operation", check_missing, true},
    {"late", "Members stand a host that knows an operation at the second request only", check_late, true},
    {"failing", "Members stand host operations that give nothing", check_failing, true},
};

}  // namespace

std::span<const Check> catalogue() { return kCatalogue; }

namespace {

// Why the bundle cannot be loaded; empty when it can.
std::string loading_fault(const Subject& subject) {
    const Findings found = apart_loaded(subject, {}, [](Host&, Report&) {});
    return found.empty() ? "" : found.front().text;
}

Outcome outcome_of(const Check& check, const Subject& subject) {
    try {
        return check.run(subject);
    } catch (const std::exception& error) {
        return {.findings = {{error.what()}}};
    }
}

}  // namespace

void run(Subject subject, std::span<const Check* const> checks,
         const std::function<void(const Check&, const Outcome&)>& done) {
    const std::string fault = loading_fault(subject);
    Outcome calls;
    if (fault.empty()) {
        calls = check_calls(subject);
        subject.broken = calls.members;
    }
    for (const Check* check : checks) {
        if (check->needs_bundle && !fault.empty()) {
            done(*check, {.skipped = "the bundle cannot be loaded: " + fault});
        } else {
            done(*check, check->run == check_calls ? calls : outcome_of(*check, subject));
        }
    }
}

}  // namespace minihost::check
