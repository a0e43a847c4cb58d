#!/usr/bin/env bash
# Builds and installs as docs/packaging.md says, moves the result elsewhere, and checks that it is
# complete and can be used; then takes the sources as a subproject into the same build of another
# project.
#
#   install_test.sh SOURCE            with the environment that use_installed.sh needs
set -euo pipefail
source=$1
here=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
# shellcheck source=tests/package/checks.sh
. "$here/checks.sh"
prefix=$scratch/moved

build_as_documented "$source" "$scratch/tree" install "s,/usr/local,$scratch/first,"
mv "$scratch/first" "$prefix"
check "build type" Release "$(sed -n 's/^CMAKE_BUILD_TYPE:[A-Z]*=//p' "$scratch/tree/build/install/CMakeCache.txt")"

public_headers() {  # of the folder that is the include root
    (cd "$1" && find ./*/export sharedinc -name '*.h' -o -name '*.inl') | sort
}
diff <(public_headers "$source/src") <(public_headers "$prefix/include/kxutil")
"$here/../abi/headers_test.sh" "$prefix/include/kxutil" "$CC" "$CXX"
if grep -rlF --exclude=kxutil.pc -e "$source/" -e "$scratch/" "$prefix"; then
    echo "these installed files name folders of this machine" >&2
    exit 1
fi
for name in kxutil kxosal; do
    check "version of $name" "{\"name\":\"kxutil\",\"version\":\"$VERSION\"}" \
        "$(readelf --notes "$prefix/$LIBDIR/lib$name.so" | sed -n 's/ *Packaging Metadata: //p')"
done
PKG_CONFIG="pkg-config --define-prefix" "$here/use_installed.sh" "$prefix" "$scratch"

# A parent's build keeps its own type and gets the libraries' targets alone; Java may be left out, and
# what is then installed on demand is complete without it.
parent=$scratch/parent
quietly cmake -S "$here/component" -B "$parent" -D SUBPROJECT="$source" -D VERSION="$VERSION" \
    -D CMAKE_UNITY_BUILD=ON -D KX_JAVA=OFF
quietly cmake --build "$parent"
check_host "$parent/host_c"
check_host "$parent/host_cpp"
check "a parent's build type" "" "$(sed -n 's/^CMAKE_BUILD_TYPE:[A-Z]*=//p' "$parent/CMakeCache.txt")"
check "a parent's targets" "cache_c cache_cpp host_c host_cpp kxosal kxutil" "$(ninja -C "$parent" -t targets all |
    sed -nE 's/^cmake_object_order_depends_target_(.*): .*/\1/p' | sort | paste -sd ' ')"
check "what a parent installs" "" "$(cmake --install "$parent" --prefix "$scratch/none" | grep -F /none/ || true)"
quietly cmake -D KX_INSTALL=ON "$parent"
quietly cmake --install "$parent" --prefix "$scratch/nojava"
mkdir "$scratch/use"
JAVA="" PKG_CONFIG=pkg-config "$here/use_installed.sh" "$scratch/nojava" "$scratch/use"
