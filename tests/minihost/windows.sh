#!/usr/bin/env bash
# The program for Windows, as people start it: windows.sh MINIHOST HOSTILE_BUNDLE FAULTY_BUNDLE EMULATOR…
# A test in words of the shell, which starts it under the emulator.
set -euo pipefail
minihost=$1 hostile=$2 faulty=$3
shift 3
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

failed=0
# expect WHAT OUTPUT ARGUMENT…: both outputs and the exit status, one after the other.
expect() {
    local what=$1 wanted=$2 status=0 found
    shift 2
    "${emulator[@]}" "$minihost" "$@" >printed 2>errors </dev/null || status=$?
    found=$(cat printed errors; echo "status $status")
    [ "$found" = "$wanted" ] || {
        failed=1
        echo "windows.sh: $what: other output than expected:"
        diff <(echo "$wanted") <(echo "$found") || true
    }
}
emulator=("$@")

expect "the tour" "$(cat "$root/tests/minihost/tour.txt")
status 0" "$root/examples/tour.rbs"
for file in negative brighter; do
    [ -s "out/tour-$file.png" ] || { echo "windows.sh: the tour wrote no picture $file" && failed=1; }
done

# Without an expected output: sounds are not read there, and memory beyond 4 GiB is a matter of the machine.
for example in "$root"/examples/*.rbs; do
    case $(basename "$example") in large.rbs | sound.rbs | tour.rbs) continue ;; esac
    "${emulator[@]}" "$minihost" "$example" >printed 2>&1 </dev/null || {
        failed=1
        echo "windows.sh: $example fails: $(cat printed)"
    }
done

expect "arguments and files in UTF-8" "grün * 3
status 3" -e 'WriteFile(Args(1), BlockFromHex("010203")) : Print Args(1) + " " + Args(2) + " " + Str(ReadFile(Args(1)).Size) : Quit 3' -- grün '*'
[ -s grün ] || { echo "windows.sh: the file has another name: $(ls)" && failed=1; }
printf 'Print 1\r\nCrash\r\nPrint 2\r\n' >crash.rbs
expect "a crash" "1
crash.rbs:2: $hostile crashed in Crash (segmentation fault)
status 70" --plugin "$hostile" crash.rbs
expect "a stack that overflows" "-e:1: $hostile crashed in OverflowStack (segmentation fault)
status 70" --plugin "$hostile" -e OverflowStack
expect "an end by abort" "-e:1: $hostile crashed in Abort (abort)
status 70" --plugin "$hostile" -e Abort
expect "an exception" "-e:1:1: ThrowError of $hostile threw a C++ exception: no way
status 1" --plugin "$hostile" -e ThrowError
mkdir "ein größerer Ordner"
cp "$(dirname "$minihost")/MemoryBlockZOR.dll" "ein größerer Ordner/Blöcke.dll"
echo 'Print ScriptFolder; Args(1); BlockFromHex("010203").FindByteZOR(0, 3, 2)' >"ein größerer Ordner/prüfen und so.rbs"
expect "a path with spaces and umlauts" "ein größerer Ordnerja1
status 0" --plugin "ein größerer Ordner/Blöcke.dll" "ein größerer Ordner/prüfen und so.rbs" ja
expect "a script that there is not" "cannot read größer/keins da.rbs: No such file or directory
status 1" "größer/keins da.rbs"
expect "a file that is no bundle" "crash.rbs: no bundle that can be loaded (the file is no whole image for this processor)
status 1" --plugin crash.rbs -e 'Print 1'
expect "a bundle that there is not" "nix.dll: No such file or directory
status 1" --plugin nix.dll -e 'Print 1'
"${emulator[@]}" "$minihost" check "$(dirname "$minihost")/MemoryBlockZOR.dll" >printed 2>&1 </dev/null || true
grep -q '^16 passed, 0 failed, 0 skipped ' printed || {
    failed=1
    echo "windows.sh: the bundle does not pass its check:"
    cat printed
}

# The check of a bundle: a fault at a time, each in a program of its own.
# finds FAULT CHECK FINDING OPTION…: that the check fails with the finding, and the program goes on to its end.
finds() {
    local status=0
    FAULT=$1 "${emulator[@]}" "$minihost" check --calls 60 --include "$2" --include repeat "${@:4}" "$faulty" \
        >printed 2>&1 </dev/null || status=$?
    { [ $status -eq 1 ] && grep -qF "FAILED   $2: $3" printed && grep -q '^1 passed, 1 failed, 0 skipped ' printed; } || {
        failed=1
        echo "windows.sh: a bundle with the fault \"$1\" fails otherwise than by \"$3\":"
        cat printed
    }
}
finds crash calls "Sum: segmentation fault"
finds hang calls "Sum: no end within 4 s" --limit 4
finds exception calls "Sum: Sum of $faulty threw a C++ exception: no block"
finds constructor instances "an object of Own: segmentation fault"
finds "read behind" bounds "Sum: segmentation fault"
finds "write in front" bounds "Clear: wrote at offset -1 of a block of"
finds "write behind" bounds "Clear: segmentation fault"
finds "version word" versions "4 findings"
exit $failed
