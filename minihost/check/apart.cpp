#include "minihost/check/apart.h"

#include "minihost/platform/apart.h"

namespace minihost::check {
namespace {

// Texts one after the other, each ended by a zero byte, which none of them has.
std::string packed(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) all.append(text).append(1, '\0');
    return all;
}

std::vector<std::string> unpacked(const std::string& all) {
    std::vector<std::string> texts;
    for (size_t from = 0, to; (to = all.find('\0', from)) != all.npos; from = to + 1)
        texts.push_back(all.substr(from, to - from));
    return texts;
}

class PackingReport : public Report {
 public:
    explicit PackingReport(platform::Note& note) : note_(note) {}
    void add(Finding finding) override {
        texts_.push_back(std::move(finding.text));
        texts_.push_back(std::move(finding.script));
    }
    void doing(const std::string& what, const std::string& script) override {
        note_.set(packed({what, script}));
    }
    std::string all() const { return packed(texts_); }

 private:
    platform::Note& note_;
    std::vector<std::string> texts_;
};

}  // namespace

Findings apart(const Subject& subject, const Options& options,
               const std::function<void(Host&, Report&)>& work) {
    const auto result = platform::run_apart(
        [&](platform::Note& note) {
            PackingReport report(note);
            Host host(options);
            work(host, report);
            return report.all();
        },
        subject.limit);
    if (!result.end.empty()) {
        Host::forget();
        const std::vector<std::string> note = unpacked(result.note);
        return {{note.at(0) + ": " + result.end, note.at(1)}};
    }
    Findings findings;
    const std::vector<std::string> texts = unpacked(result.result);
    for (size_t i = 0; i + 1 < texts.size(); i += 2) findings.push_back({texts[i], texts[i + 1]});
    return findings;
}

Findings apart_loaded(const Subject& subject, const Options& options,
                      const std::function<void(Host&, Report&)>& work) {
    return apart(subject, options, [&](Host& host, Report& report) {
        report.doing("REALPluginMain");
        try {
            host.load(subject.bundle);
        } catch (const LoadError& error) {
            return report.add({error.what()});
        }
        work(host, report);
    });
}

}  // namespace minihost::check
