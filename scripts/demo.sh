#!/usr/bin/env bash
# Shows the agent of examples/agent in a stock Java virtual machine, and Java threads that log to
# modules of native components.
#
#   scripts/demo.sh              sets up, builds and gives a short tour
#   scripts/demo.sh OPTIONS      runs the tour's program with these options of the agent
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

(
    cd "$root"
    scripts/bootstrap.sh demo >&2
    {
        # The demo does not install what tests need; test.sh turns them on again.
        [ -e build/release/build.ninja ] || cmake --preset release -D KX_TESTS=OFF
        cmake --build --preset release --target kxexample_agent kxexample_demo
    } > "$scratch/build" 2>&1 || { cat "$scratch/build" >&2; exit 1; }
)
bin=$root/build/release/bin
lib=$root/build/release/lib
agent=$bin/libkxagent.so

# A program of two threads that allocate, throw and load classes; what it prints is left out.
busy() {
    exec java -Xmx16m "-agentpath:$agent=$1" -cp "$bin/busy.jar" Busy 2 "${2-20}" > /dev/null
}

# New options for the program in the background.
attach() {
    jcmd "$!" JVMTI.agent_load "$agent" "\"$1\"" | grep return
}

# Java threads that log to the agent's modules and to one of their own.
javademo() {
    java -Djava.library.path="$bin:$lib" -cp "$lib/kxutil.jar:$bin/demo.jar" demo.Main "$@"
}

if [ $# -gt 0 ]; then
    (busy "$@")
    exit
fi

say() {
    printf '\n# %s\n' "$1"
}

# Shows a command as typed, then what it prints.
run() {
    printf '$ %s\n' "$1"
    (eval "$1") 2>&1 || echo "(exit status $?)"
}

cd "$scratch"
echo "# busy OPTIONS is java -agentpath:build/release/bin/libkxagent.so=OPTIONS Busy"
say "The machine, its collections and its threads, with their time"
run "busy level=machine,gc,thread:decorations=level,module,timestamp"
say "Only some classes; \"loading\" is an alias of \"class\""
run "busy 'level=loading:classes=-*Item,Busy*'"
say "Exceptions that are not caught; a \"+\" tells of others, too, as warnings"
run "busy level=exceptions"
run "busy 'exceptions=+*Lost' 1 2>&1 | head -n 2"
say "Methods that were compiled, and what is longer or larger than it should be"
run "busy 'level=jit:methods=java.lang.String.*:pause=100us:heap=1m' 2>&1 | head -n 8"
say "Levels, files and decorations of a machine that runs: attach is jcmd PID JVMTI.agent_load"
busy level=quiet:files=start.log 0 &
disown  # its end is shown below
sleep 0.5
run "attach 'level=gc,class:classes=Busy*:files=gc=gc.log,class=>gc:decorations=level,collections'"
sleep 0.5
run "attach 'level=quiet:trace=classes.trace'"
say "It is killed, and nothing that was printed is lost"
run "kill -KILL $!; wc -l start.log; head -n 3 gc.log; tail -n 3 gc.log"
say "The same from a file, read by the JSON reader"
run "echo '{ level: \"machine,gc\"; files: \"gc=gc.log\"; heap: 64m }' > vm.json"
run "busy config=vm.json"
run "head -n 2 gc.log"
say "An option that cannot be followed is explained, and ends the start"
run "busy level=gc=debug,jut=debug"
run "busy level=verbosegc,codegen"
run "busy pause=5"
say "From Java: threads log to modules of native components; a second \"gc\" follows the agent's"
run "javademo --log gc,jit"
run "javademo --log quiet,gc=info,VM=debug --log-file gc=java.log --list -"
run "sort java.log"
