#!/usr/bin/env bash
# Compiles every public header and include-only source alone, as C11 and as C++17; all of them with
# a component and uses of their inline functions, with all optimisation and the strictest warnings,
# in each language's versions, by each compiler that is here.
#
#   headers_test.sh SRC CC CXX      the compilers, perhaps with options
set -euo pipefail
src=$1
read -ra cc <<< "$2"
read -ra cxx <<< "$3"
uses=$(dirname "$0")/inline_uses.c
warnings=(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wstrict-aliasing -Werror)
strict=("${warnings[@]}" -Wsign-conversion -Wcast-qual -Wundef -Wformat=2 -Wwrite-strings -Wpointer-arith
    -Wswitch-default -Wredundant-decls)
failed=0
everything="#include \"$(realpath "$(dirname "$0")/../package/component/cache.c")\""$'\n'
for header in $(cd "$src" && find ./*/export sharedinc -name '*.h' -o -name '*.inl' | sort); do
    include="#include \"${header#./}\""
    "${cc[@]}" -std=c11 "${warnings[@]}" -Wstrict-prototypes -I"$src" -fsyntax-only -x c - <<< "$include" || failed=1
    "${cxx[@]}" -std=c++17 "${warnings[@]}" -I"$src" -fsyntax-only -x c++ - <<< "$include" || failed=1
    everything+=$include$'\n'
done
[[ $everything == *arguments.h* ]] || { echo "no headers under $src" >&2; exit 1; }
everything+="#include \"$(realpath "$uses")\""
clang=("${cc[@]}") clangxx=("${cxx[@]}")
if [ ${#cc[@]} -eq 1 ]; then  # no options for another processor or C library
    command -v clang > /dev/null || echo "no clang here" >&2
    clang=("$(command -v clang || echo "${cc[0]}")") clangxx=("$(command -v clang++ || echo "${cxx[0]}")")
fi
for standard in c11 c17 c2x; do
    c=("-std=$standard" "${strict[@]}" -Wstrict-prototypes -Wmissing-prototypes -I"$src" -fsyntax-only -x c -)
    "${cc[@]}" "${c[@]}" <<< "$everything" || failed=1
    "${clang[@]}" "${c[@]}" <<< "$everything" || failed=1
done
for standard in c++11 c++14 c++17 c++20 c++2b; do
    cpp=("-std=$standard" "${strict[@]}" -Wold-style-cast -I"$src" -fsyntax-only -x c++ -)
    "${cxx[@]}" "${cpp[@]}" <<< "$everything" || failed=1
    "${clangxx[@]}" "${cpp[@]}" <<< "$everything" || failed=1
done
for level in -O1 -O2 -O3; do
    "${cc[@]}" -std=c11 "${warnings[@]}" $level -I"$src" -c -o /dev/null "$uses" || failed=1
    "${cxx[@]}" -std=c++17 "${warnings[@]}" $level -I"$src" -c -o /dev/null -x c++ "$uses" || failed=1
done
exit "$failed"
