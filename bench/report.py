"""Turns the benchmarks' JSON into a page with its charts.

usage: report.py BUILD_FOLDER RESULT.json...             prints the report
       report.py BUILD_FOLDER RESULT.json... --to DOCS   writes benchmarks.md and its charts there
"""

import json
import os
import platform
import re
import subprocess
import sys
from fnmatch import fnmatchcase
from statistics import geometric_mean, median

import charts
from facilities import BEYOND_LIMIT, EACH, LIMIT, MEAN, MIN_OVERLAP, OURS, OVERLAPPING
from facilities import CHARTED, TARGETS, TITLES

PACKAGES = """libabsl-dev libbenchmark-dev libc6 libfast-float-dev libglib2.0-dev libsimdjson-dev
    libspdlog-dev libstdc++-12-dev rapidjson-dev"""


def read_results(path):
    """Returns {case: {contender: times}}, in the order of the program, and the file's context.

    One thread counts in processor time, which other processes on the machine disturb less; several
    threads count in elapsed time per operation of all of them together.
    """
    with open(path, encoding="utf-8") as file:
        data = json.load(file)
    cases = {}
    for run in sorted(data["benchmarks"], key=lambda run: run.get("family_index", 0)):
        if run["run_type"] != "iteration":
            continue
        case, contender = run["run_name"].split("/")[:2]
        alone = run["threads"] == 1
        if not alone:
            case += f", {run['threads']} threads"
        times = cases.setdefault(case, {}).setdefault(contender, [])
        if case != OVERLAPPING or run["cpu_time"] >= MIN_OVERLAP * run["real_time"]:
            times.append(run["cpu_time" if alone else "real_time"])
    return cases, data["context"]


def compare(target, contenders):
    """Ours against the best contender of the target's kind, and what that is in words."""
    bounded_by_limit = target.kind in (LIMIT, BEYOND_LIMIT)
    others = [c for c in contenders if c != OURS and c.startswith("limit") == bounded_by_limit]
    if target.peers:
        others = target.peers.split("|")
    if not all(contenders[name] for name in [OURS, *others]):
        return None, " or ".join(others)
    best = min(others, key=lambda name: median(contenders[name]))
    ours, other = median(contenders[OURS]), median(contenders[best])
    if target.kind == BEYOND_LIMIT:
        return ours - other, f"{OURS} - {best}"
    if target.kind == LIMIT:
        return ours / other, f"{OURS} / {best}"
    return other / ours, f"{best} / {OURS}"


def target_row(target, title, value, compared):
    reached = "not measured"
    if value is not None:
        at_most = target.kind in (LIMIT, BEYOND_LIMIT)
        reached = "yes" if (value <= target.bound if at_most else value >= target.bound) else "no"
    shown = "-" if value is None else f"{value:.2f}"
    return f"| {title} | {compared} | {target.kind} {target.bound:g} | {shown} | {reached} |"


def target_rows(target, cases):
    found = {key: compare(target, cases[key]) for key in cases if fnmatchcase(key, target.cases)}
    if not found:
        sys.exit(f"no case is named {target.cases}")
    if target.kind not in (MEAN, EACH):
        return [target_row(target, key, *found[key]) for key in found]
    least = min(found, key=lambda key: found[key][0])
    compared = f"{target.peers.replace('|', ' or ')} / {OURS}"
    title = target.cases.strip("*, ") or "all cases"
    if target.kind == EACH:
        return [target_row(target, title, found[least][0], f"{compared} (least: {least})")]
    return [target_row(target, title, geometric_mean(r for r, _ in found.values()), compared)]


def figure(ns):
    return f"{ns:.2f}" if ns < 10 else f"{ns:.1f}" if ns < 100 else f"{ns:.0f}"


def results_table(cases):
    others = charts.others_of(cases)
    yield "| case | kxutil, ns | " + " | ".join(others) + " |"
    yield "|---|---:|" + "---:|" * len(others)
    for case, contenders in cases.items():
        ours, unit = contenders[OURS], 1
        row = [case, "-"]
        if ours:
            unit = median(ours)
            row[1] = f"{figure(unit)} ({figure(charts.p95(ours))})"
        for times in map(contenders.get, others):
            shown = f"{median(times) / unit:.2f} ({charts.p95(times) / unit:.2f})" if times else ""
            row.append(shown if ours else "")
        yield "| " + " | ".join(row) + " |"


def first_line(*command):
    done = subprocess.run(command, capture_output=True, text=True, check=True)
    return done.stdout.splitlines()[0]


def found_in(path, pattern):
    with open(path, encoding="utf-8") as file:
        return dict(re.findall(pattern, file.read(), re.MULTILINE))


def processor():
    cpu = found_in("/proc/cpuinfo", r"^([\w ]+?)\s*: (.*)$")
    known = set(cpu.get("flags", "").split()) & {"avx2", "avx512bw", "avx512vbmi", "avx512_vbmi2"}
    return (
        f"{cpu.get('model name', platform.machine())} (family {cpu.get('cpu family')}, model "
        f"{cpu.get('model')}; {', '.join(sorted(known))}), {os.cpu_count()} cores"
    )


def setting(build_folder, results, contexts):
    cache = found_in(os.path.join(build_folder, "CMakeCache.txt"), r"^(\w+):\w+=(.*)$")
    # The compiler's name may come with its folder.
    compiler = os.path.basename(first_line(cache["CMAKE_CXX_COMPILER"], "--version"))
    query = ["dpkg-query", "-W", "-f=${Package} ${Version}"]
    versions = [first_line(*query, package) for package in PACKAGES.split()]
    measured = [c.values() for cases in results.values() for c in cases.values()]
    runs = [len(times) for contenders in measured for times in contenders]
    loads = [f"{name} {context['load_avg'][0]:.1f}" for name, context in contexts.items()]
    yield f"- Processor: {processor()}; {platform.system()} {platform.release()}"
    for name, context in contexts.items():
        for detail in ("kernels", "java"):
            if detail in context:
                yield f"- {TITLES[name]}: {context[detail]}"
    yield f"- Compiler: {compiler}, {cache['CMAKE_CXX_FLAGS_RELEASE']}"
    yield f"- Packages: {', '.join(versions)}"
    yield f"- Load average before each program: {', '.join(loads)}"
    most = f"Medians of {max(runs)} runs" + f" (at least {min(runs)})" * (min(runs) < max(runs))
    yield f"- {most}, with the 95th percentile in parentheses."
    yield "  Contenders' figures are multiples of kxutil's median: above 1 is slower than kxutil."


def report(build_folder, results, contexts):
    yield from ["# Benchmarks", "", "Written by `scripts/bench.sh`.", ""]
    yield from setting(build_folder, results, contexts)
    yield from ["", "## Targets", "", "| case | ratio | target | measured | reached |"]
    yield "|---|---|---:|---:|---|"
    for target in TARGETS:
        if target.facility in results:
            yield from target_rows(target, results[target.facility])
    for name, cases in results.items():
        chart = f"![Ratios to kxutil](benchmarks/{name}.svg)"
        yield from ["", f"## {TITLES[name]}", "", chart, ""]
        yield from results_table(cases)


def notes(results):
    """The notes, whose {facility/case/contender} stand for medians of the tables above them."""

    def measured(match):
        name, case, contender = match.group(1).split("/", 2)
        return figure(median(results[name][case][contender]))

    with open(os.path.join(os.path.dirname(__file__), "notes.md"), encoding="utf-8") as file:
        return re.sub(r"\{(\w+/[^{}]+)\}", measured, file.read())


def main():
    docs = sys.argv[-1] if "--to" in sys.argv else None
    build_folder, *paths = [arg for arg in sys.argv[1:] if arg not in ("--to", docs)]
    by_name = {re.sub(r"_bench\.json$", "", os.path.basename(path)): path for path in paths}
    results, contexts = {}, {}
    for name in TITLES:
        if name in by_name:
            results[name], contexts[name] = read_results(by_name[name])
    page = "\n".join(report(build_folder, results, contexts)) + "\n"
    if docs is None:
        print(page, end="")
        return
    with open(os.path.join(docs, "benchmarks.md"), "w", encoding="utf-8") as file:
        file.write(page + "\n" + notes(results))
    for name, cases in results.items():
        charted = {case: cases[case] for case in cases if CHARTED.get(name, "") in case}
        charts.write(os.path.join(docs, "benchmarks", name + ".svg"), TITLES[name], charted)


main()
