#!/usr/bin/env bash
# Java and native threads print for MINUTES (default 60) while options change, components register
# and modules are listed; each line must arrive once and whole. Ends at the first fault.
set -euo pipefail
cd "$(dirname "$0")/.."
minutes=${1:-60}

scripts/bootstrap.sh
cmake --preset release > /dev/null
cmake --build --preset release --target soak > /dev/null
folder=$(mktemp -d "${TMPDIR:-/tmp}/kx-soak.XXXXXX")
trap 'rm -rf "$folder"' EXIT
build=build/release
java -Djava.library.path=$build/bin:$build/lib \
    -cp $build/lib/kxutil.jar:$build/bin/demo.jar:$build/bin/soak.jar \
    Soak $((minutes * 60)) "$folder" $build/bin/libvm.so 2> "$folder/errors" \
    || { tail -20 "$folder/errors" >&2; exit 1; }
