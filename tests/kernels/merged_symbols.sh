#!/usr/bin/env bash
# No function of a level's object file may be one that the linker merges with another unit's, where code for a
# newer processor could win: merged_symbols.sh NM OBJECT…
set -euo pipefail
nm=$1
shift
faults=0
for object; do
    merged=$("$nm" --demangle "$object" | awk '$2 ~ /^[WVu]$/' | grep -v 'DW.ref' || true)
    [ -z "$merged" ] || {
        printf '%s:\n%s\n' "$object" "$merged" >&2
        faults=1
    }
done
exit $faults
