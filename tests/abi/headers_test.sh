#!/usr/bin/env bash
# Compiles every public header and include-only source alone, as C11 and as C++17; all of them with a
# component and uses of their inline functions, with all optimisation and by the strictest warnings, in
# each language's versions, by each compiler that is here.
#
#   headers_test.sh SRC CC CXX
set -euo pipefail
src=$1 cc=$2 cxx=$3
uses=$(dirname "$0")/inline_uses.c
warnings=(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wstrict-aliasing -Werror)
strict=("${warnings[@]}" -Wsign-conversion -Wcast-qual -Wundef -Wformat=2 -Wwrite-strings -Wpointer-arith
    -Wswitch-default -Wredundant-decls)
failed=0
everything="#include \"$(realpath "$(dirname "$0")/../package/component/cache.c")\""$'\n'
for header in $(cd "$src" && find ./*/export sharedinc -name '*.h' -o -name '*.inl' | sort); do
    include="#include \"${header#./}\""
    "$cc" -std=c11 "${warnings[@]}" -Wstrict-prototypes -I"$src" -fsyntax-only -x c - <<< "$include" || failed=1
    "$cxx" -std=c++17 "${warnings[@]}" -I"$src" -fsyntax-only -x c++ - <<< "$include" || failed=1
    everything+=$include$'\n'
done
[[ $everything == *arguments.h* ]] || { echo "no headers under $src" >&2; exit 1; }
everything+="#include \"$(realpath "$uses")\""
for compiler in "$cc" clang; do
    command -v "$compiler" > /dev/null || { echo "no $compiler here" >&2; continue; }
    for standard in c11 c17 c2x; do
        "$compiler" -std=$standard "${strict[@]}" -Wstrict-prototypes -Wmissing-prototypes \
            -I"$src" -fsyntax-only -x c - <<< "$everything" || failed=1
    done
done
for compiler in "$cxx" clang++; do
    command -v "$compiler" > /dev/null || continue
    for standard in c++11 c++14 c++17 c++20 c++2b; do
        "$compiler" -std=$standard "${strict[@]}" -Wold-style-cast \
            -I"$src" -fsyntax-only -x c++ - <<< "$everything" || failed=1
    done
done
for level in -O1 -O2 -O3; do
    "$cc" -std=c11 "${warnings[@]}" $level -I"$src" -c -o /dev/null "$uses" || failed=1
    "$cxx" -std=c++17 "${warnings[@]}" $level -I"$src" -c -o /dev/null -x c++ "$uses" || failed=1
done
exit "$failed"
