#!/usr/bin/env bash
# Runs each fuzz target for SECONDS (default 60), from the corpus in the tree. New inputs stay in
# build/fuzz/corpus; a failing input is left in build/fuzz and its name printed.
#
#   scripts/fuzz.sh [SECONDS [TARGET...]]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true

cmake --preset fuzz > /dev/null
cmake --build --preset fuzz
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
    for source in fuzz/*_fuzz.cpp; do
        targets+=("$(basename "$source" .cpp)")
    done
fi
for target in "${targets[@]}"; do
    corpus=build/fuzz/corpus/$target
    mkdir -p "$corpus"
    options=(-max_total_time="$seconds" -artifact_prefix="$PWD/build/fuzz/" -print_final_stats=1)
    dictionary=fuzz/${target%_fuzz}.dict
    [ ! -f "$dictionary" ] || options+=(-dict="$dictionary")
    log=build/fuzz/$target.log
    if ! "build/fuzz/bin/$target" "${options[@]}" "$corpus" "fuzz/corpus/$target" > "$log" 2>&1; then
        tail -40 "$log" >&2
        exit 1
    fi
    echo "$target: $(sed -n 's/^stat::number_of_executed_units: *//p' "$log") inputs in ${seconds}s, no fault"
done
