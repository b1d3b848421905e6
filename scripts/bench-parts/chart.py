"""Draws groups of horizontal bars as an SVG: the median as a bar, and a dot for the value of each round."""

import statistics
from xml.sax.saxutils import escape

WIDTH, LEFT, RIGHT = 820, 250, 90
BAR, GAP, HEAD = 20, 8, 40
COLOURS = ("#1b6ca8", "#5fa3d0", "#8a8a8a", "#c08a3e", "#6aa56a", "#9c6aa5")
STYLE = ("text { font: 13px sans-serif; fill: #222 } .title { font-weight: bold; font-size: 14px } "
         ".name { text-anchor: end } .round { fill: #222; fill-opacity: 0.45 } .back { fill: #fff }")


def tag(name, content=None, **attributes):
    words = "".join(f' {key.rstrip("_").replace("_", "-")}="{value}"' for key, value in attributes.items())
    return f"<{name}{words}/>" if content is None else f"<{name}{words}>{escape(content)}</{name}>"


def draw_group(title, bars, colours, top):
    """The elements of one group, and the place where the next one begins. Each group has a scale of its own."""
    longest = max(max(values) for _, values in bars)
    scale = (WIDTH - LEFT - RIGHT) / longest
    parts = [tag("text", title, class_="title", x=12, y=top + 24)]
    top += HEAD
    for name, values in bars:
        median = statistics.median(values)
        parts.append(tag("text", name, class_="name", x=LEFT - 8, y=top + 15))
        parts.append(tag("rect", x=LEFT, y=top, width=f"{median * scale:.1f}", height=BAR, fill=colours[name]))
        parts += [tag("circle", class_="round", cx=f"{LEFT + value * scale:.1f}", cy=top + BAR // 2, r=2) for value in values]
        parts.append(tag("text", f"{median:.3f} s", x=f"{LEFT + max(values) * scale + 8:.1f}", y=top + 15))
        top += BAR + GAP
    return parts, top + GAP


def draw(groups):
    """`groups` are pairs of a title and its bars; a bar is a name and the seconds of every round."""
    parts, top = [], 0
    names = dict.fromkeys(name for _, bars in groups for name, _ in bars)
    colours = dict(zip(names, COLOURS))  # a name has the same one in every group
    for title, bars in groups:
        drawn, top = draw_group(title, bars, colours, top)
        parts += drawn
    note = "Bars are medians, dots are rounds; shorter is better. Each group has a scale of its own."
    parts.append(tag("text", note, x=12, y=top + 18))
    height = top + 32
    head = f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height}" width="{WIDTH}" height="{height}">'
    back = tag("rect", class_="back", width=WIDTH, height=height)
    return "\n".join([head, tag("style", STYLE), back, *parts, "</svg>"]) + "\n"
