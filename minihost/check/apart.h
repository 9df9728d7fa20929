// Checks' work in processes of its own, with a host that has loaded the bundle.
#pragma once

#include <functional>

#include "minihost/check/calls.h"
#include "minihost/check/catalogue.h"

namespace minihost::check {

// What the work has to say, and a place to say what it is about to do: a crash is then found with that.
class Report {
 public:
    virtual ~Report() = default;
    virtual void add(Finding finding) = 0;
    virtual void doing(const std::string& what, const std::string& script = "") = 0;
};

using Findings = std::vector<Finding>;

// Runs `work` with a host of the given kind before it has loaded the bundle.
Findings apart(const Subject& subject, const Options& options,
               const std::function<void(Host&, Report&)>& work);
// The same after it has loaded it. A bundle that does not load is a finding.
Findings apart_loaded(const Subject& subject, const Options& options,
                      const std::function<void(Host&, Report&)>& work);

// Calls that are the same for the same subject: those of the `index`th member.
class Calls {
 public:
    Calls(const Subject& subject, Host& host, size_t index)
        : subject_(subject), host_(host), members_(members_of(host)), index_(index) {}

    const Member& member() const { return members_[index_]; }
    Call call(size_t number) const {
        return make_call(host_, member(),
                         Random(Random(subject_.seed * 1000003 + index_ * 1009).next() + number));
    }

 private:
    const Subject& subject_;
    Host& host_;
    std::vector<Member> members_;
    size_t index_;
};

}  // namespace minihost::check
