#!/usr/bin/env bash
# What a person gets who unpacks the archive: package.sh BUILD SOURCE VERSION [STARTER…]
# Made twice, it is the same bit for bit; its checksum holds; from a path with spaces, the bundle says its version and the
# tour does what it does here. STARTER runs programs of its kind: `env`, an emulator, or nothing where they do not run.
set -euo pipefail
shopt -s extglob
build=$1 source=$2 version=$3
starter=("${@:4}")
work=$(mktemp -d "$build/an unpacked package.XXXXXX")
trap 'rm -rf "$work"' EXIT
fail() {
    echo "$1" >&2
    exit 1
}

export SOURCE_DATE_EPOCH=1234567890
pack() { cpack --config "$build/CPackConfig.cmake" -B "$work/$1" >"$work/$1.log" || fail "$(cat "$work/$1.log")"; }
(umask 022 && TZ=UTC pack first)
sleep 1.1
(umask 077 && TZ=Asia/Tokyo pack second)
archive=$(basename "$work"/first/*.@(tar.gz|zip))
[[ $archive == *"-${version// /-}".* ]] || fail "the archive's name is $archive"
(cd "$work/first" && sha256sum --check --quiet "$archive.sha256") || fail "the checksum does not hold"
cmp "$work/first/$archive" "$work/second/$archive" || fail "made twice, the archives differ"

cd "$work"
cmake -E tar xf "first/$archive"
folder=$work/${archive%.@(tar.gz|zip)}
cd "$folder"
for file in examples/tour.rbs examples/data/harbour.ppm README.md CHANGELOG.md docs/manual/guide-binary.md plugin/records.h; do
    [ -s "$file" ] || fail "the archive has no $file"
done
grep -q "MemoryBlockZOR $version" MemoryBlockZOR.{so,dll} 2>/dev/null || fail "the bundle does not say $version"
[ ${#starter[@]} -gt 0 ] || exit 0

run() { "${starter[@]}" "$@" </dev/null; }
if [ -f minihost.exe ]; then
    suffix=.exe
    # As a person starts it, at a command line and by a click.
    try() { run cmd /c "Z:${folder//\//\\}\\try.cmd" "$@"; }
    clicked=$(cd / && try) || fail "a click on try.cmd fails: $clicked"
    [[ $clicked == "--- "* ]] || fail "a click on try.cmd shows no tour: $clicked"
    tour=("examples\\tour.rbs")
else
    suffix=
    try() { run "$folder/try" "$@"; }
    tour=()
fi
[ "$(run "./minihost$suffix" --version)" = "minihost $version" ] || fail "minihost says $(run "./minihost$suffix" --version)"
found=$(cd / && try "${tour[@]}") || fail "the tour fails: $found"
expected=$(cd "$work" && run "$build/bin/minihost$suffix" "$source/examples/tour.rbs")
diff <(echo "$expected") <(echo "$found") || fail "the tour differs"
