#!/usr/bin/env bash
# Each level needs all of its features: a processor that lacks one of them takes the level below. (BMI1 and SSSE3
# are left out: the C library of these programs uses them without asking.)
#   features.sh QEMU KERNELS_TESTS
set -euo pipefail
qemu=$1 program=$2
log=$(mktemp)
trap 'rm -f "$log"' EXIT
expect() {
    EXPECTED_LEVEL=$1 "$qemu" -cpu "$2" "$program" --gtest_brief=1 --gtest_filter='Levels.*' >"$log" 2>&1 || {
        cat "$log"
        echo "features: $2 does not choose $1"
        exit 1
    }
}
expect avx2 Haswell
for feature in avx avx2 fma bmi2 abm xsave; do expect sse4 "Haswell,-$feature"; done
expect sse4 Nehalem
for feature in sse4.1 sse4.2 popcnt; do expect sse2 "Nehalem,-$feature"; done
