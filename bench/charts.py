"""Draws the benchmarks: of each facility the ratios, and how the cost grows with the input.

usage: charts.py FOLDER RESULT.json...
"""

import os
import sys

import matplotlib

matplotlib.use("svg")
from matplotlib import pyplot, ticker

from facilities import FACILITIES, OURS
from results import is_limit, read_all

PEER_COLOURS = ["#4878a8", "#e1903c", "#6a9f58", "#b65d60", "#8573a9", "#a98467", "#5ba3a3", "#c4a43c"]
LIMIT_COLOURS = ["#b0b0b0", "#d4d4d4"]
OUR_COLOUR = "#1a1a1a"

BAR_HEIGHT = 0.13  # inches
LABEL_SIZE = 6
STYLE = {
    "font.size": 8,
    "svg.fonttype": "none",  # text stays text
    "svg.hashsalt": "kxutil",  # the same figures give the same file
    "axes.spines.top": False,
    "axes.spines.right": False,
}


def colours_of(contenders):
    """Every contender but ourselves with its colour, peers first."""
    peers = sorted(c for c in contenders if c != OURS and not is_limit(c))
    limits = sorted(c for c in contenders if is_limit(c))
    return dict([*zip(peers, PEER_COLOURS), *zip(limits, LIMIT_COLOURS)])


def contenders_of(groups):
    return {name for contenders in groups for name in contenders}


def save(figure, folder, name):
    figure.savefig(os.path.join(folder, name + ".svg"), bbox_inches="tight", metadata={"Date": None})
    pyplot.close(figure)


def plain_numbers(axis):
    axis.set_major_formatter(ticker.FuncFormatter(lambda x, _: f"{x:g}"))
    axis.set_minor_formatter(ticker.NullFormatter())


def add_legend(axes, *entries):
    axes.legend(*entries, loc="upper left", bbox_to_anchor=(1.02, 1), frameon=False, fontsize=7)


def draw_ratios(facility, cases):
    """A bar from 1, which is kxutil, to contender / kxutil; a group of bars for each case."""
    charted = [c for c in facility.cases if facility.charted is None or c.key in facility.charted]
    colours = colours_of(contenders_of(cases[c.key] for c in charted))
    figure, axes = pyplot.subplots()
    top = 0
    ticks = []
    for case in charted:
        contenders = cases[case.key]
        ours = contenders[OURS]
        shown = [c for c in colours if c in contenders and contenders[c].times and ours.times]
        for i, name in enumerate(shown):
            ratio = contenders[name].median() / ours.median()
            axes.barh(top + i, ratio - 1, left=1, height=0.9, color=colours[name])
            axes.annotate(
                f"{ratio:.2f}",
                (ratio, top + i),
                xytext=(2 if ratio > 1 else -2, 0),
                textcoords="offset points",
                ha="left" if ratio > 1 else "right",
                va="center",
                fontsize=LABEL_SIZE,
            )
        ticks.append(top + (len(shown) - 1) / 2)
        top += len(shown) + 1
    figure.set_size_inches(7, 0.8 + BAR_HEIGHT * top)
    axes.set_ylim(top - 1, -1)
    axes.set_xscale("log")
    axes.margins(x=0.12)
    axes.axvline(1, color=OUR_COLOUR, linewidth=1)
    axes.set_yticks(ticks, [case.title.replace("`", "") for case in charted])
    axes.tick_params(axis="y", length=0)
    plain_numbers(axes.xaxis)
    axes.set_xlabel("time / kxutil's time: right of 1 is slower than kxutil")
    axes.set_title(facility.title)
    handles = [pyplot.Rectangle((0, 0), 1, 1, color=colour) for colour in colours.values()]
    add_legend(axes, handles, colours)
    return figure


def size_label(size):
    for factor, suffix in [(1 << 20, "Mi"), (1 << 10, "Ki"), (10**6, "M"), (10**3, "k")]:
        if size % factor == 0:
            return f"{size // factor}{suffix}"
    return str(size)


def points_of(curve, cases):
    """The sizes of a curve, ascending, with what was measured at each."""
    keys = [key for key in cases if key.rpartition(" ")[0] == curve.key]
    points = {int(key.rpartition(" ")[2]): cases[key] for key in keys}
    return dict(sorted(points.items()))


def draw_growth(facility, cases):
    """Time over size, both logarithmic: a slope of 1 is proportional to the input."""
    figure, all_axes = pyplot.subplots(
        1, len(facility.curves), figsize=(4 * len(facility.curves), 3), squeeze=False
    )
    for curve, axes in zip(facility.curves, all_axes[0]):
        points = points_of(curve, cases)
        colours = colours_of(contenders_of(points.values()))
        for name in [OURS, *colours]:
            sizes = [size for size, contenders in points.items() if name in contenders]
            axes.plot(
                sizes,
                [points[size][name].median() for size in sizes],
                marker=".",
                linestyle=":" if is_limit(name) else "-",
                linewidth=2 if name == OURS else 1,
                color=colours.get(name, OUR_COLOUR),
                label=name,
            )
        axes.set_xscale("log")
        axes.set_yscale("log")
        axes.set_xticks(list(points), [size_label(size) for size in points])
        axes.set_xticks([], minor=True)
        least, most = axes.get_ylim()
        axes.yaxis.set_major_locator(ticker.LogLocator(subs=(1, 2, 5) if most < 100 * least else (1,)))
        plain_numbers(axes.yaxis)
        axes.set_xlabel(curve.unit)
        axes.set_ylabel("ns")
        axes.set_title(curve.title)
        add_legend(axes)
    figure.tight_layout()
    return figure


def main():
    folder, *paths = sys.argv[1:]
    os.makedirs(folder, exist_ok=True)
    pyplot.rcParams.update(STYLE)
    results, _ = read_all(paths)
    for name, cases in results.items():
        facility = FACILITIES[name]
        save(draw_ratios(facility, cases), folder, name)
        if facility.curves:
            save(draw_growth(facility, cases), folder, name + "-growth")


main()
