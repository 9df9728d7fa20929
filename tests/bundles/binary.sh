#!/usr/bin/env bash
# What the bundle's file promises: binary.sh BUNDLE OBJDUMP, the tool that knows the bundle's processor
# One exported symbol, nothing needed but libc and libm, of glibc 2.17 at the newest (RISC-V: 2.27, the first that knew
# it), full RELRO, no code that runs at load time, and float arithmetic as it is written.
set -euo pipefail
bundle=$1
objdump=$2
dynamic=$(readelf --dynamic --wide "$bundle")
segments=$(readelf --program-headers --wide "$bundle")
exported=$(nm --dynamic --defined-only "$bundle" | awk '{print $2, $3}')
needed=$(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic" | sort | xargs)
# Symbols of libc and libm have a GLIBC version.
foreign=$(nm --dynamic --undefined-only --with-symbol-versions "$bundle" | awk '$1 != "U" || $2 !~ /@GLIBC_/')
versions=$(readelf --version-info --wide "$bundle" | grep -oE '\bGLIBC_[0-9.]+' | sort -u)
oldest=GLIBC_2.17
! grep -q "Machine:.*RISC-V" <<<"$(readelf --file-header "$bundle")" || oldest=GLIBC_2.27
newest=$(sort -V <<<"$versions" | tail -1)

# shellcheck source=tests/bundles/expect.sh
source "$(dirname "${BASH_SOURCE[0]}")/expect.sh"

expect "exports: $exported" [ "$exported" = "T REALPluginMain" ]
expect "needs: $needed" [ "$needed" = "libc.so.6 libm.so.6" ]
expect "symbols of neither libc nor libm: $foreign" [ -z "$foreign" ]
expect "needs $newest, newer than $oldest" [ "$(printf '%s\n' "$newest" "$oldest" | sort -V | tail -1)" = "$oldest" ]
expect "names no version of the C library" [ -n "$versions" ]
expect "no RELRO segment" has "$segments" GNU_RELRO
expect "not bound at load time" has "$dynamic" '\(FLAGS_1\).*NOW'
expect "an executable stack" lacks "$segments" 'GNU_STACK.*RWE'
expect "code that runs at load time" lacks "$dynamic" '\((INIT|INIT_ARRAY|PREINIT_ARRAY)\)'
expect "code that is changed at load time" lacks "$dynamic" 'TEXTREL'
expect "exception tables" lacks "$(readelf --sections --wide "$bundle")" gcc_except_table
expect "exceptions or RTTI" lacks "$(nm "$bundle")" ' (_ZTI|_ZTS|__cxa_|__gxx_|_Unwind_)'
# A fused operation rounds once where two roundings are promised. It may stand only in what is made for Fused, the
# forms for libraries that fuse, and nowhere else on the levels that have it. A sine and a cosine computed together
# may have other bits than those of sinf and cosf.
fused=$("$objdump" --disassemble --demangle --no-show-raw-insn "$bundle" | awk '
    /^[0-9a-f]+ <.*>:$/ { name = $0 }
    /\t(vfn?m(add|sub)|fn?m(add|sub)[.\t]|fml[as]\t)/ && name !~ /kernels::(avx2|avx512|neon)::\(anonymous namespace\)::.*<kernels::(avx2|avx512|neon)::\(anonymous namespace\)::Fused>/ { print name }' | sort -u)
expect "fused multiply-adds in $fused" [ -z "$fused" ]
expect "sine and cosine in one call" lacks "$(nm --dynamic "$bundle")" 'sincos|cexp'
exit $faults
