"""What is measured: the facilities, their cases and what their ratios have to reach.

A benchmark is named case/contender[/argument]. In every case `kxutil` is the library, contenders
whose name starts with "limit" are the least that any solution costs, the others are peers.
"""

import collections

OURS = "kxutil"
PEER_PACKAGES = {
    "logging": ["libspdlog-dev", "libgoogle-glog-dev"],
    "rwlock": ["libabsl-dev", "libc6"],
    "arguments": ["libc6", "libglib2.0-dev", "libcli11-dev"],
    "strparse": ["libc6", "libstdc++-12-dev", "libfast-float-dev"],
    "utf8": ["libsimdjson-dev", "libglib2.0-dev"],
    "stacked_threadlocal": ["libc6"],
    "json": ["libsimdjson-dev", "rapidjson-dev", "libyajl-dev", "nlohmann-json3-dev"],
    "globmatch": ["libglib2.0-dev", "libc6"],
    "dynarray": ["libglib2.0-dev", "libstdc++6"],
    "streamwriter": ["libc6", "libstdc++6"],
    "java": [],
}
BENCHMARK_PACKAGE = "libbenchmark-dev"

# Threads that only wait for one another on a busy machine never meet: a run of two readers counts
# when together they had this many processors.
MIN_OVERLAP = 1.8

Case = collections.namedtuple("Case", "key title overlapping", defaults=[False])

# A target bounds kxutil / limit from above, or the best peer / kxutil from below, or from above the
# nanoseconds that kxutil takes beyond the limit; the peers are the named ones, or all. Over several
# cases, the geometric mean or the smallest of their ratios to peers is bounded; `case` is then the
# words for the cases and `over` their keys.
LIMIT = "at most"
PEER = "at least"
BEYOND_LIMIT = "at most, in ns,"
MEAN = "geometric mean at least"
EACH = "each at least"
Target = collections.namedtuple("Target", "case kind bound peers over", defaults=[None, None])

# How the cost grows with the input: all cases whose key is `key` and a size, which counts `unit`.
Curve = collections.namedtuple("Curve", "key title unit")

# `compact` is for many cases: a row each, with our time and everybody's ratio to it. The bar chart
# shows the cases named in `charted`, or all.
Facility = collections.namedtuple(
    "Facility", "title notes cases targets curves compact charted", defaults=[(), False, None]
)

FACILITIES = {
    "logging": Facility(
        "Logging",
        [
            "One line of about 96 bytes: level, module, local time with milliseconds, process id, "
            'and "collected %d objects in %s"; in the kernel before the call returns.',
            "Every run starts with an empty file and writes 50,000 lines (100,000 to the null "
            "device); the file's size is checked afterwards.",
            "spdlog and fprintf ask the kernel for the process id on every line; we keep it and "
            "forget it at a fork. Unfair to glog: its prefix shows microseconds, and the source "
            "file and thread id instead of module and process id.",
            "A statement that is off is measured 64 times in a row, so that the loop's own cost "
            "vanishes.",
        ],
        [
            Case("file", "line to a file"),
            Case("null", "line to the null device"),
            Case("file, 2 threads", "line to a file, 2 threads"),
            Case("null, 2 threads", "line to the null device, 2 threads"),
            Case("off", "statement that is off"),
        ],
        [
            Target("file", LIMIT, 1.25),
            Target("file", PEER, 1.3),
            Target("null", LIMIT, 1.7),
            Target("null", PEER, 1.8),
            Target("file, 2 threads", PEER, 1.5, ["spdlog"]),
            Target("null, 2 threads", PEER, 1.5, ["spdlog"]),
            Target("off", LIMIT, 1.05),  # equal, within what can be told apart
        ],
        [Curve("message", "line to the null device", "bytes of message")],
    ),
    "rwlock": Facility(
        "Lock words",
        [
            "Taking and releasing, in a loop. absl::Mutex runs without its deadlock detection.",
            "The limits only count a reader or mark a writer; nobody could wait for them. A lock "
            "that wakes whoever sleeps has to release by an atomic operation, not by a store.",
            "The two readers are pinned to two cores; a run counts only when both had their core "
            f"to themselves (together at least {MIN_OVERLAP} processors).",
        ],
        [
            Case("read", "read pair"),
            Case("write", "write pair"),
            Case("readers, 2 threads", "read pair, 2 readers", True),
        ],
        [
            Target("read", PEER, 1.4),
            Target("write", PEER, 1.5),
            Target("readers, 2 threads", PEER, 1.0),
        ],
    ),
    "arguments": Facility(
        "Option strings",
        [
            "Walking: name and value of every item as pointer and length; two thirds of the items "
            "have a value, none quoted. Copying: the same as two strings of the heap, released "
            "again. Unfair to us: the scans are inlined, know no quotes and only the delimiter "
            "','.",
            "Declared: declaring one argument for each item, of eight types, parsing the string "
            "into them, checking the settings, releasing. The peers read multipliers and units by "
            "strtoull() and a table. GOption and CLI11 read words of a command line, not a string, "
            "and get them for free.",
            "Kind to everybody: the text never changes, so its branches are predicted.",
        ],
        [
            Case(f"{work} {count}", f"{title}, {count} items")
            for work, title in [("walk", "walking"), ("copy", "copying"), ("declared", "declared")]
            for count in [8, 64]
        ],
        [
            Target(f"{work} {count}", PEER, 1.0, ["hand scan"])
            for work in ["walk", "copy"]
            for count in [8, 64]
        ]
        + [
            Target("declared 8", PEER, 1.0, ["getsubopt"]),
            Target("declared 64", PEER, 12.0, ["GOption"]),
        ],
        [Curve("walk", "walking", "items"), Curve("declared", "declared", "items")],
    ),
}


TEXT_SIZES = {"64": "64 bytes", "4096": "4 KiB", "1048576": "1 MiB"}
BEYOND_ASCII = ["two-byte 5%", "three-byte", "mixed", "pairs"]

FACILITIES["utf8"] = Facility(
    "Validating UTF-8",
    [
        "The same bytes for everybody, but for pairs: six bytes each for us, four for the peers, as "
        "many bytes in all. The limit reads the memory and judges nothing.",
    ],
    [
        Case(f"{shape} {size}", f"{shape}, {TEXT_SIZES[size]}")
        for shape in ["ascii"] + BEYOND_ASCII
        for size in TEXT_SIZES
    ],
    [Target(f"ascii {size}", PEER, 1.0 if size == "64" else 0.9, ["simdjson"]) for size in TEXT_SIZES]
    + [
        Target(f"{shape} {size}", PEER, 1.0, ["simdjson"])
        for shape in BEYOND_ASCII
        for size in TEXT_SIZES
    ],
    [Curve("mixed", "mixed", "bytes")],
)

INTEGERS = {
    "small": "1 to 4 digits",
    "small suffixed": "1 to 4 digits and a multiplier",
    "large": "1 to 19 digits",
    "large suffixed": "1 to 19 digits and a multiplier",
    "hexadecimal": "0x and 1 to 16 hexadecimal digits",
}
DOUBLES = {
    "double": "double of 2 to 7 digits",
    "double suffixed": "double of 2 to 7 digits and a multiplier",
    "double of 17 digits": "double of 17 digits",
}

FACILITIES["strparse"] = Facility(
    "Numbers from text",
    [
        "4096 terminated texts in turn, of lengths and suffixes that cannot be foreseen. Every "
        "contender checks for a suffix and applies it; strto is strtoull(), strtod() or strtoll() "
        "with a table of the suffixes.",
        "Contenders that need the end of the text look for it with strlen(), and run once more with "
        "the end for free. They are compiled into the loop; ours is called in the library.",
        "fast_float and std::from_chars know no locale; ours takes the decimal point from it.",
    ],
    [Case(key, title) for key, title in {**INTEGERS, **DOUBLES}.items()]
    + [Case("duration", "duration")],
    [Target(key, PEER, 1.2, ["std::from_chars"]) for key in INTEGERS]
    + [Target(key, PEER, 0.9, ["fast_float"]) for key in DOUBLES]
    + [Target("duration", PEER, 1.0, ["strto"])],
)

FACILITIES["stacked_threadlocal"] = Facility(
    "Stacked thread-locals",
    ["One binding. The peer's list is compiled into the loop; ours is called in the library."],
    [Case("push and pop", "push and pop"), Case("get", "get")],
    [Target("push and pop", PEER, 1.0), Target("get", PEER, 1.0)],
)

FACILITIES["globmatch"] = Facility(
    "Glob patterns",
    [
        "One answer about a class name of 20 to 60 characters, some matching; 200 a's for the "
        "hostile pattern. All answers are compared.",
        "GPatternSpec is compiled beforehand; fnmatch and we read the pattern's text each time.",
    ],
    [
        Case("prefix", "`java.util.*`"),
        Case("suffix", "`*Exception`"),
        Case("2 stars", "`*.server.*Map`"),
        Case("4 stars", "`*.*.http.*Request*`"),
        Case("set of 8", "set of 8 patterns"),
        Case("hostile", "hostile `a*a*a*a*a*a*a*a*b`"),
    ],
    [
        Target("prefix", PEER, 2.0),
        Target("suffix", PEER, 0.8, ["GPatternSpec"]),
        Target("2 stars", PEER, 2.0),
        Target("4 stars", PEER, 2.0),
        Target("set of 8", PEER, 2.0),
        Target("hostile", PEER, 3.0, ["fnmatch"]),
    ],
    [Curve("hostile", "hostile pattern", "characters of the subject")],
)

FACILITIES["dynarray"] = Facility(
    "Growable array",
    [
        "One append, counted from the empty array to its release.",
        "The vector is compiled into the loop with its element's size; the others are called.",
    ],
    [
        Case(f"{count} of {size}", f"{count:,} times {size} bytes")
        for count in (10000, 1000000)
        for size in (8, 16, 64)
    ],
    [Target(f"{count} of {size}", PEER, 1.2) for count in (10000, 1000000) for size in (8, 16, 64)]
    + [Target(f"1000000 of {size}", LIMIT, 1.0) for size in (8, 16, 64)],
    [Curve("append", "an append of 16 bytes", "elements at last")],
)

FACILITIES["streamwriter"] = Facility(
    "Small writes",
    [
        "One write, in 64 MiB to a new file on disk. Our buffer has 1 KiB, the peers' 4 and 8 KiB.",
        "The limit hands the kernel blocks of 1 KiB and copies nothing.",
    ],
    [Case(f"{size} bytes", f"{size} byte" + "s" * (size > 1)) for size in (1, 4, 8, 16)],
    [
        Target("1 bytes", PEER, 3.0, ["fwrite_unlocked"]),
        Target("4 bytes", PEER, 1.5, ["fwrite_unlocked"]),
        Target("8 bytes", PEER, 1.1, ["fwrite_unlocked"]),
    ],
)


JSON_SHAPES = [
    "strings",
    "beyond ASCII",
    "escapes",
    "integers",
    "doubles",
    "catalogue",
    "configuration",
]
JSON_SIZES = {"200": "200 bytes", "65536": "64 KiB", "4194304": "4 MiB"}
SIMDJSON = ["simdjson DOM", "simdjson On-Demand"]


def json_cases(shapes=JSON_SHAPES, sizes=JSON_SIZES):
    return [f"{shape} {size}" for shape in shapes for size in sizes]


FACILITIES["json"] = Facility(
    "Reading JSON",
    [
        "Events, string bytes and the sums of integers and of decimals are the same for everybody.",
        "Peers are compiled with -O3 for AVX2 (RapidJSON's SSE4.2 code on) into the program; we "
        "are called across a shared library's boundary, and call back.",
        '"RapidJSON" validates text and reads exact doubles; "plain" does neither.',
        "Kind to simdjson and RapidJSON: their parsers keep their memory, and documents are padded.",
    ],
    [
        Case(f"{shape} {size}", f"{shape}, {JSON_SIZES[size]}")
        for shape in JSON_SHAPES
        for size in JSON_SIZES
    ],
    [
        Target("all documents", MEAN, 2.5, ["RapidJSON"], json_cases()),
        Target("all documents", EACH, 2.0, ["RapidJSON"], json_cases()),
        Target("all documents", MEAN, 0.9, SIMDJSON, json_cases()),
        Target("all documents", EACH, 0.6, SIMDJSON, json_cases()),
        Target("configuration", EACH, 1.0, SIMDJSON, json_cases(["configuration"])),
        Target("200 bytes", EACH, 1.0, SIMDJSON, json_cases(sizes=["200"])),
    ],
    [Curve("catalogue", "catalogue", "bytes")],
    compact=True,
    charted=json_cases(sizes=["65536"]),
)

FACILITIES["java"] = Facility(
    "Logging from Java",
    [
        "The line of the logging benchmark, its message put together in Java; 20,000 lines to a fresh "
        "file whose size is checked afterwards. FileHandler, too, flushes every line.",
        "Unfair to us: the process id is a constant in the peers' formats. Not counted: the threads of "
        "the garbage collector, where the peers' garbage goes.",
        "SimpleFormatter looks for the calling method on every line, shown or not, and formats by "
        "interpreting its format; the formatter by hand does neither.",
        "Statements that are off stand in a loop that stores its counter.",
    ],
    [Case("line", "line to a file"), Case("off", "statement that is off")],
    [
        Target("line", PEER, 3.0, ["FileHandler"]),
        Target("off", BEYOND_LIMIT, 0.6),
    ],
)
