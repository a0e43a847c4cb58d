#!/usr/bin/env python3
"""What examples/agent costs the program that it watches: examples/agent/Busy.java, whose threads
allocate a megabyte, throw 64 times and load a class in each round, without the agent and with it at
several levels.

The ways alternate. Figures are processor time, all threads together: the median of the runs, the
ratio of the shortest runs, and of the ratios to the run without the agent right before the median and
the middle half.

    agent.py BUILD_FOLDER RUNS
"""
import os
import statistics
import subprocess
import sys

WAYS = {
    "without": None,
    "all off": "level=quiet",
    "info but exceptions": "level=info,except=warn:files=/dev/null",
    "info": "level=info:files=/dev/null",
}


def processor_time(command):
    """In seconds, of the machine's own threads as well."""
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    if status != 0:
        sys.exit(f"{command}: status {status}")
    return usage.ru_utime + usage.ru_stime


def command(build, options):
    agent = [] if options is None else [f"-agentpath:{build}/bin/libkxagent.so={options}"]
    program = ["-cp", f"{build}/bin/busy.jar", "Busy", "2", "4000"]
    return ["java", "-Xmx256m", "-XX:+UseSerialGC", *agent, *program]


def main(build, runs):
    build = os.path.abspath(build)
    times = {way: [] for way in WAYS}
    for _ in range(int(runs)):
        for way, options in WAYS.items():
            times[way].append(processor_time(command(build, options)))
    print("| agent | median | shortest / without | each / without | middle half |")
    print("|---|---:|---:|---:|---|")
    for way, measured in times.items():
        ratios = sorted(t / base for t, base in zip(measured, times["without"]))
        quarter = len(ratios) // 4
        print(f"| {way} | {statistics.median(measured):.2f} s "
              f"| {min(measured) / min(times['without']):.3f} | {statistics.median(ratios):.3f} "
              f"| {ratios[quarter]:.3f} to {ratios[-1 - quarter]:.3f} |")


main(*sys.argv[1:])
