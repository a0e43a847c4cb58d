#!/usr/bin/env bash
# Runs the benchmarks against their peers and writes docs/benchmarks.md with its charts.
#
# usage: bench.sh [--short | --report] [WORD]
#   --short   fewer and shorter runs, for a look
#   --report  no runs: writes the page again, from the results of the last ones
#   WORD      only the facilities whose name contains it; their report is printed, not written
set -euo pipefail
cd "$(dirname "$0")/.."
runs=15 seconds=0.05
case ${1-} in
    --short) runs=5 seconds=0.02; shift ;;
    --report) runs=0; shift ;;
esac
word=${1-}

build=build/bench
results=$build/results
mkdir -p "$results"
if [ $runs -gt 0 ]; then
    scripts/bootstrap.sh bench
    cmake --preset bench > /dev/null
    cmake --build --preset bench --target kxbench
    work=$(mktemp -d "${TMPDIR:-/tmp}/kx-bench.XXXXXX") # files that the programs write
    trap 'rm -rf "$work"' EXIT
fi

files=()
for source in bench/*_bench.cpp java_bench; do
    name=$(basename "$source" .cpp)
    [[ ${name%_bench} == *"$word"* ]] || continue
    files+=("$results/$name.json")
    [ $runs -gt 0 ] || continue
    printf '== %s (%ds)\n' "$name" "$SECONDS"
    if [ "$name" = java_bench ]; then
        java -Djava.library.path=$build/lib -cp $build/lib/kxutil.jar:$build/bin/java_bench.jar \
            JavaBench "$work" $runs > "$results/$name.json"
    else
        TMPDIR=$work "$build/bin/$name" --benchmark_enable_random_interleaving=true \
            --benchmark_repetitions=$runs --benchmark_min_time=$seconds \
            --benchmark_out="$results/$name.json" --benchmark_out_format=json \
            > "$results/$name.txt" 2>&1 || { cat "$results/$name.txt" >&2; exit 1; }
    fi
done
if [ ${#files[@]} -eq 0 ]; then
    echo "bench.sh: no facility is named like '$word'" >&2
    exit 2
fi

if [ -n "$word" ]; then
    python3 -B bench/report.py $build "${files[@]}"
else
    python3 -B bench/report.py $build "${files[@]}" --to docs
    echo "docs/benchmarks.md and docs/benchmarks/ written (${SECONDS}s)"
fi
