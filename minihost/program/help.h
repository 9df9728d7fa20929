// What the program tells about itself: what there is to call, and what is still held.
#pragma once

#include <iosfwd>
#include <string>

#include "minihost/program/runtime.h"

namespace minihost {

// Everything that the bundle registered, or, with a name, the declarations of what bears it.
void print_help(Runtime& runtime, const std::string& name);

// The references that nobody gave back and the faults that the host noticed; false when there are none.
bool report_references(const Host& host, std::ostream& out);

}  // namespace minihost
