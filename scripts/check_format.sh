#!/usr/bin/env bash
# Fails when a source is not formatted as .clang-format says, or a script does not pass shellcheck.
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files -z '*.h' '*.inl' '*.c' '*.cpp' | xargs -0 clang-format --dry-run -Werror
git ls-files -z '*.sh' .ci/run | xargs -0 shellcheck
