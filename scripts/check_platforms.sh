#!/usr/bin/env bash
# Fails when odd numbers and texts mean something else in one of the given builds than in the first.
# A build's programs run as its tests do.
#
#   scripts/check_platforms.sh build/release build/aarch64 build/musl
set -euo pipefail
cd "$(dirname "$0")/.."
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# What the program of a build prints.
odd_texts() {
    local build=$1 runner=()
    [ "$build" != build/aarch64 ] || runner=(qemu-aarch64 -cpu cortex-a57 -L /usr/aarch64-linux-gnu)
    "${runner[@]}" "$build/bin/odd_texts" 100000
}

odd_texts "$1" > "$scratch/first"
for build in "${@:2}"; do
    odd_texts "$build" > "$scratch/other"
    if ! cmp -s "$scratch/first" "$scratch/other"; then
        echo "$1 and $build do not agree:" >&2
        diff "$scratch/first" "$scratch/other" | sed 10q >&2
        exit 1
    fi
    echo "$1 and $build agree on $(wc -l < "$scratch/first") texts"
done
