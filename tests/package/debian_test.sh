#!/usr/bin/env bash
# Makes the Debian packages as docs/packaging.md says, has lintian judge them, and uses their contents.
#
#   debian_test.sh SOURCE             with the environment that use_installed.sh needs
set -euo pipefail
source=$1
here=$(cd "$(dirname "$0")" && pwd)
for tool in cpack dpkg-deb dpkg-shlibdeps file lintian; do
    command -v "$tool" > /dev/null || { echo "no $tool here" >&2; exit 77; }
done
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
# shellcheck source=tests/package/checks.sh
. "$here/checks.sh"

build_as_documented "$source" "$scratch/tree" debian ""
packages=("$scratch"/tree/build/debian/*.deb)
for package in "${packages[@]}"; do
    dpkg-deb -f "$package" Package Version Depends | sed -E 's/ \(>= [0-9.]+\)//' | sed 's/^.*: //' | paste -sd ' '
    dpkg-deb -x "$package" "$scratch/unpacked"
done > "$scratch/fields"
diff - "$scratch/fields" << EOF
libkxutil-dbg $VERSION libkxutil (= $VERSION)
libkxutil-dev $VERSION libkxutil (= $VERSION)
libkxutil-java $VERSION libkxutil
libkxutil $VERSION libc6
EOF
lintian --allow-root --fail-on none "${packages[@]}" > "$scratch/log" 2>&1
# The owners have not chosen a licence yet.
check "lintian" "" "$(grep '^E:' "$scratch/log" | grep -v no-copyright-file || true)"
LIBDIR=lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH) PKG_CONFIG=pkg-config \
    PKG_CONFIG_SYSROOT_DIR=$scratch/unpacked "$here/use_installed.sh" "$scratch/unpacked/usr" "$scratch"
