#!/usr/bin/env bash
# What a person gets who unpacks the archive: package.sh BUILD SOURCE VERSION [minihost], where programs of its kind run
# Made twice, it is the same bit for bit; its checksum holds; from a path with spaces, the bundle says its version and the
# tour does what it does here.
set -euo pipefail
build=$1 source=$2 version=$3 minihost=${4:-}
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
archive=$(basename "$work"/first/*.tar.gz)
[[ $archive == *"-${version// /-}".* ]] || fail "the archive's name is $archive"
(cd "$work/first" && sha256sum --check --quiet "$archive.sha256") || fail "the checksum does not hold"
cmp "$work/first/$archive" "$work/second/$archive" || fail "made twice, the archives differ"

cd "$work"
cmake -E tar xf "first/$archive"
cd "${archive%%.tar.gz}"
for file in examples/tour.rbs examples/data/harbour.ppm README.md CHANGELOG.md docs/manual/guide-binary.md plugin/records.h; do
    [ -s "$file" ] || fail "the archive has no $file"
done
grep -q "MemoryBlockZOR $version" MemoryBlockZOR.so || fail "the bundle does not say $version"
[ -n "$minihost" ] || exit 0
[ "$(./minihost --version)" = "minihost $version" ] || fail "minihost says $(./minihost --version)"
found=$(cd / && "$work/${archive%%.tar.gz}/try") || fail "the tour fails: $found"
expected=$(cd "$work" && "$build/bin/minihost" "$source/examples/tour.rbs")
diff <(echo "$expected") <(echo "$found") || fail "the tour differs"
