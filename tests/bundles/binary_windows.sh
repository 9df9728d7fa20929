#!/usr/bin/env bash
# What the bundle's file promises on Windows: binary_windows.sh BUNDLE OBJDUMP NM, tools that know its format
# One exported symbol, nothing needed but the system and its C library, no code that runs at load time, addresses that
# the system chooses, float arithmetic as it is written, and no move of a vector that wants more alignment than the
# stack has.
set -euo pipefail
bundle=$1 objdump=$2 nm=$3
headers=$("$objdump" --private-headers "$bundle")
exported=$(sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/^.*\[ *[0-9]*\].* //p' <<<"$headers" | xargs)
needed=$(sed -n 's/.*DLL Name: //p' <<<"$headers" | tr '[:upper:]' '[:lower:]' | sort -u | grep -vx kernel32.dll | xargs)
sections=$("$objdump" --section-headers "$bundle")
code=$("$objdump" --disassemble --demangle --no-show-raw-insn "$bundle")

# shellcheck source=tests/bundles/expect.sh
source "$(dirname "${BASH_SOURCE[0]}")/expect.sh"

expect "exports: $exported" [ "$exported" = REALPluginMain ]
expect "needs: $needed" [ "$needed" = msvcrt.dll ]
expect "float functions other than the system's" has "$headers" '[0-9]  (sinf|sin)$'
expect "code that runs at load time" has "$headers" '^AddressOfEntryPoint\s+0+$'
expect "initialisation at load time" lacks "$sections" '\.(CRT|tls|ctors|init_array)'
expect "an address that is fixed" has "$headers" 'DYNAMIC_BASE'
expect "data that can be executed" has "$headers" 'NX_COMPAT'
expect "a time stamp" has "$headers" '^Time/Date.*\b(1970|0+)$'
expect "exceptions or RTTI" lacks "$("$nm" "$bundle")" ' _*(ZTI|ZTS|_cxa_|_gxx_|Unwind_)'
expect "no disassembly" has "$code" '\sret'
expect "vectors that want to be aligned" lacks "$code" '\sv?mov(ap[sd]|dqa(32|64)?)\s.*\(.*[yz]mm|\sv?mov(ap[sd]|dqa(32|64)?)\s.*[yz]mm.*\('
fused=$(awk '
    /^[0-9a-f]+ <.*>:$/ { name = $0 }
    /\tvfn?m(add|sub)/ && name !~ /kernels::avx(2|512)::\(anonymous namespace\)::.*<kernels::avx(2|512)::\(anonymous namespace\)::Fused>/ { print name }' <<<"$code" | sort -u)
expect "fused multiply-adds in $fused" [ -z "$fused" ]
exit $faults
