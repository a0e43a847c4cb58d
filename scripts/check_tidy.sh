#!/usr/bin/env bash
# Runs clang-tidy, as .clang-tidy says, over the sources that the given build folder compiles.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:?build folder}
git ls-files -z 'src/*.cpp' 'examples/*.cpp' 'examples/*.c' |
    xargs -0 -P "$(nproc)" -n 4 clang-tidy --quiet -p "$build" 2> >(grep -vE '^[0-9]+ warnings? generated' >&2)
