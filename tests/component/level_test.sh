#!/usr/bin/env bash
# Disassembles the inline level test as a component compiles it and checks that it is one load
# and one unsigned comparison, straight from the component's own array: no call, no global offset
# table. With --show it only prints the code.
#
#   level_test.sh SRC CC CXX [--show]
set -euo pipefail
src=$1 cc=$2 cxx=$3 show=${4-}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failed=0

for compiler in "$cc -std=c11" "$cxx -std=c++17"; do
    language=c
    [ "$compiler" = "$cc -std=c11" ] || language=c++
    $compiler -O2 -fPIC -I"$src" -c -o "$folder/level.o" -x $language - << 'CODE'
#define LOG_MODULES(M) M(DBG_A, "a", NULL, 0, 0) M(DBG_B, "b", NULL, 0, 0)
#include "util/export/logging_static_gen.h"
#ifdef __cplusplus
extern "C"
#endif
bool level_test(void) { return logEnabled(DBG_B, MSG_DEBUG); }
#ifdef __cplusplus
extern "C"
#endif
int statement(int a) { logPrint(DBG_B, MSG_DEBUG, "%d", a); return a * 3; }
#ifdef __cplusplus
extern "C"
#endif
int branch(int a) { if (a > 1) logPrint(DBG_B, MSG_DEBUG, "%d", a); else a++; return a * 3; }
CODE
    code=$(objdump -dr --no-show-raw-insn --disassemble=level_test "$folder/level.o" | grep -E '^ +[0-9a-f]+:')
    [ -z "$show" ] || { echo "$code"; continue; }
    loads=$(grep -c '(%rip)' <<< "$code" || true)
    comparisons=$(grep -cE '\bcmpl? ' <<< "$code" || true)
    answers=$(grep -cE '\b(seta|setae|setb|setbe) ' <<< "$code" || true)
    if [ "$loads" != 1 ] || [ "$comparisons" != 1 ] || [ "$answers" != 1 ] || grep -qE 'call|GOT|PLT' <<< "$code"; then
        printf '%s: not one load and one unsigned comparison:\n%s\n' "$compiler" "$code" >&2
        failed=1
    fi
    # The call comes after the return: a statement that is off takes no jump. In an "if" with
    # "else", clang lets the other branch fall through instead.
    functions=(statement branch)
    [[ $($compiler --version) != *clang* ]] || functions=(statement)
    for function in "${functions[@]}"; do
        if ! objdump -dr --no-show-raw-insn --disassemble="$function" "$folder/level.o" | grep -oE '\bret\b|call' | head -n 1 | grep -q ret; then
            echo "$compiler: in $function() the call of a statement that is off is in the way" >&2
            failed=1
        fi
    done
done
exit "$failed"
