#!/usr/bin/env bash
# Packs a build for Debian and compares the package with what is installed without one; as root,
# installs, uses and removes it. For that it has a name and a prefix of its own, so that a package
# in use on this machine is left alone.
#
#   debian_test.sh SOURCE BUILD       with the environment that use_installed.sh needs
set -euo pipefail
build=$2
here=$(cd "$(dirname "$0")" && pwd)
for tool in cpack dpkg-deb dpkg-shlibdeps file; do
    command -v "$tool" > /dev/null || { echo "no $tool here" >&2; exit 77; }
done
name=kxutil-trial-$$
prefix=/opt/$name
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
chmod 755 "$scratch"  # for the user as whom packages are read

pack() {  # folder, settings: prints the package's file
    local folder=$scratch/$1
    shift
    cpack --config "$build/CPackConfig.cmake" -B "$folder" "$@" > "$scratch/log" 2>&1 ||
        { cat "$scratch/log" >&2; return 1; }
    echo "$folder"/*.deb
}

package=$(pack plain)
diff - <(dpkg-deb -f "$package" Package Version Depends | sed -E 's/ \(>= [0-9.]+\)//') << EOF
Package: kxutil
Version: $VERSION
Depends: libc6
EOF
cmake --install "$build" --prefix "$scratch/installed" > /dev/null
diff <(cd "$scratch/installed" && find . -type f | sort) \
    <(dpkg-deb --fsys-tarfile "$package" | tar -t | sed -n 's,^\./usr/\(.*[^/]\)$,./\1,p' | sort)

if [ "$(id -u)" -ne 0 ]; then
    echo "not root: the package was not installed"
    exit 77
fi
package=$(pack trial -D CPACK_PACKAGE_NAME="$name" -D CPACK_PACKAGING_INSTALL_PREFIX="$prefix")
export DEBIAN_FRONTEND=noninteractive
quietly() {
    "$@" > "$scratch/log" 2>&1 || { cat "$scratch/log" >&2; return 1; }
}
trap 'dpkg --purge "$name" > /dev/null 2>&1; rm -rf "$scratch"' EXIT
quietly apt-get -y -o DPkg::Lock::Timeout=60 install "$package"
"$here/use_installed.sh" "$prefix" "$scratch"
quietly apt-get -y -o DPkg::Lock::Timeout=60 purge "$name"
if [ -e "$prefix" ] || dpkg-query -W "$name" 2> /dev/null; then
    echo "$name is still there after its removal" >&2
    exit 1
fi
