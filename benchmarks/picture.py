"""Cost against size as one SVG: a panel for each curve, both axes logarithmic."""

import math
from html import escape

COLUMNS = 3
WIDTH, HEIGHT = 320, 250  # of a panel
LEFT, RIGHT, TOP, BOTTOM = 58, 14, 44, 40  # of the plot in it
HEAD = 34  # the legend's

STYLE = """
  text { font: 11px sans-serif; fill: #333 }
  .title { font-weight: bold; font-size: 12px }
  .axis { stroke: #999; fill: none }
  .grid { stroke: #e6e6e6 }
  .ours { stroke: #1663a6; fill: none; stroke-width: 2 }
  .theirs { stroke: #b0632a; fill: none; stroke-width: 1.5; stroke-dasharray: 5 3 }
  .dot-ours { fill: #1663a6 } .dot-theirs { fill: #b0632a }
"""


class Scale:
    """Places of values on a logarithmic axis."""

    def __init__(self, low, high, start, end):
        # A curve that is flat still needs an axis.
        self.low, self.high = math.log10(low), math.log10(max(high, low * 1.5))
        self.start, self.end = start, end

    def __call__(self, value):
        share = (math.log10(value) - self.low) / (self.high - self.low)
        return self.start + share * (self.end - self.start)

    def ticks(self):
        """Powers of ten inside; with fewer than two of them 1, 2 and 5 times such."""
        low, high = math.floor(self.low), math.ceil(self.high)
        for steps in ((1,), (1, 2, 5)):
            values = [step * 10.0**k for k in range(low, high + 1) for step in steps]
            inside = [v for v in values if self.low - 1e-9 <= math.log10(v) <= self.high + 1e-9]
            if len(inside) > 2 or steps != (1,):
                return inside
        return []


def size_text(value):
    for unit, size in (("M", 1e6), ("k", 1e3)):
        if value >= size:
            return f"{value / size:g}{unit}"
    return f"{value:g}"


def time_text(seconds):
    for unit, size in (("s", 1), ("ms", 1e-3), ("µs", 1e-6)):
        if seconds >= size * 0.999:
            return f"{seconds / size:g} {unit}"
    return f"{seconds / 1e-9:g} ns"


def line(kind, x1, y1, x2, y2):
    return f'<line class="{kind}" x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}"/>'


def text(x, y, words, anchor="start", kind=""):
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" class="{kind}">{escape(words)}</text>'


def polyline(kind, places):
    points = " ".join(f"{x:.1f},{y:.1f}" for x, y in places)
    return [f'<polyline class="{kind}" points="{points}"/>']


def dots(kind, places):
    return [f'<circle class="dot-{kind}" cx="{x:.1f}" cy="{y:.1f}" r="2.5"/>' for x, y in places]


def grid(x_scale, y_scale):
    out = []
    for value in x_scale.ticks():
        x = x_scale(value)
        out += [line("grid", x, y_scale.start, x, y_scale.end),
                text(x, y_scale.start + 15, size_text(value), "middle")]
    for value in y_scale.ticks():
        y = y_scale(value)
        out += [line("grid", x_scale.start, y, x_scale.end, y),
                text(x_scale.start - 5, y + 4, time_text(value), "end")]
    return out


def panel(curve, left, top):
    sizes = [p.size for p in curve.points]
    costs = [c for p in curve.points for c in (p.ours, p.theirs) if c is not None]
    # Room for a tick above and below.
    x_scale = Scale(min(sizes), max(sizes), left + LEFT, left + WIDTH - RIGHT)
    y_scale = Scale(min(costs) / 1.3, max(costs) * 1.3, top + HEIGHT - BOTTOM, top + TOP)
    ours = [(x_scale(p.size), y_scale(p.ours)) for p in curve.points]
    theirs = [(x_scale(p.size), y_scale(p.theirs)) for p in curve.points if p.theirs is not None]
    out = [text(left + LEFT - 40, top + 20, curve.what, kind="title")]
    if curve.peer:
        out.append(text(left + LEFT - 40, top + 35, "peer: " + curve.peer))
    out += grid(x_scale, y_scale)
    out.append(f'<path class="axis" d="M{x_scale.start},{y_scale.end}V{y_scale.start}H{x_scale.end}"/>')
    if theirs:
        out += polyline("theirs", theirs) + dots("theirs", theirs)
    return out + polyline("ours", ours) + dots("ours", ours)


def legend():
    return [line("ours", 20, 18, 50, 18), text(56, 22, "ours"), line("theirs", 110, 18, 140, 18),
            text(146, 22, "peer"), text(200, 22, "Cost against size, both axes logarithmic")]


def picture(curves):
    """The text of the SVG."""
    rows = -(-len(curves) // COLUMNS)
    width, height = COLUMNS * WIDTH + 10, rows * HEIGHT + HEAD
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
           f'width="{width}" height="{height}">', f"<style>{STYLE}</style>",
           f'<rect width="{width}" height="{height}" fill="#fff"/>', *legend()]
    for i, curve in enumerate(curves):
        out += panel(curve, i % COLUMNS * WIDTH, i // COLUMNS * HEIGHT + HEAD)
    return "\n".join(out + ["</svg>"]) + "\n"
