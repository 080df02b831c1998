#!/usr/bin/env python3
"""Makes benchmarks/results.md and results.svg of what korvo_bench wrote.

Usage: report.py RESULTS.json BUILD_FOLDER [TARGET_FOLDER]
"""

import datetime
import json
import math
import re
import sys
from collections import namedtuple
from pathlib import Path

import machine
from picture import picture

ROOT = Path(__file__).resolve().parent.parent

Goal = namedtuple("Goal", "sense bound step")  # sense "most", "least" or None
Row = namedtuple("Row", "name what peer ours theirs ratio low high goal")  # times in seconds
Figure = namedtuple("Figure", "name what against unit value goal")
Point = namedtuple("Point", "size ours theirs")
Curve = namedtuple("Curve", "name what peer points goal")


# --- What korvo_bench wrote

def goal_of(entry):
    step = entry.get("step")
    if "at_most" in entry:
        return Goal("most", entry["at_most"], step)
    if "at_least" in entry:
        return Goal("least", entry["at_least"], step)
    return Goal(None, None, None)


def name_of(entry):
    """The row's own name: the program adds how it was run."""
    return re.sub(r"/(iterations:.*|manual_time)$", "", entry["name"])


def label_of(entry):
    return (entry.get("label", "") + "||").split("|")[:3]


def row_of(entry):
    what, peer, _ = label_of(entry)
    return Row(name_of(entry), what, peer, entry["ours"], entry.get("peer"), entry.get("ratio"),
               entry.get("low"), entry.get("high"), goal_of(entry))


def figure_of(entry):
    what, against, unit = label_of(entry)
    return Figure(name_of(entry), what, against, unit, entry["value"], goal_of(entry))


def curve_of(entry):
    """An entry whose counters are "ours/SIZE" and "peer/SIZE"."""
    what, peer, _ = label_of(entry)
    sizes = sorted(int(key[5:]) for key in entry if key.startswith("ours/"))
    points = [Point(n, entry[f"ours/{n}"], entry.get(f"peer/{n}")) for n in sizes]
    return Curve(name_of(entry), what, peer, points, goal_of(entry))


def is_curve(entry):
    return any(key.startswith("ours/") for key in entry)


def read(results):
    """(rows and figures, curves, errors) of the JSON that Google Benchmark writes."""
    entries = results["benchmarks"]
    errors = [f"{name_of(e)}: {e.get('error_message', '')}" for e in entries if e.get("error_occurred")]
    good = [e for e in entries if not e.get("error_occurred")]
    lines = [figure_of(e) if "value" in e else row_of(e) for e in good if not is_curve(e)]
    return lines, [curve_of(e) for e in good if is_curve(e)], errors


# --- What it means

def exponent(points, cost="ours"):
    """Slope of the cost over the size in a double logarithmic picture, by least squares over the
    upper half of the sizes: below it stand the costs of a start. None for fewer than two."""
    if not points:
        return None
    middle = math.sqrt(points[0].size * points[-1].size)
    upper = [(math.log(p.size), math.log(getattr(p, cost))) for p in points
             if p.size >= middle * 0.999 and getattr(p, cost)]
    if len(upper) < 2:
        return None
    mean_x = sum(x for x, _ in upper) / len(upper)
    mean_y = sum(y for _, y in upper) / len(upper)
    return (sum((x - mean_x) * (y - mean_y) for x, y in upper)
            / sum((x - mean_x) ** 2 for x, _ in upper))


def is_met(goal, bound, value):
    return value <= bound if goal.sense == "most" else value >= bound


def verdict(goal, value):
    """"yes", "no", "first step" where there are two and the first alone is met; "" without a goal."""
    if goal.sense is None or value is None:
        return ""
    if not is_met(goal, goal.bound, value):
        return "**no**"
    return "first step" if goal.step and not is_met(goal, goal.step, value) else "yes"


def curve_verdict(curve):
    """As `verdict`; "as the peer" where the plainest way to do the same grows no less."""
    slope, peer = exponent(curve.points), exponent(curve.points, "theirs")
    said = verdict(curve.goal, slope)
    return "as the peer" if said == "**no**" and peer is not None and slope <= peer else said


# --- How it is said

def number(value):
    """Three digits that count."""
    if value == 0:
        return "0"
    digits = max(0, 2 - math.floor(math.log10(abs(value))))
    return f"{value:.{digits}f}"


def time(seconds):
    if seconds is None:
        return ""
    for unit, size in (("s", 1), ("ms", 1e-3), ("µs", 1e-6)):
        if seconds >= size:
            return f"{number(seconds / size)} {unit}"
    return f"{number(seconds / 1e-9)} ns"


def goal_text(goal):
    if goal.sense is None:
        return ""
    text = f"at {goal.sense} {goal.bound:g}"
    return text + (f", then {goal.step:.3g}" if goal.step else "")


def count(value):
    return f"{value:,.0f}"


def table(head, lines):
    yield "| " + " | ".join(head) + " |"
    yield "|" + "---|" * len(head)
    for line in lines:
        yield "| " + " | ".join(line) + " |"


def ratio_text(row):
    if row.ratio is None:
        return ""
    return f"{number(row.ratio)} [{number(row.low)} to {number(row.high)}]"


def row_cells(line):
    if isinstance(line, Figure):
        return [line.what, f"{number(line.value)} {line.unit}", line.against, "", "",
                goal_text(line.goal), verdict(line.goal, line.value)]
    return [line.what, time(line.ours), line.peer, time(line.theirs), ratio_text(line),
            goal_text(line.goal), verdict(line.goal, line.ratio)]


def slope_text(slope):
    return "" if slope is None else f"{slope:.2f}"


def curve_cells(curve):
    first, last = curve.points[0], curve.points[-1]
    return [curve.what, f"{count(first.size)} to {count(last.size)}",
            f"{time(first.ours)} to {time(last.ours)}", slope_text(exponent(curve.points)),
            slope_text(exponent(curve.points, "theirs")), goal_text(curve.goal),
            curve_verdict(curve)]


def point_cells(curve, point):
    ratio = "" if point.theirs is None else number(point.ours / point.theirs)
    return [curve.what, count(point.size), time(point.ours), time(point.theirs), ratio]


def page(lines, curves, errors, facts, date):
    """The text of results.md."""
    out = ["# Results of the benchmarks", "",
           "Written by `make bench`; how to read it is in [README.md](README.md).", ""]
    out += table(["", ""], [["date", date]] + [[name, value] for name, value in facts.items()])
    out += ["", "## Ours beside a peer", ""]
    out += table(["what", "us", "against", "its time", "ratio [quartiles]", "goal", "met"],
                 map(row_cells, lines))
    out += ["", "## Cost against size", "", "![Cost against size](results.svg)", ""]
    out += table(["what", "size", "cost", "exponent", "the peer's", "goal", "met"], map(curve_cells, curves))
    out += ["", "Every point:", ""]
    out += table(["what", "size", "us", "peer", "ratio"],
                 [point_cells(c, p) for c in curves for p in c.points])
    if errors:
        out += ["", "## Not timed", ""] + [f"- {error}" for error in errors]
    return "\n".join(out) + "\n"


def main(arguments):
    if len(arguments) not in (2, 3):
        print(__doc__, file=sys.stderr)
        return 2
    results = json.loads(Path(arguments[0]).read_text(encoding="utf-8"))
    target = Path(arguments[2]) if len(arguments) == 3 else ROOT / "benchmarks"
    lines, curves, errors = read(results)
    date = datetime.date.today().isoformat()
    text = page(lines, curves, errors, machine.facts(ROOT, Path(arguments[1])), date)
    (target / "results.md").write_text(text, encoding="utf-8")
    (target / "results.svg").write_text(picture(curves), encoding="utf-8")
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
