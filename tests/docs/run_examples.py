#!/usr/bin/env python3
"""Runs the examples of a Markdown page as its reader would.

A code block whose first line is a comment with a file name becomes that file. In a `console` block,
each line that starts with "$ " is a command, and the lines up to the next one are its output, both
streams together. Everything happens in one shell, in a temporary folder that sees the tree's `src`
and the given build folder as `build/release`. The first command whose output differs ends the run.

    run_examples.py TREE BUILD PAGE
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

MARK = "-- end of output --"


def commands(block):
    """Pairs of a command and its expected output."""
    pairs = []
    for line in block.splitlines():
        if line.startswith("$ "):
            pairs.append((line[2:], []))
        else:
            pairs[-1][1].append(line)
    return [(command, "\n".join(lines)) for command, lines in pairs]


def main(tree, build, page):
    blocks = re.findall(r"^```(\w+)\n(.*?)^```$", pathlib.Path(page).read_text(), re.M | re.S)
    ran = []
    with tempfile.TemporaryDirectory() as folder:
        os.makedirs(f"{folder}/build")
        os.symlink(f"{tree}/src", f"{folder}/src")
        os.symlink(build, f"{folder}/build/release")
        for language, block in blocks:
            named = re.match(r"// ([\w./]+\.\w+)\n", block)
            if named and language in ("c", "cpp", "java", "json"):
                pathlib.Path(folder, named[1]).write_text(block)
            if language == "console":
                ran += commands(block)
        script = "".join(f"{command}\necho {MARK}\n" for command, _ in ran)
        run = subprocess.run(["bash"], input=script, cwd=folder, text=True, timeout=100,
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    outputs = run.stdout.split(f"{MARK}\n")
    for (command, expected), printed in zip(ran, outputs):
        if printed.rstrip("\n") != expected:
            sys.exit(f"{page}: $ {command}\nexpected:\n{expected}\nprinted:\n{printed}")
    if not ran or len(outputs) != len(ran) + 1:
        sys.exit(f"{page}: {len(outputs) - 1} of {len(ran)} commands ended")
    print(f"{len(ran)} commands")


main(*sys.argv[1:])
