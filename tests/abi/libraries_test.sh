#!/usr/bin/env bash
# Checks a built library against the tree: what it exports, where it looks for libraries, how it is
# protected once loaded, and in a build for release what it needs.
#
#   libraries_test.sh LIBRARY MAP NEEDED [PROVIDER...]
#
# NEEDED are the libraries it may need besides libc, separated by commas, or "any" in a build that
# is not for release; the functions it takes from elsewhere must be exported by a PROVIDER or by libc.
set -euo pipefail
library=$1 map=$2 needed=$3
shift 3
failed=0

compare() {  # what, expected, actual
    if [ "$2" != "$3" ]; then
        printf '%s: %s differs (-expected +actual):\n' "$library" "$1" >&2
        diff <(echo "$2") <(echo "$3") >&2 || true
        failed=1
    fi
}

listed=$(sed -n '/global:/,/local:/p' "$map" | tr ';' '\n' | grep -oE '[A-Za-z_][A-Za-z0-9_]*$' | sort)
exported=$(nm -D --defined-only "$library" | awk '{print $NF}' | sort)
compare "export list" "$listed" "$exported"

runpath=$(readelf -d "$library" | sed -nE 's/.*\(RUNPATH\).*\[(.*)\]/\1/p')
# shellcheck disable=SC2016  # the linker's own word
compare "run path" '$ORIGIN' "$runpath"

dynamic=$(readelf -dW "$library")
segments=$(readelf -lW "$library" | sed -nE 's/^ +(LOAD|GNU_STACK|GNU_RELRO) .* ([R ][W ][E ]) +0x[0-9a-f]+$/\1 \2/p')
compare "stack" "GNU_STACK RW " "$(grep STACK <<< "$segments")"
compare "writable code" "" "$(grep 'WE' <<< "$segments")"
compare "read-only tables" "GNU_RELRO R  " "$(grep RELRO <<< "$segments")"
compare "time of binding" "NOW" "$(sed -nE 's/.*\(FLAGS_1\).*\b(NOW)\b.*/\1/p' <<< "$dynamic")"
compare "relocations of code" "" "$(grep TEXTREL <<< "$dynamic")"

if [ "$needed" != any ]; then
    expected=$(printf 'libc.so.6,%s' "$needed" | tr ',' '\n' | grep . | sort)
    actual=$(readelf -d "$library" | sed -nE 's/.*\(NEEDED\).*\[(.*)\]/\1/p' | sort)
    compare "needed libraries" "$expected" "$actual"
    guards=$(nm -D --undefined-only "$library" | grep -oE "\b__\w+_chk(_fail)?\b" | sed "s/__.*_chk$/checked/" | sort -u)
    compare "guards" $'__stack_chk_fail\nchecked' "$guards"
    foreign=$(nm -D --undefined-only "$library" | awk '$1 == "U" && $2 !~ /@GLIBC/ {print $2}' | sort)
    provided=$(for provider in "$@"; do nm -D --defined-only "$provider"; done | awk '{print $NF}' | sort)
    compare "functions of nobody" "" "$(comm -23 <(echo "$foreign") <(echo "$provided"))"
fi
exit "$failed"
