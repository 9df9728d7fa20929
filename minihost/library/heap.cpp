// The live objects and strings. Only what is in the two tables is live; a handle is looked up there before it
// is read.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "minihost/library/encodings.h"
#include "minihost/library/names.h"
#include "minihost/library/state.h"

namespace minihost {
namespace {

constexpr size_t kAlignment = alignof(std::max_align_t);  // of instance data
constexpr size_t kRetiredHandles = 4096;  // the last ones, whose addresses are not given out again

std::string count_text(int32_t count) {
    return std::to_string(count) + (count == 1 ? " reference" : " references");
}

// A string's first bytes, for a line of a report.
std::string short_text(std::string_view bytes) {
    constexpr size_t kMost = 32;
    std::string text(1, '"');
    return text.append(bytes.substr(0, kMost)).append(bytes.size() > kMost ? "…\"" : "\"");
}

std::string description(const Object& object) {
    std::string text = object.type->name;
    if (!object.path.empty()) return text + " " + object.path.string();
    if (object.message) text.append(" ").append(short_text(Host::current().bytes_of(object.message.get())));
    if (object.data) text += " of " + std::to_string(object.size) + " bytes";
    return text;
}

}  // namespace

size_t round_up(size_t size) { return (size + kAlignment - 1) / kAlignment * kAlignment; }

Memory zeroed_memory(size_t size) { return Memory(std::calloc(1, std::max(size, size_t(1)))); }

bool is_a(const Class* type, const Class* super) {
    while (type && type != super) type = type->super;
    return type != nullptr;
}

REALobject Host::State::add_object(const Class& type) {
    Object object;
    object.type = &type;
    object.serial = ++last_serial;
    object.instance = zeroed_memory(type.instance_size);
    auto* handle = static_cast<REALobject>(object.instance.get());
    if (handle) objects.emplace(handle, std::move(object));
    return handle;
}

REALobject Host::State::add_instance(const Class& type) {
    const REALobject object = add_object(type);
    if (!object) return nullptr;
    try {
        run_constructors(object, &type);
    } catch (...) {  // what was never made is not destroyed
        retire(std::move(objects.extract(object).mapped().instance));
        throw;
    }
    return object;
}

void Host::State::run_constructors(REALobject object, const Class* type) {
    if (!type) return;
    run_constructors(object, type->super);
    if (!type->record || !type->record->constructor) return;
    enter({type->bundle, "the constructor of ", &type->name}, [&] { type->record->constructor(object); });
}

REALobject Host::State::add_block(int32_t size) {
    if (size < 0) return nullptr;
    Memory bytes(size > 0 ? std::calloc(1, size_t(size)) : nullptr);
    if (size > 0 && !bytes) return nullptr;
    const REALobject block = add_view(bytes.get(), size);
    if (Object* object = live(block)) object->owned = std::move(bytes);
    return block;
}

REALobject Host::State::add_view(void* data, int32_t reported_size) {
    const REALobject block = add_object(*memory_block);
    if (Object* object = live(block)) {
        object->data = data;
        object->size = reported_size;
    }
    return block;
}

REALstring Host::State::add_string(std::string_view bytes, uint32_t encoding) {
    String string;
    string.record = zeroed_memory(sizeof(REALstringRecord));
    if (!string.record) return nullptr;
    string.bytes = bytes;
    string.encoding = encoding;
    auto* handle = static_cast<REALstring>(string.record.get());
    String& added = strings.emplace(handle, std::move(string)).first->second;
    if (!options.version || !(*options.version > 2013.0)) {
        // A length byte, the text, and a byte that does not terminate it.
        added.buffer.assign(1, char(std::min(bytes.size(), size_t(255)))).append(bytes).append(1, '\x7F');
        auto* record = static_cast<REALstringRecord*>(added.record.get());
        record->buffer = added.buffer.data();
        record->length = int32_t(bytes.size());
    }
    return handle;
}

Object* Host::State::live(REALobject object) {
    const auto found = objects.find(object);
    return found == objects.end() ? nullptr : &found->second;
}

String* Host::State::live(REALstring string) {
    const auto found = strings.find(string);
    return found == strings.end() ? nullptr : &found->second;
}

Object* Host::State::checked(const char* by, REALobject handle, const Class* type) {
    Object* object = live(handle);
    if (!object) {
        fault(by, handle ? address_text(handle) + " is no live object" : "the object is nil");
    } else if (type && !minihost::is_a(object->type, type)) {
        fault(by, "the object is a " + object->type->name + ", no " + type->name);
        return nullptr;
    }
    return object;
}

String* Host::State::checked(const char* by, REALstring handle) {
    String* string = live(handle);
    if (!string) fault(by, handle ? address_text(handle) + " is no live string" : "the string is nil");
    return string;
}

void Host::State::lock(const char* by, REALobject handle) {
    if (Object* object = checked(by, handle)) ++object->references;
}

void Host::State::lock(const char* by, REALstring handle) {
    if (String* string = checked(by, handle)) ++string->references;
}

// While the destructors run the object is still live, with no reference that could be given back.
void Host::State::unlock(const char* by, REALobject handle) {
    Object* object = checked(by, handle);
    if (!object) return;
    if (object->references == 0) return fault(by, "a reference is given back too often");
    if (--object->references > 0 || object->ends) return;
    object->ends = true;
    run_destructors(by, handle, object->type);
    if (object->references > 0) fault(by, "the destructor of " + object->type->name + " keeps a reference");
    auto gone = objects.extract(handle);
    retire(std::move(gone.mapped().instance));
}

void Host::State::unlock(const char* by, REALstring handle) {
    String* string = checked(by, handle);
    if (!string || --string->references > 0) return;
    auto gone = strings.extract(handle);
    retire(std::move(gone.mapped().record));
}

void Host::State::run_destructors(const char* by, REALobject object, const Class* type) {
    for (; type; type = type->super) {
        if (!type->record || !type->record->destructor) continue;
        try {
            enter({type->bundle, "the destructor of ", &type->name},
                  [&] { type->record->destructor(object); });
        } catch (const BundleError& error) {
            fault(by, error.what());
        }
    }
}

void Host::State::retire(Memory handle) {
    retired.push_back(std::move(handle));
    if (retired.size() > kRetiredHandles) retired.pop_front();
}

void Host::State::fault(const char* by, const std::string& what) {
    faults.push_back(std::string(by) + ": " + what);
}

std::optional<std::string> Host::State::text_of(const String& string, uint32_t encoding) const {
    return convert_text(string.bytes, string.encoding, encoding);
}

// Without a running Host the handles are gone, and there is nothing to count.

namespace {

template <class Handle>
void give_back(Handle handle) noexcept {
    try {
        if (Host::State::current) Host::State::current->unlock("release", handle);
    } catch (const std::bad_alloc&) {  // no memory to write a fault down
    }
}

}  // namespace

void retain(REALobject object) {
    if (Host::State::current) Host::State::current->lock("retain", object);
}
void release(REALobject object) noexcept { give_back(object); }
void retain(REALstring string) {
    if (Host::State::current) Host::State::current->lock("retain", string);
}
void release(REALstring string) noexcept { give_back(string); }

// The Host's view of them

namespace {

template <class Handle>
auto& existing(Host::State& state, Handle handle) {
    auto* found = state.live(handle);
    if (!found) throw CallError(handle ? address_text(handle) + " is no live handle" : "the handle is nil");
    return *found;
}

}  // namespace

const Class& Host::class_of(REALobject object) const { return *existing(*state_, object).type; }

bool Host::is_a(REALobject object, std::string_view class_name) const {
    const Class* type = existing(*state_, object).type;
    while (type && !same_name(type->name, class_name)) type = type->super;
    return type != nullptr;
}

ObjectRef Host::new_instance(std::string_view class_name) {
    const Class* type = find_class(class_name);
    if (!type) return {};
    auto instance = ObjectRef::adopt(state_->add_instance(*type));
    state_->throw_raised();
    return instance;
}

ObjectRef Host::new_block(int32_t size) { return ObjectRef::adopt(state_->add_block(size)); }

ObjectRef Host::new_block(std::string_view bytes) {
    if (!std::in_range<int32_t>(bytes.size())) return {};
    ObjectRef block = new_block(int32_t(bytes.size()));
    if (block && !bytes.empty()) std::memcpy(block_data(block.get()), bytes.data(), bytes.size());
    return block;
}

ObjectRef Host::new_view(void* data, int32_t reported_size) {
    return ObjectRef::adopt(state_->add_view(data, reported_size));
}

void* Host::block_data(REALobject block) const { return existing(*state_, block).data; }
int32_t Host::block_size(REALobject block) const { return existing(*state_, block).size; }

StringRef Host::new_string(std::string_view bytes, uint32_t encoding) {
    return StringRef::adopt(state_->add_string(bytes, encoding));
}

std::string_view Host::bytes_of(REALstring string) const { return existing(*state_, string).bytes; }
uint32_t Host::encoding_of(REALstring string) const { return existing(*state_, string).encoding; }

std::optional<std::string> Host::text_of(REALstring string, uint32_t encoding) const {
    return state_->text_of(existing(*state_, string), encoding);
}

std::vector<std::string> Host::open_references() const {
    std::vector<std::string> lines;
    for (const auto& [handle, object] : state_->objects) {
        lines.push_back(description(object) + ": " + count_text(object.references));
    }
    for (const auto& [handle, string] : state_->strings) {
        lines.push_back("String " + short_text(string.bytes) + ": " + count_text(string.references));
    }
    for (const void* data : state_->string_data) {
        lines.push_back("String data at " + address_text(data) + ": not disposed of");
    }
    std::ranges::sort(lines);
    return lines;
}

uint64_t Host::serial_of(REALobject object) const { return existing(*state_, object).serial; }

int32_t Host::references(const void* handle) const {
    if (const auto object = state_->objects.find(handle); object != state_->objects.end())
        return object->second.references;
    if (const auto string = state_->strings.find(handle); string != state_->strings.end())
        return string->second.references;
    return 0;
}

const std::vector<std::string>& Host::faults() const { return state_->faults; }

}  // namespace minihost
