"""Reads the benchmarks' JSON and compares contenders.

One thread counts in processor time, which other processes on the machine disturb less; several
threads count in elapsed time per operation of all of them together.
"""

import json
import os
import re
import statistics
import sys

from facilities import BEYOND_LIMIT, FACILITIES, LIMIT, MEAN, MIN_OVERLAP, OURS, PEER, Target


class Measured:
    """The runs of one contender in one case."""

    def __init__(self):
        self.times = []
        self.dropped = 0

    def median(self):
        return statistics.median(self.times)

    def p95(self):
        return sorted(self.times)[round(0.95 * (len(self.times) - 1))]


def key_of(run):
    case, contender, *rest = run["run_name"].split("/")
    if rest and rest[0].isdigit():
        case += " " + rest[0]
    if run["threads"] > 1:
        case += f", {run['threads']} threads"
    return case, contender


def read_results(path, facility):
    """Returns {case: {contender: Measured}} and the file's context."""
    with open(path, encoding="utf-8") as file:
        data = json.load(file)
    overlapping = {case.key for case in facility.cases if case.overlapping}
    cases = {}
    for run in data["benchmarks"]:
        if run.get("error_occurred"):
            sys.exit(f"{run['name']}: {run['error_message']}")
        if run["run_type"] != "iteration":
            continue
        if run["time_unit"] != "ns":
            sys.exit(f"{run['name']}: not in ns")
        case, contender = key_of(run)
        measured = cases.setdefault(case, {}).setdefault(contender, Measured())
        if case in overlapping and run["cpu_time"] < MIN_OVERLAP * run["real_time"]:
            measured.dropped += 1
        else:
            measured.times.append(run["cpu_time" if run["threads"] == 1 else "real_time"])
    return cases, data["context"]


def read_all(paths):
    """Returns the facilities' {name: cases} and {name: context}, in the order of FACILITIES."""
    by_name = {re.sub(r"_bench$", "", os.path.splitext(os.path.basename(p))[0]): p for p in paths}
    results, contexts = {}, {}
    for name, facility in FACILITIES.items():
        if name in by_name:
            results[name], contexts[name] = read_results(by_name[name], facility)
    return results, contexts


def is_limit(contender):
    return contender.startswith("limit")


def judge(target, contenders):
    """Returns what was compared, the ratio (None when a side has no runs), and the verdict."""
    if target.kind != PEER:
        others = [c for c in contenders if is_limit(c)]
    else:
        others = target.peers or [c for c in contenders if c != OURS and not is_limit(c)]
    if not contenders[OURS].times or not all(contenders[c].times for c in others):
        return ", ".join(others), None, "not measured"
    best = min(others, key=lambda c: contenders[c].median())
    ours, other = contenders[OURS].median(), contenders[best].median()
    if target.kind == BEYOND_LIMIT:
        return f"kxutil - {best}", ours - other, "yes" if ours - other <= target.bound else "no"
    if target.kind == LIMIT:
        return f"kxutil / {best}", ours / other, "yes" if ours / other <= target.bound else "no"
    return f"{best} / kxutil", other / ours, "yes" if other / ours >= target.bound else "no"


def judge_all(target, facility, results):
    """The same for several cases: of each the best peer counts."""
    titles = {case.key: case.title for case in facility.cases}
    ratios = {}
    for case in target.over:
        single = Target(case, PEER, target.bound, target.peers)
        ratios[case] = judge(single, results[case])[1]
    compared = f"{' or '.join(target.peers)} / kxutil"
    if target.kind == MEAN:
        ratio = statistics.geometric_mean(ratios.values())
    else:
        least = min(ratios, key=ratios.get)
        ratio = ratios[least]
        compared += f" (least: {titles[least]})"
    return compared, ratio, "yes" if ratio >= target.bound else "no"
