"""Draws a facility's ratios: for each contender a bar from 1, which is kxutil, to its median.

Coordinates are whole pixels, and each bar is a line of the file, so that figures which hardly
change hardly change the file.
"""

import math
from html import escape
from statistics import median

from facilities import OURS

COLOURS = ["#4878a8", "#e1903c", "#6a9f58", "#b65d60"]  # of peers
OUR_COLOUR, LIMIT_COLOUR = "#1a1a1a", "#b0b0b0"
LEFT, RIGHT, WIDTH = 240, 700, 760  # of the plot, and of the picture
TOP, ROW, GAP = 66, 13, 9  # of the plot; of a bar, and between cases
STEPS = [step * 10.0**exponent for exponent in range(-4, 5) for step in (1, 2, 5)]


def p95(times):
    return sorted(times)[round(0.95 * (len(times) - 1))]


def is_limit(name):
    return name.startswith("limit")


def others_of(cases):
    """Every contender but ourselves, limits last."""
    names = {name for contenders in cases.values() for name in contenders} - {OURS}
    return sorted(names, key=lambda name: (is_limit(name), name))


def text(x, y, words, anchor="start", more=""):
    return f'<text x="{x}" y="{y}" text-anchor="{anchor}"{more}>{escape(words)}</text>'


def box(x, y, width, height, colour):
    return f'<rect x="{x}" y="{y}" width="{width}" height="{height}" fill="{colour}"/>'


def line(path, colour):
    return f'<path d="{path}" stroke="{colour}" fill="none"/>'


def bars_of(contenders, names):
    """Each contender's median and 95th percentile as multiples of our median."""
    if not all(contenders.values()):
        return {}  # no run counted
    unit = median(contenders[OURS])
    known = {name: contenders[name] for name in names if name in contenders}
    return {name: (median(times) / unit, p95(times) / unit) for name, times in known.items()}


def write(path, title, cases):
    others = others_of(cases)
    colours = {OURS: OUR_COLOUR, **dict(zip(others, COLOURS))}
    colours.update((name, LIMIT_COLOUR) for name in others if is_limit(name))
    bars = {case: bars_of(contenders, colours) for case, contenders in cases.items()}
    ratios = [ratio for shown in bars.values() for pair in shown.values() for ratio in pair]
    # The axis ends at round numbers, so that it seldom moves.
    first = max(step for step in STEPS if step <= min(0.5, *ratios))
    last = min(step for step in STEPS if step >= max(2, *ratios))

    def x_of(ratio):
        return round(LEFT + (RIGHT - LEFT) * math.log(ratio / first) / math.log(last / first))

    one, y, body = x_of(1), TOP, []
    for case, shown in bars.items():
        body.append(text(LEFT - 8, y + (ROW * len(shown) + 8) // 2, case.replace("`", ""), "end"))
        for name, (ratio, high) in shown.items():
            x, end = x_of(ratio), x_of(high)
            bar = box(min(x, one), y, abs(x - one), ROW - 2, colours[name])
            whisker = line(f"M{x} {y + 5}H{end}M{end} {y + 2}v7", "#333")
            label = "" if name == OURS else f"{ratio:.0f}" if ratio >= 10 else f"{ratio:#.2g}"
            at = (x - 4, y + 9, label, "end") if x < one else (end + 4, y + 9, label)
            body.append(bar + whisker + text(*at))
            y += ROW
        y += GAP
    head = [text(20, 18, f"{title}: time as a multiple of kxutil's", more=' font-size="14"')]
    x = 20
    for name, colour in colours.items():
        head.append(box(x, 31, 10, 10, colour) + text(x + 14, 40, name))
        x += 38 + 6 * len(name)
    for tick in STEPS[STEPS.index(first) : STEPS.index(last) + 1]:
        x = x_of(tick)
        head.append(line(f"M{x} {TOP - 6}V{y}", "#ddd") + text(x, y + 14, f"{tick:g}", "middle"))
    legend = "logarithmic axis, right of 1 is slower; bar: median, line: up to the 95th percentile"
    body += [line(f"M{one} {TOP - 6}V{y}", OUR_COLOUR), text(LEFT, y + 32, legend)]
    with open(path, "w", encoding="utf-8") as file:
        svg = f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {y + 42}"'
        svg += ' font-family="sans-serif" font-size="11">'
        file.write("\n".join([svg, box(0, 0, WIDTH, y + 42, "#fff"), *head, *body, "</svg>\n"]))
