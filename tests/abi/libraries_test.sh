#!/usr/bin/env bash
# Checks a built library against the tree: what it exports, where it looks for libraries, and in
# an uninstrumented build what it needs.
#
#   libraries_test.sh LIBRARY MAP NEEDED [PROVIDER...]
#
# NEEDED are the libraries it may need besides libc, separated by commas, or "any"; the functions
# it takes from elsewhere must be exported by a PROVIDER or by libc.
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

if [ "$needed" != any ]; then
    expected=$(printf 'libc.so.6,%s' "$needed" | tr ',' '\n' | grep . | sort)
    actual=$(readelf -d "$library" | sed -nE 's/.*\(NEEDED\).*\[(.*)\]/\1/p' | sort)
    compare "needed libraries" "$expected" "$actual"
    foreign=$(nm -D --undefined-only "$library" | awk '$1 == "U" && $2 !~ /@GLIBC/ {print $2}' | sort)
    provided=$(for provider in "$@"; do nm -D --defined-only "$provider"; done | awk '{print $NF}' | sort)
    compare "functions of nobody" "" "$(comm -23 <(echo "$foreign") <(echo "$provided"))"
fi
exit "$failed"
