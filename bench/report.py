"""Turns the benchmarks' JSON into Markdown with links to the charts of charts.py.

usage: report.py BUILD_FOLDER RESULT.json...
"""

import os
import platform
import re
import subprocess
import sys

from facilities import BENCHMARK_PACKAGE, FACILITIES, OURS, PEER_PACKAGES
from results import is_limit, judge, judge_all, read_all


def figure(ns):
    return f"{ns:.2f}" if ns < 10 else f"{ns:.1f}" if ns < 100 else f"{ns:.0f}"


def results_table(facility, cases):
    lines = [
        "| case | contender | median ns | p95 ns | runs | contender / kxutil | kxutil / limit |",
        "|---|---|---:|---:|---:|---:|---:|",
    ]
    for case in facility.cases:
        contenders = cases[case.key]
        ours = contenders[OURS]
        order = sorted(contenders, key=lambda c: (c != OURS, is_limit(c), c))
        for name in order:
            m = contenders[name]
            runs = f"{len(m.times)} of {len(m.times) + m.dropped}" if m.dropped else len(m.times)
            row = [case.title, name, "-", "-", runs, "", ""]
            if m.times:
                row[2:4] = [figure(m.median()), figure(m.p95())]
            if m.times and ours.times and name != OURS:
                if is_limit(name):
                    row[6] = f"{ours.median() / m.median():.2f}"
                row[5] = f"{m.median() / ours.median():.2f}"
            lines.append("| " + " | ".join(str(cell) for cell in row) + " |")
    return lines


def compact_table(facility, cases):
    peers = sorted({c for contenders in cases.values() for c in contenders} - {OURS})
    lines = [
        "| case | kxutil median ns | p95 ns | " + " | ".join(f"{p} / kxutil" for p in peers) + " |",
        "|---|---:|---:|" + "---:|" * len(peers),
    ]
    for case in facility.cases:
        contenders = cases[case.key]
        ours = contenders[OURS]
        row = [case.title, figure(ours.median()), figure(ours.p95())]
        row += [f"{contenders[p].median() / ours.median():.2f}" for p in peers]
        lines.append("| " + " | ".join(row) + " |")
    return lines


def targets_table(results):
    lines = ["| case | ratio | target | measured | reached |", "|---|---|---:|---:|---|"]
    for name in results:
        facility = FACILITIES[name]
        titles = {case.key: case.title for case in facility.cases}
        for target in facility.targets:
            if target.over:
                compared, ratio, verdict = judge_all(target, facility, results[name])
            else:
                compared, ratio, verdict = judge(target, results[name][target.case])
            shown = "-" if ratio is None else f"{ratio:.2f}"
            lines.append(
                f"| {titles.get(target.case, target.case)} | {compared} | {target.kind} {target.bound:g} "
                f"| {shown} | {verdict} |"
            )
    return lines


def first_line(*command):
    result = subprocess.run(command, capture_output=True, text=True, check=True)
    return result.stdout.splitlines()[0]


def package_version(package):
    return f"{package} {first_line('dpkg-query', '-W', '-f=${Version}', package)}"


def compiler(build_folder):
    with open(os.path.join(build_folder, "CMakeCache.txt"), encoding="utf-8") as file:
        cache = dict(re.findall(r"^(\w+):\w+=(.*)$", file.read(), re.MULTILINE))
    # The program's name may come with its folder.
    version = os.path.basename(first_line(cache["CMAKE_CXX_COMPILER"], "--version"))
    return f"{version}, {cache['CMAKE_CXX_FLAGS_RELEASE']}"


def cpu_model():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        found = re.search(r"^model name\s*: (.*)$", file.read(), re.MULTILINE)
    return found.group(1) if found else platform.machine()


def setting(build_folder, contexts):
    packages = sorted({p for name in contexts for p in PEER_PACKAGES[name]} | {BENCHMARK_PACKAGE})
    loads = ", ".join(f"{name} {contexts[name]['load_avg'][0]:.1f}" for name in contexts)
    return [
        f"- Machine: {cpu_model()}, {os.cpu_count()} cores, {platform.system()} "
        f"{platform.release()}",
        f"- Compiler: {compiler(build_folder)}",
        "- Packages: " + ", ".join(package_version(p) for p in packages),
        *(f"- Java: {contexts[name]['java']}" for name in contexts if "java" in contexts[name]),
        f"- Load average before each program: {loads}",
        "- Contenders of a facility alternate at random within one run of its program. Figures "
        "are medians of their runs, one thread in processor time, two threads in elapsed time "
        "per operation of both together. Absolute figures move with the machine's load; ratios "
        "are what counts.",
    ]


def charts(name, facility):
    """Links to what charts.py draws."""
    links = [f"![Ratios to kxutil](benchmarks/{name}.svg)"]
    if facility.curves:
        links.append(f"![Growth with the input](benchmarks/{name}-growth.svg)")
    return links


def main():
    build_folder, *paths = sys.argv[1:]
    results, contexts = read_all(paths)
    lines = ["# Benchmarks", "", "Written by `scripts/bench.sh`.", ""]
    lines += setting(build_folder, contexts)
    lines += ["", "## Targets", ""] + targets_table(results)
    for name in results:
        facility = FACILITIES[name]
        lines += ["", f"## {facility.title}", ""] + [f"- {note}" for note in facility.notes]
        lines += [""] + charts(name, facility)
        table = compact_table if facility.compact else results_table
        lines += [""] + table(facility, results[name])
    print("\n".join(lines))


main()
