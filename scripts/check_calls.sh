#!/usr/bin/env bash
# Fails when there is a cycle of calls between the object files of a library of the given build.
# Calls of the library's own component do not count: every file may log through the module "util",
# and the component is registered like any other.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:?build folder}
failed=0
for library in kxutil kxosal; do
    folder=$build/CMakeFiles/$library.dir/src
    circles=$(find "$folder" -name '*.o' -exec nm -A {} + | awk '
        { split($1, at, ":"); sub(".*/shared/|.*/linux/", "", at[1]); name = $NF; type = $(NF - 1) }
        at[1] ~ /logging\/component/ { next }
        type == "U" { users[name] = users[name] " " at[1]; next }
        type ~ /[TDBRVWu]/ { home[name] = at[1] }
        END {
            for (name in users) if (name in home) {
                n = split(users[name], from, " ")
                for (i = 1; i <= n; i++) if (from[i] != home[name]) print from[i], home[name]
            }
        }' | sort -u | tsort 2>&1 > /dev/null) || true
    if [ -n "$circles" ]; then
        printf '%s: calls go in a circle:\n%s\n' "$library" "$circles" >&2
        failed=1
    fi
done
exit "$failed"
