#!/usr/bin/env bash
# Sets up, builds and runs every check: sources, then the tests in each way of building and on each
# platform, then a short run of each fuzz target. The first failure ends it.
set -euo pipefail
cd "$(dirname "$0")/.."

step() {
    printf '\n== %s (%ds)\n' "$1" "$SECONDS"
}

step "tools"
scripts/bootstrap.sh test

step "sources"
scripts/check_format.sh
scripts/check_includes.sh
scripts/check_tests_share.sh

for preset in release asan tsan aarch64 musl clang; do
    step "$preset"
    cmake --preset "$preset" > /dev/null
    cmake --build --preset "$preset"
    ctest --preset "$preset" -j "$(nproc)" --progress --timeout 120
done

step "platforms agree"
scripts/check_platforms.sh build/release build/aarch64 build/musl build/clang

step "built sources"
scripts/check_calls.sh build/release
scripts/check_tidy.sh build/release

step "fuzz"
scripts/fuzz.sh 10  # each of six: a minute

step "all passed"
