#!/usr/bin/env bash
# Declares a component wrongly in each way that must not compile, in C and in C++, and looks for
# the message that tells its author what to mend. The right declarations at the end must compile.
#
#   mistakes_test.sh SRC CC CXX
set -euo pipefail
src=$1 cc=$2 cxx=$3
failed=0

MODULES='#define LOG_MODULES(M) M(DBG_A, "a", NULL, LOG_IS_DEFAULT, LOG_LEVEL_AND_MODULE) M(DBG_B, "b", "bee", 0, 0)'
DECORATOR='char* decorate(char* position, size_t* bytesLeft);'
EIGHT='#define LOG_EXTENDED_DECORATORS(D) D(D0, "0", decorate) D(D1, "1", decorate) D(D2, "2", decorate) D(D3, "3", decorate) D(D4, "4", decorate) D(D5, "5", decorate) D(D6, "6", decorate) D(D7, "7", decorate)'
SIZE='#define LOG_MAX_DECORATION_SIZE 40'

compile() {  # compiler and standard, language, lines of the declaration
    local compiler=$1 language=$2
    shift 2
    printf '%s\n' '#include <stddef.h>' "$@" '#define LOG_DEFINE_COMPONENT' \
        '#include "util/export/logging_static_gen.h"' |
        $compiler -Wall -Wextra -Wpedantic -Werror -fPIC -I"$src" -S -o /dev/null -x "$language" - 2>&1
}

rejects() {  # expected words, lines...
    local words=$1 output
    shift
    for language in c c++; do
        if output=$(compile "$([ $language = c ] && echo "$cc -std=c11" || echo "$cxx -std=c++17")" $language "$@"); then
            echo "$language accepts: $*" >&2
            failed=1
        elif ! grep -qF "$words" <<< "$output"; then
            printf '%s rejects %s without saying "%s":\n%s\n' "$language" "$*" "$words" "$output" >&2
            failed=1
        fi
    done
}

accepts() {
    local output
    for language in c c++; do
        if ! output=$(compile "$([ $language = c ] && echo "$cc -std=c11" || echo "$cxx -std=c++17")" $language "$@"); then
            printf '%s rejects: %s\n%s\n' "$language" "$*" "$output" >&2
            failed=1
        fi
    done
}

rejects "LOG_MODULES(MODULE) lists at least one module" ""
rejects "module DBG_X needs a name" '#define LOG_MODULES(M) M(DBG_X, "", NULL, 0, 0)'
rejects "module DBG_X has flags other than" '#define LOG_MODULES(M) M(DBG_X, "x", NULL, 4, 0)'
rejects "module DBG_X starts with decorations that do not exist" \
    '#define LOG_MODULES(M) M(DBG_X, "x", NULL, 0, LOG_DECORATION_BIT(NUM_STD_DECORATIONS))'
for columns in 'LOG_IS_DEFAULT, LOG_IS_LINKED' 'LOG_LEVEL_AND_MODULE, LOG_IS_DEFAULT' 'LOG_LEVEL_AND_MODULE, 0'; do
    rejects "module DBG_X " "#define LOG_MODULES(M) M(DBG_X, \"x\", NULL, $columns)"
done
for word in DECORATION_LEVEL DECORATION_PID 'DECORATION_LEVEL | DECORATION_MODULE'; do
    rejects "without LOG_DECORATION_BIT()" "#define LOG_MODULES(M) M(DBG_X, \"x\", NULL, 0, $word)"
done
for function in NULL 0; do
    rejects "decoration D0 needs a function" "$MODULES" "$SIZE" "#define LOG_EXTENDED_DECORATORS(D) D(D0, \"0\", $function)"
done
rejects "DBG_X" '#define LOG_MODULES(M) M(DBG_X, "x", NULL, 0, 0) M(DBG_X, "y", NULL, 0, 0)'
rejects "expected" 'extern const char* x;' '#define LOG_MODULES(M) M(DBG_X, x, NULL, 0, 0)'
rejects "no such replacement" "$MODULES" \
    '#define LOG_OBSOLETES(O) O("old", "a", 2, MSG_INFO, OBSOLETE_WARN)'
rejects "no such level" "$MODULES" \
    '#define LOG_OBSOLETES(O) O("old", "a", DBG_A, MSG_MAX, OBSOLETE_WARN)'
rejects "fail or warn?" "$MODULES" \
    '#define LOG_OBSOLETES(O) O("old", "a", DBG_A, MSG_INFO, 2U)'
rejects "need LOG_MAX_DECORATION_SIZE" "$MODULES" "$DECORATOR" "$EIGHT"
rejects "there are no LOG_EXTENDED_DECORATORS" "$MODULES" "$SIZE"
rejects "need room in the line" "$MODULES" "$DECORATOR" "$EIGHT" '#define LOG_MAX_DECORATION_SIZE 0'
rejects "at most 8 extended decorators" "$MODULES" "$DECORATOR" "$EIGHT D(D8, \"8\", decorate)" "$SIZE"
rejects "LOG_MSG_DEFAULT is not a message level" "$MODULES" '#define LOG_MSG_DEFAULT MSG_MAX'
rejects "no such level" "$MODULES" \
    '#define LOG_OBSOLETES(O) O("old", "a", DBG_A, -1, OBSOLETE_WARN)'
rejects "LOG_MSG_DEFAULT is not a message level" "$MODULES" '#define LOG_MSG_DEFAULT -1'
rejects "LOG_SANITY_DEFAULT is not a sanity level" "$MODULES" '#define LOG_SANITY_DEFAULT SANITY_MAX'

accepts "$MODULES"
accepts '#define BARE 0' '#define LOG_MODULES(M) M(DBG_A, "a", NULL, 0, BARE) M(DBG_B, "b", NULL, LOG_IS_LINKED, 0U)'
accepts "$MODULES" "$DECORATOR" "$EIGHT" "$SIZE" '#define LOG_MSG_DEFAULT MSG_ERROR' \
    '#define LOG_SANITY_DEFAULT SANITY_CHECK' \
    '#define LOG_OBSOLETES(O) O("old", "b", DBG_B, MSG_DEBUG, OBSOLETE_FAIL) O("gone", NULL, LOG_ALL_MODULES, MSG_QUIET, OBSOLETE_FAIL)'
exit "$failed"
