#!/usr/bin/env bash
# Installs what building and testing need, as Debian packages: as root, or through sudo.
# With --bench also the peers that the benchmarks compare with, with --coverage what reports it.
set -euo pipefail

packages=(g++ cmake ninja-build libgtest-dev git
    clang clang-format clang-tidy libclang-rt-dev shellcheck python3
    pkg-config dpkg-dev file lintian spin)
bench_packages=(libbenchmark-dev libspdlog-dev libabsl-dev libsimdjson-dev libglib2.0-dev
    libfast-float-dev rapidjson-dev)

# Any Java development kit from 17 on will do.
command -v javac > /dev/null || packages+=(openjdk-17-jdk-headless)

case "${1-}" in
    "") ;;
    --bench) packages+=("${bench_packages[@]}") ;;
    --coverage) packages+=(gcovr) ;;
    *) echo "usage: bootstrap.sh [--bench|--coverage]" >&2; exit 2 ;;
esac

if ! command -v dpkg-query > /dev/null || ! command -v apt-get > /dev/null; then
    echo "bootstrap.sh knows Debian only. Elsewhere, install what these packages stand for:" >&2
    echo "  ${packages[*]}" >&2
    exit 1
fi

missing=()
for package in "${packages[@]}"; do
    status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2> /dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo > /dev/null; then
        echo "bootstrap.sh needs root or sudo to install: ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi
echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
