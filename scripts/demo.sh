#!/usr/bin/env bash
# Shows module logging at work in examples/host, a small stand-in for the virtual machine, and in
# Java threads that log through the same components.
#
#   scripts/demo.sh              sets up, builds and gives a short tour
#   scripts/demo.sh OPTION...    runs the host with these options, see --help
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

(
    cd "$root"
    scripts/bootstrap.sh demo >&2
    {
        # What tests need is not installed for this; test.sh turns them on again.
        [ -e build/release/build.ninja ] || cmake --preset release -D KX_TESTS=OFF
        cmake --build --preset release --target host demo_java
    } > "$scratch/build" 2>&1 || { cat "$scratch/build" >&2; exit 1; }
)

if [ $# -gt 0 ]; then
    "$root/build/release/bin/host" "$@"
    exit
fi

say() {
    printf '\n# %s\n' "$1"
}

# Shows a command as typed, then what it prints.
run() {
    printf '$ %s\n' "$1"
    eval "$1" 2>&1 || echo "(exit status $?)"
}

# Java threads among the components, as examples/java has them.
javahost() {
    local build=$root/build/release
    java -Djava.library.path="$build/bin:$build/lib" -cp "$build/lib/kxutil.jar:$build/bin/demo.jar" \
        demo.Main "$@"
}

PATH=$root/build/release/bin:$PATH
cd "$scratch"
echo "# host is build/release/bin/host; its workers collect in libgc.so and compile in libjit.so"
say "Warnings and errors show without being asked for"
run "host --threads 1"
say "A level for all modules, another one for one of them"
run "host --threads 1 --log error,sweep=debug"
say "A bare name raises a module to INFO; \"compiler\" is an alias of \"jit\""
run "host --threads 1 --log quiet,compiler"
say "A retired name still works, with a warning"
run "host --threads 1 --log verbosegc"
say "The collector checks itself, and adds how full the heap is to each line"
run "host --threads 1 --log error,heap=info --sanity heap --decorations module,millis,occupancy"
say "Patterns choose modules by component and name; the first that fits decides"
run "host --threads 1 --log quiet --trace-modules '-gc.heap,+gc*'"
say "Both components share a file; its lines stay whole whatever the number of threads"
run "host --threads 64 --log quiet,gc,jit --log-file 'gc=vm.log,jit=>gc'"
run "head -n 4 vm.log"
run "wc -l vm.log"
say "The same from a configuration file, read by the JSON reader"
run "echo '{ gc: { level: info, file: gc.log }, deopt: { level: quiet } }' > vm.json"
run "host --threads 1 --config vm.json"
run "head -n 2 gc.log"
say "An option that cannot be followed is explained"
run "host --log gc=debug,jut=debug"
run "host --log codegen"
run "echo '{ gc: { level: loud } }' > vm.json; host --config vm.json"
say "From Java: javahost is a Java program whose threads log to the modules of both components"
run "javahost --log gc,jit"
say "Options reach Java and native code alike; a second \"gc\", of libvm.so, follows the collector's"
run "javahost --log quiet,gc=info,VM=debug --log-file gc=java.log --list -"
run "sort java.log"
