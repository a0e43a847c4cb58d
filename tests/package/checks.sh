# What the package tests share; $scratch is their folder.
# shellcheck shell=bash disable=SC2154,SC2016

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

# Runs the lines of docs/packaging.md that build in build/NAME, in a tree of links to the sources.
build_as_documented() {  # source, tree, name, what sed changes in the lines
    mkdir -p "$2"
    ln -s "$1"/* "$2"
    rm -f "$2/build"
    sed -n '/^```sh$/,/^```$/{/^```/!p}' "$1/docs/packaging.md" | grep "build/$3\|preset $3" |
        sed "$4" > "$2.sh"
    check "lines that build" 3 "$(wc -l < "$2.sh")"
    (cd "$2" && quietly bash -e "$2.sh")
}
