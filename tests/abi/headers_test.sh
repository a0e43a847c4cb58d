#!/usr/bin/env bash
# Compiles every public header and include-only source alone, as C11 and as C++17, and uses of their
# inline functions with all optimisation, without a warning.
#
#   headers_test.sh SRC CC CXX      the compilers, perhaps with options
set -euo pipefail
src=$1
read -ra cc <<< "$2"
read -ra cxx <<< "$3"
uses=$(dirname "$0")/inline_uses.c
warnings=(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wstrict-aliasing -Werror)
failed=0
count=0
while read -r header; do
    count=$((count + 1))
    include="#include \"${header#"$src"/}\""
    "${cc[@]}" -std=c11 "${warnings[@]}" -Wstrict-prototypes -I"$src" -fsyntax-only -x c - <<< "$include" || failed=1
    "${cxx[@]}" -std=c++17 "${warnings[@]}" -I"$src" -fsyntax-only -x c++ - <<< "$include" || failed=1
done < <(find "$src"/*/export "$src"/sharedinc -name '*.h' -o -name '*.inl')
for level in -O1 -O2 -O3; do
    "${cc[@]}" -std=c11 "${warnings[@]}" $level -I"$src" -c -o /dev/null "$uses" || failed=1
    "${cxx[@]}" -std=c++17 "${warnings[@]}" $level -I"$src" -c -o /dev/null -x c++ "$uses" || failed=1
done
[ "$count" -gt 0 ] || { echo "no headers under $src" >&2; exit 1; }
exit "$failed"
