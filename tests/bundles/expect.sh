# shellcheck shell=bash
# Sourced by the scripts that check a bundle's file: $bundle is that file, and $faults the status to end with.
faults=0
# expect WHAT COMMAND…: says what is wrong with the bundle when the command fails.
expect() {
    local what=$1
    shift
    "$@" || {
        echo "${bundle:?}: $what" >&2
        faults=1
    }
}
# shellcheck disable=SC2317  # which expect calls
has() { grep -Eq "$2" <<<"$1"; }
# shellcheck disable=SC2317
lacks() { ! has "$@"; }
