#!/usr/bin/env bash
# Runs the benchmarks against their peers and writes docs/benchmarks.md with its charts. With a word,
# runs the facilities whose name contains it and prints their report instead of writing it.
set -euo pipefail
cd "$(dirname "$0")/.."
filter=${1-}

scripts/bootstrap.sh bench
cmake --preset bench > /dev/null
cmake --build --preset bench --target benchmarks

build=build/bench
work=$(mktemp -d "${TMPDIR:-/tmp}/kx-bench.XXXXXX")  # log files, and the report until it is whole
trap 'rm -rf "$work"' EXIT
results=$build/results
mkdir -p "$results"

files=()
for source in bench/*_bench.cpp; do
    name=$(basename "$source" .cpp)
    [[ ${name%_bench} == *"$filter"* ]] || continue
    printf '== %s (%ds)\n' "$name" "$SECONDS"
    TMPDIR=$work "$build/bin/$name" \
        --benchmark_enable_random_interleaving=true --benchmark_repetitions=15 \
        --benchmark_min_time=0.08 --benchmark_display_aggregates_only=true \
        --benchmark_out="$results/$name.json" --benchmark_out_format=json \
        > "$results/$name.txt" 2>&1 || { cat "$results/$name.txt" >&2; exit 1; }
    files+=("$results/$name.json")
done
if [[ java == *"$filter"* ]]; then
    printf '== java (%ds)\n' "$SECONDS"
    java -Djava.library.path=$build/lib -cp $build/lib/kxutil.jar:$build/bin/java_bench.jar \
        JavaBench "$work" > "$results/java_bench.json"
    files+=("$results/java_bench.json")
fi
if [ ${#files[@]} -eq 0 ]; then
    echo "bench.sh: no facility is named like '$filter'" >&2
    exit 2
fi

python=/usr/bin/python3 # the one that the distribution's packages are for
$python -B bench/report.py "$build" "${files[@]}" > "$work/report.md"
if [ -n "$filter" ]; then
    cat "$work/report.md"
else
    $python -B bench/charts.py docs/benchmarks "${files[@]}"
    cat "$work/report.md" <(echo) bench/notes.md > docs/benchmarks.md
    echo "docs/benchmarks.md and docs/benchmarks/ written (${SECONDS}s)"
fi
