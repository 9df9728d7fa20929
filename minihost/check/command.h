// minihost check BUNDLE: a catalogue of checks of any bundle.
#pragma once

namespace minihost::check {

// The arguments begin with the word "check". The result is the exit status: 0 when every check passed, 1 when
// one failed, 2 for a wrong command line.
int run_command(int argc, char** argv);

}  // namespace minihost::check
