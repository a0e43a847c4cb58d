#!/usr/bin/env bash
# Counts the non-blank lines of sources: those of tests are at most 40% of those of the product. A new
# test takes the place of a weaker one.
set -euo pipefail
cd "$(dirname "$0")/.."
most=40

# "lines file" of each source in the given folders.
lines_of() {
    git ls-files "$@" | grep -E '\.(h|hpp|c|cpp|inl|java)$' | while read -r file; do
        echo "$(grep -cvE '^\s*$' "$file") $file"
    done
}

sum() {
    awk '{ sum += $1 } END { print sum + 0 }'
}

tests=$(lines_of tests fuzz)
test_lines=$(sum <<< "$tests")
lines=$(lines_of src examples | sum)
echo "tests: $test_lines lines for $lines, $((test_lines * 100 / lines))%"
if ((test_lines * 100 > most * lines)); then
    printf 'more than %d%%; the largest files:\n%s\n' "$most" "$(sort -rn <<< "$tests" | sed 10q)" >&2
    exit 1
fi
