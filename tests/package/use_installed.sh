#!/usr/bin/env bash
# Builds the component beside this file, in C and in C++, against an installed tree, through CMake's
# package and through pkg-config, and runs each of the four; then the Java classes.
#
#   use_installed.sh PREFIX SCRATCH
#
# Takes CC, CXX, JAVA, PKG_CONFIG and CMAKE_GENERATOR from the environment, and LIBDIR and VERSION as the
# installation should have them. An empty JAVA stands for an installation without Java classes.
set -euo pipefail
prefix=$1 scratch=$2
component=$(cd "$(dirname "$0")/component" && pwd)
# shellcheck source=tests/package/checks.sh
. "$(dirname "$0")/checks.sh"
export PKG_CONFIG_PATH=$prefix/$LIBDIR/pkgconfig

quietly cmake -S "$component" -B "$scratch/cmake" -D CMAKE_PREFIX_PATH="$prefix" -D VERSION="$VERSION"
quietly cmake --build "$scratch/cmake"
check_host "$scratch/cmake/host_c"
check_host "$scratch/cmake/host_cpp"
check "a component stays loaded" NODELETE "$(readelf -d "$scratch/cmake/libcache_c.so" | grep -o NODELETE)"
check "jar" "${JAVA:+$prefix/share/java/kxutil.jar}" "$(sed -n 's/^kxutil_JAR:.*=//p' "$scratch/cmake/CMakeCache.txt")"

check "pkg-config" "$VERSION" "$($PKG_CONFIG --modversion kxutil)"
check "paths of pkg-config" "" "$($PKG_CONFIG --cflags --libs kxutil | grep -F .. || true)"
read -ra flags <<< "$($PKG_CONFIG --cflags --libs kxutil) -Wl,-rpath,$($PKG_CONFIG --variable=libdir kxutil)"
build_plainly() {  # folder, compiler and language
    local folder=$scratch/$1
    shift
    mkdir "$folder"
    "$@" -Wall -Wextra -Werror -fPIC -shared "$component/cache.c" -o "$folder/libcache.so" "${flags[@]}"
    "$@" -Wall -Wextra -Werror "$component/host.c" -o "$folder/host" -L"$folder" -lcache "${flags[@]}" \
        -Wl,-rpath,"$folder"
    check_host "$folder/host"
}
build_plainly plain_c "$CC" -std=c11
build_plainly plain_cpp "$CXX" -std=c++17 -x c++

[ -n "$JAVA" ] || exit 0
cat > "$scratch/Pid.java" << EOF
class Pid {
    public static void main(String[] args) {
        long expected = ProcessHandle.current().pid();
        System.out.println(veltra.kestrum.os.Process.getpid() == expected);
    }
}
EOF
check "java" true "$("$JAVA" -Djava.library.path="$prefix/$LIBDIR" -cp "$($PKG_CONFIG --variable=jar kxutil)" \
    "$scratch/Pid.java")"
