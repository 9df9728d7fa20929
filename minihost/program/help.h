// What the program tells about itself: what there is to call, and what is still held.
#pragma once

#include <iosfwd>
#include <string>

#include "minihost/program/runtime.h"

namespace minihost {

// Everything that the bundle registered; with a name the manual's entry for it, or the declarations of what
// bears it; with a task the members that serve it; with "language" the pages on the language of scripts.
void print_help(Runtime& runtime, const std::string& name);

// The references that nobody gave back and the faults that the host noticed; false when there are none.
bool report_references(const Host& host, std::ostream& out);

}  // namespace minihost
