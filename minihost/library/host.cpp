#include "minihost/library/host.h"

#include "minihost/library/state.h"

namespace minihost {

Host::Host(Options options) {
    if (State::current) throw std::logic_error("another Host lives");
    state_ = std::make_unique<State>(*this, std::move(options));
    State::current = state_.get();
}

// The references that C++ code still holds are void from here on.
Host::~Host() { State::current = nullptr; }

Host& Host::current() {
    if (!State::current) throw std::logic_error("no Host lives");
    return State::current->host;
}

void Host::load(const std::filesystem::path& bundle) {
    const EntryPoint entry = open_bundle(bundle);
    state_->load_error.clear();
    entry([](const char* key) { return State::current->resolve(key ? key : ""); });
    state_->resolve_types();
    if (!state_->load_error.empty()) throw LoadError(bundle.string() + ": " + state_->load_error);
}

const Options& Host::options() const { return state_->options; }
std::optional<int32_t> Host::announced_version() const { return state_->announced; }
std::span<REALclassDefinition* const> Host::registered_classes() const { return state_->class_records; }
std::span<REALmethodDefinition* const> Host::registered_globals() const { return state_->global_records; }

std::vector<const Class*> Host::classes() const {
    std::vector<const Class*> all;
    for (const Class& type : state_->classes) all.push_back(&type);
    return all;
}

const Class* Host::find_class(std::string_view name) const { return state_->find_class(name); }
const std::deque<Method>& Host::globals() const { return state_->globals; }
Host::State& Host::state() { return *state_; }

}  // namespace minihost
