#!/usr/bin/env bash
# Installs a build, moves the result elsewhere, and checks that it is complete and can be used.
#
#   install_test.sh SOURCE BUILD      with the environment that use_installed.sh needs
set -euo pipefail
source=$1 build=$2
here=$(dirname "$0")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
prefix=$scratch/moved

cmake --install "$build" --prefix "$scratch/first" > "$scratch/log" || { cat "$scratch/log" >&2; exit 1; }
mv "$scratch/first" "$prefix"

public_headers() {  # of the folder that is the include root
    (cd "$1" && find ./*/export sharedinc -name '*.h' -o -name '*.inl') | sort
}
diff <(public_headers "$source/src") <(public_headers "$prefix/include/kxutil")
"$here/../abi/headers_test.sh" "$prefix/include/kxutil" "$CC" "$CXX"
if grep -rlF -e "$source/" -e "$build/" -e "$scratch/" "$prefix"; then
    echo "these installed files name folders of this machine" >&2
    exit 1
fi
"$here/use_installed.sh" "$prefix" "$scratch"
