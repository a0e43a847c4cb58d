#!/usr/bin/env bash
# Checks every include under src against include_rules.txt: project headers against the file's
# row, system headers against what its folder may use. Only the vector layer and the pause name
# processors and their instructions.
set -euo pipefail
cd "$(dirname "$0")/.."
rules=scripts/include_rules.txt
failed=0

complain() {
    echo "$1" >&2
    failed=1
}

# The row of a file: what it may include, as patterns.
allowed_for() {
    local file=$1 pattern allowed
    while read -r pattern allowed; do
        # shellcheck disable=SC2053  # the right-hand side is a pattern on purpose
        [[ $file == $pattern ]] && { echo "$allowed"; return; }
    done < "$rules"
    return 1
}

matches_any() {
    local name=$1 pattern
    shift
    for pattern in "$@"; do
        # shellcheck disable=SC2053
        [[ $name == $pattern ]] && return 0
    done
    return 1
}

set -f  # the rows hold patterns, which must reach matches_any as they are
c_headers="stddef.h stdint.h stdbool.h stdarg.h stdio.h stdlib.h string.h ctype.h wchar.h limits.h"
cpp_headers="atomic bit algorithm iterator type_traits span string_view charconv"

system_headers_for() {
    case $1 in
        osal/export/linux/*_pd.h | osal/c/linux/*.cpp) echo "*" ;;
        util/export/posix/stringutil_pd.h) echo "$c_headers strings.h" ;;
        util/c/shared/json/json_internal.h) echo "$c_headers $cpp_headers setjmp.h" ;;
        util/c/shared/decimal.cpp) echo "$c_headers $cpp_headers langinfo.h" ;;
        util/c/shared/*_java.cpp | util/c/shared/logging/java_bridge.cpp) echo "$c_headers $cpp_headers jni.h" ;;
        util/c/shared/logging/cancellation.h) echo "pthread.h" ;;
        util/c/shared/logging/registration.cpp) echo "$c_headers $cpp_headers dlfcn.h" ;;
        util/c/shared/logging/print.cpp) echo "$c_headers $cpp_headers time.h" ;;
        util/export/logging_static_gen.h) echo "$c_headers pthread.h" ;;
        util/c/shared/logging/streams.cpp) echo "$c_headers $cpp_headers pthread.h stdio_ext.h" ;;
        util/c/shared/vector/*) echo "$c_headers $cpp_headers emmintrin.h immintrin.h arm_neon.h" ;;
        util/c/*) echo "$c_headers $cpp_headers" ;;
        *) echo "$c_headers" ;;
    esac
}

processors='__builtin_(ia32|arm|aarch64)_|\b_mm[0-9]*_|\b__m[0-9]+|\bv[a-z0-9]+q?_[su](8|16|32|64)\b'
processors+='|\b(SSE|AVX|NEON|__x86_64|__aarch64)|\b(sse[0-9]|avx)|gnu::target|__(SSE|AVX|ARM)'

while read -r path; do
    file=${path#src/}
    if [[ $file != util/c/shared/vector/* && $file != sharedinc/pause.h ]] &&
        grep -nHE "$processors" "$path" >&2; then
        complain "$path names a processor or its instructions"
    fi
    if ! allowed=$(allowed_for "$file"); then
        complain "$path: no row in $rules"
        continue
    fi
    while read -r name; do
        # shellcheck disable=SC2086  # a list of patterns
        matches_any "$name" $allowed || complain "$path may not include \"$name\""
    done < <(sed -nE 's/^#include "([^"]+)".*/\1/p' "$path")
    while read -r name; do
        # shellcheck disable=SC2046  # a list of patterns
        matches_any "$name" $(system_headers_for "$file") || complain "$path may not include <$name>"
    done < <(sed -nE 's/^#include <([^>]+)>.*/\1/p' "$path")
done < <(git ls-files 'src/*.h' 'src/*.inl' 'src/*.cpp')
exit "$failed"
