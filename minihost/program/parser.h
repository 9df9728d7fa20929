// Reads a script and settles what it means: names become slots and members, statements become functions that
// only need to be run. The language:
//
//   Dim name [, name] As [New] Type [(arguments)] [= value] [, ...]
//   place = value        a place is a variable or a member that can be assigned: x, b.Byte(3)
//   call                 b.FillBytesZOR(0, 4, 255), or without parentheses: b.FillBytesZOR 0, 4, 255
//   Print [value [; value]]
//   If test Then ... [ElseIf test Then ...] [Else ...] End If      or in one line, without End If
//   For name [As Type] = first To|DownTo last [Step step] ... Next [name]
//   While test ... Wend
//   Exit [For|While], Continue [For|While]
//   Try ... [Catch [name [As Class]] ...] End Try
//   help [name], references
//
// From weak to strong: Or Xor, And, Not, = <> < <= > >= Is, + -, * / \ Mod, - of one operand, ^. A line ends
// a statement, and so does ":"; "_" at its end continues it. Comments begin with ' or //.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "minihost/program/scopes.h"
#include "minihost/program/statements.h"

namespace minihost {

// Parses a whole script. New variables get slots in `runtime`, at the outermost level for good. An
// interactive text may declare a variable anew, and an expression on its own is shown. Throws ScriptError.
// A text that cannot be parsed declares nothing.
Block parse(std::string_view text, Runtime& runtime, Scopes& scopes, bool interactive);

}  // namespace minihost
