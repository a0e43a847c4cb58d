#!/usr/bin/env bash
# Installs what is needed, as Debian packages: as root, or through sudo.
#
#   bootstrap.sh demo       to build the libraries and the examples
#   bootstrap.sh [test]     also for every test: other compilers, an emulator, another C library
#   bootstrap.sh bench      to build, and the peers that the benchmarks compare with
#   bootstrap.sh coverage   to test, and what reports what tests reach
set -euo pipefail
purpose=${1-test}

packages=(g++ cmake ninja-build)
# Any Java development kit from 17 on will do.
command -v javac > /dev/null || packages+=(openjdk-17-jdk-headless)

test_packages=(libgtest-dev git clang clang-format clang-tidy libclang-rt-dev shellcheck python3
    pkg-config dpkg-dev file lintian doxygen spin g++-aarch64-linux-gnu qemu-user musl-tools)
bench_packages=(libbenchmark-dev libspdlog-dev libabsl-dev libsimdjson-dev libglib2.0-dev
    libfast-float-dev rapidjson-dev pkg-config python3)
case "$purpose" in
    demo) ;;
    test) packages+=("${test_packages[@]}") ;;
    bench) packages+=("${bench_packages[@]}") ;;
    coverage) packages+=("${test_packages[@]}" gcovr) ;;
    *) echo "usage: bootstrap.sh [demo|test|bench|coverage]" >&2; exit 2 ;;
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
