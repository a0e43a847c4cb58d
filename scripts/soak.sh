#!/usr/bin/env bash
# Java and native threads print for MINUTES (default 60) while options change, components register
# and modules are listed; each line must arrive once and whole. Ends at the first fault.
set -euo pipefail
cd "$(dirname "$0")/.."
minutes=${1:-60}

scripts/bootstrap.sh
cmake --preset release > /dev/null
cmake --build --preset release --target kxtest_bridge > /dev/null
folder=$(mktemp -d "${TMPDIR:-/tmp}/kx-soak.XXXXXX")
trap 'rm -rf "$folder"' EXIT
build=build/release
java -Djava.library.path=$build/bin -Djava.io.tmpdir="$folder" \
    -cp $build/lib/kxutil.jar:$build/bin/demo.jar:$build/bin/bridge_test.jar \
    BridgeTest $build/lib $((minutes * 60))
