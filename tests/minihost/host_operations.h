// Host operations as a bundle gets them, and what calls throw.
#pragma once

#include <string>

#include "minihost/library/state.h"

template <class Signature>
Signature* operation(const char* key) {
    return reinterpret_cast<Signature*>(minihost::Host::current().state().resolve(key));
}

// The message of what a call throws; "" when it throws nothing.
template <class Error, class Call>
std::string thrown(Call&& call) {
    try {
        call();
    } catch (const Error& error) {
        return error.what();
    }
    return "";
}
