// Exceptions on their way out of a call: the host's, and what C++ code in a bundle throws.
#include "minihost/library/state.h"

namespace minihost {
namespace {

std::string text_of(const Object& raised) {
    std::string text = raised.type->name;
    if (raised.message) text += ": " + std::string(Host::current().bytes_of(raised.message.get()));
    return text;
}

}  // namespace

std::string described(const Callee& callee) {
    const std::string text = callee.part + *callee.name;
    return callee.bundle ? text + " of " + *callee.bundle : text;
}

void Host::State::throw_raised() {
    if (raised) throw HostException(std::exchange(raised, {}));
}

void Host::raise(std::string_view class_name, std::string_view message) {
    ObjectRef exception = new_instance(class_name);
    Object* object = state_->live(exception.get());
    if (!object) throw std::logic_error("there is no class " + std::string(class_name));
    object->message = new_string(message, *encoding_number("UTF-8"));
    throw HostException(std::move(exception));
}

HostException::HostException(ObjectRef raised_object)
    : std::runtime_error(text_of(*Host::State::current->live(raised_object.get()))),
      object(std::move(raised_object)) {
    const Object& raised = *Host::State::current->live(object.get());
    class_name = raised.type->name;
    error_number = raised.error_number;
    if (!raised.message) return;
    message = Host::current().bytes_of(raised.message.get());
    message_encoding = Host::current().encoding_of(raised.message.get());
}

}  // namespace minihost
