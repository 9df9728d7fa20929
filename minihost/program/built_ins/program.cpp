#include "minihost/program/built_ins/table.h"

namespace minihost {
namespace {

Value argument_count(Runtime& runtime, const ObjectRef&, Arguments) {
    return int32_t(runtime.arguments.size());
}

Value argument(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const int32_t index = integer(arguments[0]);
    if (index < 1 || size_t(index) > runtime.arguments.size()) {
        raise(runtime, "OutOfBoundsException",
              "Args(" + std::to_string(index) + ") of " + std::to_string(runtime.arguments.size()) +
                  " arguments");
    }
    return utf8_string(runtime, runtime.arguments[size_t(index) - 1]);
}

Value script_folder(Runtime& runtime, const ObjectRef&, Arguments) {
    return utf8_string(runtime, runtime.script_folder.string());
}

Value quit(Runtime& runtime, const ObjectRef&, Arguments arguments) {
    const int32_t status = integer(arguments[0]);
    if (status < 0 || status > 255) raise(runtime, "OutOfBoundsException", "an exit status is 0 to 255");
    throw Quit{status};
}

}  // namespace

Rows program_functions() {
    return {
        {"ArgCount as Integer", argument_count},
        {"Args(index as Integer) as String", argument},
        {"ScriptFolder as String", script_folder},
        {"Quit(status as Integer = 0)", quit},
    };
}

}  // namespace minihost
