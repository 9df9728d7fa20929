#include "minihost/library/host.h"

#include <new>

#include "minihost/library/state.h"

namespace minihost {

namespace {

// A bundle may ask at any time, also when its host is gone.
void* resolve(const char* key) noexcept {
    try {
        return Host::State::current ? Host::State::current->resolve(key ? key : "") : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace

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

void Host::forget() { State::current = nullptr; }

void Host::load(const std::filesystem::path& bundle) {
    const EntryPoint entry = open_bundle(bundle);
    state_->load(bundle.string(), [entry] { entry(resolve); });
}

void Host::State::load(const std::string& bundle, const std::function<void()>& entry) {
    static const std::string kEntryPoint = "REALPluginMain";
    struct Loading {
        explicit Loading(State& state) : state_(state) { state_.loading = &state_.bundles.back(); }
        ~Loading() { state_.loading = nullptr; }

     private:
        State& state_;
    };
    bundles.push_back(bundle);
    load_errors.clear();
    try {
        const Loading guard(*this);
        enter({loading, "", &kEntryPoint}, entry);
        read("a declaration", [this] { resolve_types(); });
    } catch (const BundleError& error) {
        throw LoadError(error.what());
    }
    if (!load_errors.empty()) throw LoadError(bundle + ": " + load_errors.front());
}

const std::vector<std::string>& Host::load_errors() const { return state_->load_errors; }

const Options& Host::options() const { return state_->options; }
const std::set<std::string, std::less<>>& Host::requested_keys() const { return state_->requested; }
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
