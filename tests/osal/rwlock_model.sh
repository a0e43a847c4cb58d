#!/usr/bin/env bash
# Explores the model of the lock word: no deadlock, no writer among others.
#
#   rwlock_model.sh MODEL CC
set -euo pipefail
model=$(realpath "$1") cc=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
spin -a "$model" > /dev/null
$cc -O2 -w -DSAFETY -DCOLLAPSE -DMEMLIM=4000 -o pan pan.c
./pan -m200000 > report
if ! grep -q 'errors: 0' report || grep -q 'max search depth too small' report; then
    cat report
    cp ./*.trail "$(basename "$model").trail" 2> /dev/null || true
    cp "$model" . && spin -t -p -g "$(basename "$model")" | tail -60
    exit 1
fi >&2
grep -E 'states, stored' report
