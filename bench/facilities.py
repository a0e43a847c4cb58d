"""What is measured, and what it has to reach; notes.md says how it is measured.

A benchmark is named case/contender. In every case `kxutil` is the library, contenders whose name
starts with "limit" are the least that any solution costs, the others are peers.
"""

from typing import NamedTuple

OURS = "kxutil"

# Readers that wait for a core on a busy machine never meet: a run of this case counts when both
# threads together had so many processors.
OVERLAPPING = "read pair, 2 threads"
MIN_OVERLAP = 1.8

TITLES = {
    "logging": "Logging",
    "rwlock": "Lock words",
    "arguments": "Option strings",
    "utf8": "Validating UTF-8",
    "strparse": "Numbers from text",
    "stacked_threadlocal": "Stacked thread-locals",
    "globmatch": "Glob patterns",
    "dynarray": "Growable array",
    "streamwriter": "Small writes",
    "json": "Reading JSON",
    "java": "Logging from Java",
}
CHARTED = {"json": "64 KiB"}  # the chart shows the cases with this in their names

# What is bounded: kxutil / limit, the nanoseconds that kxutil takes beyond the limit, or best peer
# / kxutil; of the latter over several cases, the geometric mean or the smallest.
LIMIT, BEYOND_LIMIT = "at most", "at most, in ns,"
PEER, MEAN, EACH = "at least", "geometric mean at least", "each at least"


class Target(NamedTuple):
    facility: str
    cases: str  # a pattern: MEAN and EACH take all of its cases together, the others every one
    kind: str
    bound: float
    peers: str = ""  # their names, with "|" between; none for all


SIMDJSON = "simdjson DOM|simdjson On-Demand"

TARGETS = [
    Target("logging", "line to a file", LIMIT, 1.25),
    Target("logging", "line to a file", PEER, 1.3),
    Target("logging", "line to the null device", LIMIT, 1.7),
    Target("logging", "line to the null device", PEER, 1.8),
    Target("logging", "line *, 2 threads", PEER, 1.5, "spdlog"),
    Target("logging", "statement that is off", LIMIT, 1.05),  # equal, as far as can be told
    Target("rwlock", "read pair", PEER, 1.4),
    Target("rwlock", "write pair", PEER, 1.5),
    Target("rwlock", OVERLAPPING, PEER, 1.0),
    Target("arguments", "walking, *", PEER, 1.0, "hand scan"),
    Target("arguments", "copying, *", PEER, 1.0, "hand scan"),
    Target("arguments", "declared, 8 items", PEER, 1.0, "getsubopt"),
    Target("arguments", "declared, 64 items", PEER, 12.0, "GOption"),
    Target("utf8", "ascii, 64 bytes", PEER, 1.0, "simdjson"),
    Target("utf8", "ascii, 4 KiB", PEER, 0.9, "simdjson"),
    Target("utf8", "ascii, 1 MiB", PEER, 0.9, "simdjson"),
    Target("utf8", "two-byte 5%, *", PEER, 1.0, "simdjson"),
    Target("utf8", "three-byte, *", PEER, 1.0, "simdjson"),
    Target("utf8", "mixed, *", PEER, 1.0, "simdjson"),
    Target("utf8", "pairs, *", PEER, 1.0, "simdjson"),
    Target("strparse", "1 to *", PEER, 1.2, "std::from_chars"),
    Target("strparse", "0x and *", PEER, 1.2, "std::from_chars"),
    Target("strparse", "double *", PEER, 0.9, "fast_float"),
    Target("strparse", "duration", PEER, 1.0, "strto"),
    Target("stacked_threadlocal", "*", PEER, 1.0),
    Target("globmatch", "`java.util.*`", PEER, 2.0),
    Target("globmatch", "`*Exception`", PEER, 0.8, "GPatternSpec"),
    Target("globmatch", "`*.server.*Map`", PEER, 2.0),
    Target("globmatch", "`*.http.*`", PEER, 2.0),
    Target("globmatch", "set of 8 patterns", PEER, 2.0),
    Target("globmatch", "hostile *", PEER, 3.0, "fnmatch"),
    Target("dynarray", "*", PEER, 1.2, "GArray"),
    Target("dynarray", "1,000,000 *", PEER, 1.0, "vector"),
    Target("streamwriter", "1 byte", PEER, 3.0, "fwrite_unlocked"),
    Target("streamwriter", "4 bytes", PEER, 1.5, "fwrite_unlocked"),
    Target("streamwriter", "8 bytes", PEER, 1.1, "fwrite_unlocked"),
    Target("json", "*", MEAN, 2.5, "RapidJSON"),
    Target("json", "*", EACH, 2.0, "RapidJSON"),
    Target("json", "*", MEAN, 0.9, SIMDJSON),
    Target("json", "*", EACH, 0.6, SIMDJSON),
    Target("json", "configuration, *", EACH, 1.0, SIMDJSON),
    Target("json", "*, 200 bytes", EACH, 1.0, SIMDJSON),
    Target("java", "line to a file", PEER, 3.0, "FileHandler"),
    Target("java", "statement that is off", BEYOND_LIMIT, 0.6),
]
