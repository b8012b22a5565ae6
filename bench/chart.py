"""Draws the bar chart: one panel for each kind of work, each on a scale of its own."""

from html import escape

WIDTH = 900
MARGIN = 20
PANEL_GAP = 24
PANEL_WIDTH = (WIDTH - 2 * MARGIN - PANEL_GAP) / 2
LABEL_WIDTH = 144
VALUE_WIDTH = 62
BAR = 16
BAR_STEP = 22
TITLE_HEIGHT = 30
HEADER_HEIGHT = 64

OURS = "#1f6feb"
PEER = "#8c959f"
TEXT = "#1f2328"
FAINT = "#59636e"
BACKGROUND = "#ffffff"
BORDER = "#d1d9e0"


def _text(x, y, text, size=13, color=TEXT, anchor="start", weight="normal"):
    return (f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" fill="{color}" '
            f'text-anchor="{anchor}" font-weight="{weight}">{escape(text)}</text>')


def _nanoseconds(value):
    return f"{value:,.0f} ns" if value >= 100 else f"{value:.1f} ns"


def _panel_height(bars):
    return TITLE_HEIGHT + BAR_STEP * len(bars)


def _panel(x, y, title, bars):
    """`bars` are (label, nanoseconds, whether it is the library)."""
    longest = max(value for _, value, _ in bars)
    room = PANEL_WIDTH - LABEL_WIDTH - VALUE_WIDTH
    parts = [_text(x, y + 14, title, size=14, weight="bold")]
    for index, (label, value, is_ours) in enumerate(bars):
        top = y + TITLE_HEIGHT + BAR_STEP * index
        length = max(1.0, room * value / longest)
        weight = "bold" if is_ours else "normal"
        parts.append(_text(x + LABEL_WIDTH - 8, top + 12, label, size=12, anchor="end",
                           weight=weight))
        parts.append(f'<rect x="{x + LABEL_WIDTH:.1f}" y="{top:.1f}" width="{length:.1f}" '
                     f'height="{BAR}" rx="2" fill="{OURS if is_ours else PEER}"/>')
        parts.append(_text(x + LABEL_WIDTH + length + 6, top + 12, _nanoseconds(value), size=12,
                           color=TEXT if is_ours else FAINT, weight=weight))
    return parts


def draw(panels, subtitle):
    """The chart as SVG. `panels` are (title, bars), laid out two in a line."""
    body = []
    y = HEADER_HEIGHT
    for first in range(0, len(panels), 2):
        line = panels[first:first + 2]
        for column, (title, bars) in enumerate(line):
            body += _panel(MARGIN + column * (PANEL_WIDTH + PANEL_GAP), y, title, bars)
        y += max(_panel_height(bars) for _, bars in line) + PANEL_GAP
    height = y
    head = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height:.0f}" '
        f'viewBox="0 0 {WIDTH} {height:.0f}" role="img" '
        f'font-family="Helvetica, Arial, sans-serif">',
        "<title>Nanoseconds per event of LOG4ZEB and its peers</title>",
        f'<rect x="0.5" y="0.5" width="{WIDTH - 1}" height="{height - 1:.0f}" rx="6" '
        f'fill="{BACKGROUND}" stroke="{BORDER}"/>',
        _text(MARGIN, 28, "Time per event: shorter is better", size=18, weight="bold"),
        _text(MARGIN, 48, subtitle, size=12, color=FAINT),
    ]
    return "\n".join(head + body + ["</svg>", ""])
