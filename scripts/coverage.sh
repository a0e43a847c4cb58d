#!/usr/bin/env bash
# Runs the tests in the coverage build and prints line and branch coverage of src/ by file. Lists
# the lines and branches that no test reaches in build/coverage/missing.txt.
set -euo pipefail
cd "$(dirname "$0")/.."
build=build/coverage

scripts/bootstrap.sh coverage
cmake --preset coverage > /dev/null
cmake --build --preset coverage > /dev/null
find $build -name '*.gcda' -delete
ctest --preset coverage -j "$(nproc)" --timeout 300 > $build/tests.txt 2>&1 \
    || { tail -40 $build/tests.txt >&2; exit 1; }

# The library is built three times: with AVX-512, with AVX2 only, and with neither.
gcovr --root . --filter src/ --object-directory $build --exclude-throw-branches \
    --exclude-unreachable-branches --json $build/coverage.json $build/CMakeFiles $build/tests/util
report() {
    gcovr --root . --add-tracefile $build/coverage.json "$@"
}
report > $build/missing.txt
{ echo; report --branches; } >> $build/missing.txt
report --csv | awk -F, '
    function percent(hit, all) { return all == 0 ? "-" : sprintf("%.1f%%", 100 * hit / all) }
    function row(name, a, b, c, d) { printf "%-50s %8s %8s\n", name, percent(b, a), percent(d, c) }
    NR == 1 { printf "%-50s %8s %8s\n", "file", "lines", "branches"; next }
    { row($1, $2, $3, $5, $6); a += $2; b += $3; c += $5; d += $6 }
    END { row("all", a, b, c, d) }'
