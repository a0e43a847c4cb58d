#!/usr/bin/env bash
# Builds the component beside this file, in C and in C++, against an installed tree, through CMake's
# package and through pkg-config, and runs each of the four; then the Java classes.
#
#   use_installed.sh PREFIX SCRATCH
#
# Takes CC, CXX, JAVA and CMAKE_GENERATOR from the environment, and LIBDIR and VERSION as the
# installation should have them. An empty JAVA stands for an installation without Java classes.
set -euo pipefail
prefix=$1 scratch=$2
component=$(cd "$(dirname "$0")/component" && pwd)
export PKG_CONFIG_PATH=$prefix/$LIBDIR/pkgconfig

quietly() {
    "$@" > "$scratch/log" 2>&1 || { cat "$scratch/log" >&2; return 1; }
}

check() {  # what, expected, actual
    [ "$2" = "$3" ] || { printf '%s: expected "%s", got "%s"\n' "$1" "$2" "$3" >&2; exit 1; }
}

check_host() {
    check "$1" "[DEBUG][cache  ] 15 of 16 slots used" "$("$1" cache=debug 2>&1)"
    check "$1" 'No such logging module "cash"' "$("$1" cash=debug 2>&1)"
}

quietly cmake -S "$component" -B "$scratch/cmake" -D CMAKE_PREFIX_PATH="$prefix" -D VERSION="$VERSION"
quietly cmake --build "$scratch/cmake"
check_host "$scratch/cmake/host_c"
check_host "$scratch/cmake/host_cpp"
check "jar" "${JAVA:+$prefix/share/java/kxutil.jar}" "$(sed -n 's/^kxutil_JAR:.*=//p' "$scratch/cmake/CMakeCache.txt")"

check "pkg-config" "$VERSION" "$(pkg-config --modversion kxutil)"
read -ra flags <<< "$(pkg-config --cflags --libs kxutil) -Wl,-rpath,$(pkg-config --variable=libdir kxutil)"
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
check "java" true "$("$JAVA" -Djava.library.path="$prefix/$LIBDIR" -cp "$(pkg-config --variable=jar kxutil)" \
    "$scratch/Pid.java")"
