#include "fuzzers/world.h"

#include <dlfcn.h>
#include <sys/mman.h>
#if __has_include(<sanitizer/asan_interface.h>)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(start, size) (void(start), void(size))
#define ASAN_UNPOISON_MEMORY_REGION(start, size) (void(start), void(size))
#endif

#include <algorithm>
#include <cmath>
#include <cstring>
#include <sstream>
#include <stdexcept>

namespace fuzz {
namespace {

using minihost::Kind;

constexpr size_t kPage = Slot::kLargest;
constexpr size_t kAround = 64;         // bytes around a slot's bytes that are looked at
constexpr int32_t kReferences = 1000;  // so that one more or less is seen, and ends nothing
constexpr uint8_t kPattern = 0xA5;
constexpr const char* kPaths[World::kItems] = {"/tmp/some file", "/usr/share"};

#ifdef SANITIZED
constexpr bool kPoisons = true;
#elif defined(__has_feature)
constexpr bool kPoisons = __has_feature(address_sanitizer);
#else
constexpr bool kPoisons = false;
#endif

uint8_t* memory(size_t pages, int flags = 0) {
    void* mapped = mmap(nullptr, pages * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | flags, -1, 0);
    if (mapped == MAP_FAILED) throw std::runtime_error("there is no memory");
    return static_cast<uint8_t*>(mapped);
}

void open(uint8_t* page) {
    if (mprotect(page, kPage, PROT_READ | PROT_WRITE) != 0) throw std::runtime_error("there is no memory");
}

uint8_t* round_down(uint8_t* address) { return address - uintptr_t(address) % 8; }

bool is_nan(const uint8_t* bytes) {
    float number;
    std::memcpy(&number, bytes, sizeof number);
    return std::isnan(number);
}

// In the place of every operation that fails.
void* nothing() { return nullptr; }

void* resolve(const char* key) noexcept { return minihost::Host::State::current->resolve(key); }

minihost::EntryPoint open_image(const std::filesystem::path& bundle) { return minihost::open_bundle(bundle); }

template <class Function>
Function* function(minihost::EntryPoint entry, const char* name) {
    Dl_info info = {};
    dladdr(reinterpret_cast<void*>(entry), &info);
    void* image = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD);
    void* found = image ? dlsym(image, name) : nullptr;
    if (!found) throw std::runtime_error(std::string("the bundle has no ") + name);
    return reinterpret_cast<Function*>(found);
}

}  // namespace

Slot::Slot() : page_(memory(3) + kPage), real_(page_), copy_(kPage), kept_(kPage) { open(page_); }

void Slot::fill(std::span<const uint8_t> bytes, bool at_end) {
    ASAN_UNPOISON_MEMORY_REGION(page_, kPage);
    size_ = std::min(bytes.size(), kLargest);
    real_ = at_end ? page_ + kPage - size_ : page_;
    first_checked_ = offset() > kAround ? offset() - kAround : 0;
    end_checked_ = std::min(kPage, offset() + size_ + kAround);
    std::memset(page_ + first_checked_, kPattern, end_checked_ - first_checked_);
    std::copy_n(bytes.begin(), size_, real_);
    std::memcpy(copy_.data() + first_checked_, page_ + first_checked_, end_checked_ - first_checked_);
    if constexpr (!kPoisons) return;
    first_checked_ = size_t(round_down(real_) - page_);
    end_checked_ = offset() + size_;
    ASAN_POISON_MEMORY_REGION(page_, kPage);
    ASAN_UNPOISON_MEMORY_REGION(page_ + first_checked_, end_checked_ - first_checked_);
}

void Slot::keep() { std::memcpy(kept_.data() + offset(), real_, size_); }
void Slot::restore() { std::memcpy(real_, kept_.data() + offset(), size_); }
void Slot::accept() { std::memcpy(copy_.data() + offset(), real_, size_); }

bool Slot::same(const uint8_t* floats) const {
    const size_t count = end_checked_ - first_checked_;
    if (std::memcmp(page_ + first_checked_, copy_.data() + first_checked_, count) == 0) return true;
    if (floats < copy_.data() || floats >= copy_.data() + end_checked_) return false;
    std::vector<uint8_t> expected = copy_;
    for (auto i = size_t(floats - copy_.data()); i + sizeof(float) <= offset() + size_; i += sizeof(float)) {
        if (is_nan(page_ + i) && is_nan(&expected[i])) std::memcpy(&expected[i], page_ + i, sizeof(float));
    }
    return std::memcmp(page_ + first_checked_, expected.data() + first_checked_, count) == 0;
}

std::string Slot::difference() const {
    std::ostringstream text;
    for (size_t i = first_checked_; i < end_checked_; ++i) {
        if (page_[i] == copy_[i]) continue;
        text << "byte " << std::ptrdiff_t(i) - std::ptrdiff_t(offset()) << " of " << size_ << " is "
             << int(page_[i]) << ", should be " << int(copy_[i]);
        break;
    }
    return text.str();
}

// A host, the static data of the bundle after its start there, and what it registered.
struct World::Started {
    std::unique_ptr<minihost::Host> host;
    std::vector<uint8_t> data;
    std::vector<Member> members;
};

namespace {

Rule rule_of(const std::string& name, size_t parameters, bool assignment) {
    if (const Rule rule = find_rule(name, parameters, assignment)) return rule;
    throw std::runtime_error("the model has no rule for " + name);
}

std::vector<Member> members_of(const minihost::Host& host) {
    std::vector<Member> members;
    const auto add = [&](const minihost::Method& method) {
        if (!method.bundle) return;
        const auto& [text, name, parameters, result] = method.declaration;
        members.push_back({method.get.get(), rule_of(name, parameters.size(), false), name, method.owner,
                           parameters, result});
        if (!method.set) return;
        Member setter{
            method.set.get(), rule_of(name, parameters.size(), true), name, method.owner, parameters, {}};
        setter.parameters.push_back({"value", result, {}});
        members.push_back(setter);
    };
    for (const minihost::Class* type : host.classes()) {
        for (const minihost::Method& method : type->methods) add(method);
        for (const minihost::Property& property : type->properties) {
            if (!property.bundle) continue;
            members.push_back({property.get.get(),
                               rule_of(property.name, 0, false),
                               property.name,
                               property.owner,
                               {},
                               property.type});
        }
    }
    for (const minihost::Method& method : host.globals()) add(method);
    return members;
}

}  // namespace

World::World(const std::filesystem::path& bundle)
    : entry_(open_image(bundle)),
      image_(reinterpret_cast<const void*>(entry_)),
      fail_allocation_(function<FailAllocation>(entry_, "fail_allocation")),
      choose_level_(function<ChooseLevel>(entry_, "choose_level")) {
    const Image whole = image_;
    const std::vector<uint8_t> fresh = whole.data();
    std::vector<std::vector<uint8_t>> states;
    for (const auto& version : kVersions) {
        minihost::Host::State::current = nullptr;
        whole.put_back(fresh);
        auto started = std::make_unique<Started>();
        started->host = std::make_unique<minihost::Host>(minihost::Options{.version = version});
        started->host->state().load(bundle.string(), [this] { entry_(resolve); });
        states.push_back(whole.data());
        started->members = members_of(*started->host);
        hosts_.push_back(std::move(started));
    }
    image_ = whole.changing(states);
    for (size_t i = 0; i < states.size(); ++i) {
        whole.put_back(states[i]);
        hosts_[i]->data = image_.data();
    }
    auto* const level_name = function<LevelName>(entry_, "level_name");
    for (size_t i = 0; const char* name = level_name(i); ++i) {
        if (!*name) continue;
        levels_.emplace_back(name);
        level_indices_.push_back(i);
    }
#ifdef MAP_32BIT
    uint8_t* low = memory(1, MAP_32BIT);
#else
    uint8_t* low = memory(1);
#endif
    open(low);
    masters_ = reinterpret_cast<void**>(low);
    now_ = hosts_.front().get();
    minihost::Host::State::current = &state();
}

World::~World() {
    end();
    for (auto& started : hosts_) started.reset();
}

minihost::Host::State& World::state() const { return now_->host->state(); }
std::span<const Member> World::members() const { return now_->members; }

World::Counts World::counts() const {
    return {state().objects.size(), state().strings.size(), state().string_data.size()};
}

void World::begin(const HostKind& kind) {
    end();
    now_ = hosts_.at(kind.version).get();
    minihost::Host::State::current = &state();
    image_.put_back(now_->data);
    kind_ = kind;
    // A host that hands out string data knows how to take it back.
    const Answer data = kind_[Operation::kGetData];
    if (data == Answer::kMissing || data == Answer::kLate) kind_[Operation::kDisposeData] = data;
    minihost::Options& options = state().options;
    options.without.clear();
    options.late.clear();
    options.replace.clear();
    state().requested.clear();
    for (size_t i = 0; i < kOperations; ++i) {
        if (kind_.answers[i] == Answer::kMissing) options.without.emplace(kKeys[i]);
        if (kind_.answers[i] == Answer::kLate) options.late.emplace(kKeys[i]);
        if (kind_.answers[i] == Answer::kFailing) {
            options.replace.emplace(kKeys[i], reinterpret_cast<void*>(nothing));
        }
    }
    model_.begin(state(), kind_);
    blocks_[kBlocks - 1] = {now_->host->new_view(nullptr, 16), {}, 16};
    state().live(blocks_[kBlocks - 1].handle.get())->references = kReferences;
    for (size_t i = 0; i < kItems; ++i) items_[i] = {now_->host->new_folder_item(kPaths[i]), kPaths[i]};
    large_ = {now_->host->new_instance("MemoryBlockZOR")};
    balance_ = counts();
}

std::string World::end() {
    for (Block& block : blocks_) {
        if (auto* object = state().live(block.handle.get())) object->references = 1;
        block = {};
    }
    for (Text& text : texts_) {
        if (auto* string = state().live(text.handle.get())) string->references = 1;
        text = {};
    }
    for (Item& item : items_) item = {};
    large_ = {};
    std::string fault;
    if (!state().faults.empty()) fault = "the host reports: " + state().faults.front();
    // What remains, remains because this kind of host cannot take it back.
    state().faults.clear();
    state().objects.clear();
    state().strings.clear();
    for (void* data : state().string_data) std::free(data);
    state().string_data.clear();
    return fault;
}

void World::set_block(size_t i, size_t slot, size_t first, size_t count, int32_t size) {
    Place place = slots_[slot].place().at(int64_t(first));
    place.room = int64_t(count);
    blocks_[i] = {now_->host->new_view(place.real, size), place, size};
    state().live(blocks_[i].handle.get())->references = kReferences;
    balance_ = counts();
}

void World::set_text(size_t i, std::string_view bytes, uint32_t encoding) {
    texts_[i] = {now_->host->new_string(bytes, encoding), std::string(bytes), encoding};
    state().live(texts_[i].handle.get())->references = kReferences;
    balance_ = counts();
}

Argument World::integer(int32_t value) {
    Argument argument;
    argument.word.integer = value;
    return argument;
}

Argument World::block_argument(size_t i) const {
    Argument argument;
    if (i >= kBlocks || !blocks_[i].handle) return argument;
    argument.block = &blocks_[i];
    argument.word.pointer = blocks_[i].handle.get();
    return argument;
}

Argument World::text_argument(size_t i) const {
    Argument argument;
    if (i >= kTexts || !texts_[i].handle) return argument;
    argument.text = &texts_[i];
    argument.word.pointer = texts_[i].handle.get();
    return argument;
}

Argument World::item_argument(size_t i) const {
    Argument argument;
    if (i >= kItems) return argument;
    argument.item = &items_[i];
    argument.word.pointer = items_[i].handle.get();
    return argument;
}

Argument World::address_argument(size_t slot, size_t offset) const {
    Argument argument;
    if (slot >= kSlots) return argument;
    Slot& memory = const_cast<Slot&>(slots_[slot]);
    argument.place = memory.place().at(int64_t(std::min(offset, memory.size())));
    argument.word.pointer = argument.place.real;
    return argument;
}

Argument World::handle_argument(size_t slot) const {
    Argument argument;
    argument.word.integer = 0;
    if (slot > kSlots || uintptr_t(masters_) > UINT32_MAX) return argument;
    masters_[slot] = nullptr;
    if (slot < kSlots) {
        argument.place = const_cast<Slot&>(slots_[slot]).place();
        masters_[slot] = argument.place.real;
    }
    argument.word.integer = int32_t(uint32_t(uintptr_t(masters_ + slot)));
    return argument;
}

std::string World::call(const Member& member, const Block* self, std::span<const Argument> arguments,
                        size_t failing_allocation) {
    const bool large = member.owner == "MemoryBlockZOR";
    const bool pairs =
        kind_[Operation::kLockObject] == Answer::kWorks && kind_[Operation::kUnlockObject] == Answer::kWorks;
    skipped_ = large && !pairs;
    if (skipped_) return "";
    const bool once = large || failing_allocation != 0 || model_.waits_for_late();
    const bool viewed = large_.viewed;
    const Model before = model_;
    for (Slot& slot : slots_) slot.keep();
    model_.fail_allocation(int(failing_allocation));
    Expected expected = model_.call(member.rule, self, &large_, arguments);
    model_.fail_allocation(0);
    if (large) expected.objects += int(large_.viewed) - int(viewed);
    if (!expected.sound) {
        model_ = before;
        for (Slot& slot : slots_) slot.accept();
        skipped_ = true;
        return "";
    }
    for (size_t i = 0; i < levels_.size(); ++i) {
        const size_t level = once ? next_level_++ % levels_.size() : i;
        if (expected.endless_when_plain && levels_[level] == "plain") continue;
        choose_level_(level_indices_[level]);
        for (Slot& slot : slots_) slot.restore();
        std::string wrong = run(member, expected, self, arguments, failing_allocation);
        if (!wrong.empty()) return description(member, self, arguments, levels_[level]) + ": " + wrong;
        if (once) break;
    }
    if (expected.floats) {
        for (Slot& slot : slots_) slot.accept();
    }
    return "";
}

std::string World::run(const Member& member, const Expected& expected, const Block* self,
                       std::span<const Argument> arguments, size_t failing_allocation) {
    const bool large = member.owner == "MemoryBlockZOR";
    minihost::Words words;
    size_t count = 0;
    if (large) {
        words[count++].pointer = large_.handle.get();
    } else if (!member.owner.empty()) {
        words[count++].pointer = self ? self->handle.get() : nullptr;
    }
    for (const Argument& argument : arguments) words[count++] = argument.word;
    words[count].integer = 0;  // a property's, which says nothing

    ++calls_;
    minihost::Word returned;
    {
        const minihost::Running running(state(), {nullptr, "", &member.name});
        fail_allocation_(int(failing_allocation));
        returned = (*member.call)(words);
        fail_allocation_(0);
    }
    std::string wrong = check_result(member, expected, returned);
    if (wrong.empty()) wrong = check_exception(expected);
    state().raised = {};
    for (const Slot& slot : slots_) {
        if (wrong.empty() && !slot.same(expected.floats)) wrong = slot.difference();
    }
    const auto text = std::ranges::find_if(arguments, [](const Argument& argument) { return argument.text; });
    return wrong.empty() ? check_remains(expected, self, text == arguments.end() ? nullptr : text->text)
                         : wrong;
}

std::string World::check_result(const Member& member, const Expected& expected,
                                const minihost::Word& returned) {
    const auto number = [](int64_t found, int64_t wanted) {
        if (found == wanted) return std::string();
        return "returns " + std::to_string(found) + ", should be " + std::to_string(wanted);
    };
    if (expected.any_address) return returned.int64 != 0 ? "" : "returns no address";
    switch (member.result.kind) {
        case Kind::Nothing:
            return "";
        case Kind::Integer:
            return number(returned.integer, expected.result.integer);
        case Kind::Boolean:
            return number(returned.boolean, expected.result.boolean);
        case Kind::Int64:
        case Kind::UInt64:
            return number(returned.int64, expected.result.int64);
        case Kind::Ptr:
            return number(int64_t(uintptr_t(returned.pointer)), int64_t(uintptr_t(expected.result.pointer)));
        case Kind::String: {
            const auto string = minihost::StringRef::adopt(static_cast<REALstring>(returned.pointer));
            if (bool(string) != expected.bytes.has_value())
                return string ? "returns a string" : "returns nil";
            if (!string) return "";
            const auto* found = state().live(string.get());
            if (!found) return "returns what is no string";
            if (found->bytes != *expected.bytes) return "returns other text";
            return number(found->encoding, expected.encoding);
        }
        case Kind::Object: {
            const auto object = minihost::ObjectRef::adopt(static_cast<REALobject>(returned.pointer));
            if (bool(object) != expected.bytes.has_value())
                return object ? "returns an object" : "returns nil";
            if (!object) return "";
            const auto* found = state().live(object.get());
            if (!found) return "returns what is no object";
            if (found->type == state().folder_item)
                return found->path == *expected.bytes ? "" : "returns another folder item";
            if (expected.view && found->data != expected.view) return "returns a block over other memory";
            if (expected.view || member.owner == "MemoryBlockZOR") return "";
            const std::string_view bytes(static_cast<const char*>(found->data), size_t(found->size));
            return bytes == *expected.bytes ? "" : "returns a block with other bytes";
        }
        case Kind::Double:
            break;
    }
    return "returns what the check does not know";
}

std::string World::check_exception(const Expected& expected) {
    const auto& raised = state().raised;
    if (!raised) return expected.raised ? std::string("raises nothing, should raise ") + expected.raised : "";
    const auto* exception = state().live(raised.get());
    if (!exception) return "raises what is no object";
    if (!expected.raised) return "raises a " + exception->type->name;
    if (exception->type->name != expected.raised) return "raises a " + exception->type->name;
    if (exception->error_number != 0) return "raises an error number";
    const auto* message = state().live(exception->message.get());
    if ((message ? message->bytes : "") != expected.message) return "raises with another message";
    if (message && message->encoding != expected.message_encoding) return "raises with another encoding";
    return "";
}

std::string World::check_remains(const Expected& expected, const Block* self, const Text* text) {
    const Counts found = counts();
    const Counts wanted = {balance_.objects + size_t(expected.objects),
                           balance_.strings + size_t(expected.strings),
                           balance_.string_data + size_t(expected.string_data)};
    balance_ = found;
    if (found.objects != wanted.objects) return "leaves objects behind, or takes some away";
    if (found.strings != wanted.strings) return "leaves strings behind, or takes some away";
    if (found.string_data != wanted.string_data) return "leaves string data behind";
    const auto check = [](auto* live, int32_t more) {
        return std::exchange(live->references, kReferences) == kReferences + more;
    };
    for (size_t i = 0; i < kBlocks; ++i) {
        if (!blocks_[i].handle) continue;
        const bool own = &blocks_[i] == self;
        if (!check(state().live(blocks_[i].handle.get()), own ? expected.self_references : 0))
            return "does not balance a block's references";
    }
    for (const Text& other : texts_) {
        if (!other.handle) continue;
        if (!check(state().live(other.handle.get()), &other == text ? expected.text_references : 0))
            return "does not balance a string's references";
    }
    return state().faults.empty() ? "" : "the host reports: " + state().faults.front();
}

std::string World::description(const Member& member, const Block* self, std::span<const Argument> arguments,
                               std::string_view level) const {
    std::ostringstream text;
    const auto block_text = [&](const Block* block) {
        if (!block) return std::string("nil");
        return "block " + std::to_string(block - blocks_) + " (size " + std::to_string(block->size) + " of " +
               std::to_string(block->place.room) + ")";
    };
    text << "host " << kVersions[kind_.version].value_or(0);
    for (size_t i = 0; i < kOperations; ++i) {
        constexpr const char* kHow[] = {"", " without ", " late with ", " failing at "};
        if (kind_.answers[i] != Answer::kWorks) text << kHow[size_t(kind_.answers[i])] << kKeys[i];
    }
    text << ", " << level << ", " << (member.owner.empty() ? "" : block_text(self) + ".") << member.name
         << '(';
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (i > 0) text << ", ";
        const Argument& argument = arguments[i];
        switch (member.parameters[i].type.kind) {
            case Kind::Integer:
                text << argument.word.integer;
                break;
            case Kind::Int64:
                text << argument.word.int64;
                break;
            case Kind::Double:
                text << argument.word.number;
                break;
            case Kind::Boolean:
                text << int(argument.word.boolean);
                break;
            case Kind::String:
                text << (argument.text ? "text " + std::to_string(argument.text - texts_) : "nil");
                break;
            case Kind::Ptr:
                text << argument.word.pointer;
                break;
            default:
                text << (argument.item ? "an item" : block_text(argument.block));
        }
    }
    text << ')';
    return text.str();
}

}  // namespace fuzz
