"""Draws the ratios of a benchmark run as bars, an SVG in light and dark, with what is to be reached as a mark."""
from xml.sax.saxutils import escape

LABEL_WIDTH, BAR_WIDTH, ROW_HEIGHT, GAP = 310, 420, 22, 18
STYLE = """
svg { font: 13px "DejaVu Sans", sans-serif; }
.page { fill: #ffffff } text { fill: #1f2328 } .head { font-weight: bold } .small { font-size: 11px }
.bar { fill: #4c78a8 } .floor { stroke: #8c959f } .target { stroke: #d1242f; stroke-width: 2 }
@media (prefers-color-scheme: dark) {
  .page { fill: #0d1117 } text { fill: #e6edf3 } .bar { fill: #6ea8dc } .target { stroke: #ff7b72 }
}
"""


def bars(results):
    """(group, label, ratio, target or None) of all that the results hold."""
    targets = results["targets"]

    def rows(section):
        return results.get(section) if isinstance(results.get(section), list) else []

    for row in rows("discovery"):
        group = "Discovery, warm, of the bare loop: modules of C++ alone" if row["kind"] == "plain" else \
            "Discovery, warm, of the bare loop: modules that use QtCore"
        reached = targets["discovery"] if 100 <= row["modules"] <= 1000 else None
        for name in ("findModules", "bare loop beside Qt", "QLibrary", "QPluginLoader", "Boost.DLL"):
            if f"{name}/bare" in row:
                yield group, f'{row["modules"]:,} modules, {name}', row[f"{name}/bare"], \
                    reached if name == "findModules" else None
    for row in rows("whole"):
        uses = "C++ alone" if row["kind"] == "plain" else "QtCore"
        group = "Whole process, of a bare C program"
        yield group, f'{row["modules"]:,} modules, {uses}', row["start/bare"], targets["whole"]
        yield group, f'{row["modules"]:,} modules, {uses}, bare beside Qt', row["bare beside Qt/bare"], None
    for row in rows("instructions"):
        yield "Instructions of the whole process, of a bare C program", f'{row["modules"]:,} modules', row["start/bare"], \
            targets["instructions"] if row["modules"] == 500 else None
    for row in rows("cold"):
        for name in ("discovery", "whole"):
            yield "Cold caches, of the bare program", f'{row["modules"]:,} modules, {name}', row[f"{name}/bare"], \
                targets[f"cold {name}"]


def write(results, path):
    entries = list(bars(results))
    largest = max([ratio for _, _, ratio, _ in entries] + [1.2])
    x = lambda ratio: LABEL_WIDTH + BAR_WIDTH * max(ratio, 0) / largest
    y, parts, group = 10, [], None
    for name, label, ratio, target in entries:
        if name != group:
            y += GAP + ROW_HEIGHT
            parts.append(f'<text class="head" x="10" y="{y - 8}">{escape(name)}</text>')
            group = name
        parts.append(f'<text x="{LABEL_WIDTH - 8}" y="{y + 15}" text-anchor="end">{escape(label)}</text>'
                     f'<rect class="bar" x="{LABEL_WIDTH}" y="{y + 3}" width="{x(ratio) - LABEL_WIDTH:.1f}" height="{ROW_HEIGHT - 6}" rx="2"/>'
                     f'<line class="floor" x1="{x(1):.1f}" x2="{x(1):.1f}" y1="{y}" y2="{y + ROW_HEIGHT}"/>'
                     f'<text class="small" x="{x(ratio) + 6:.1f}" y="{y + 15}">{ratio:.2f}</text>')
        if target is not None:
            parts.append(f'<line class="target" x1="{x(target):.1f}" x2="{x(target):.1f}" y1="{y}" y2="{y + ROW_HEIGHT}"/>')
        y += ROW_HEIGHT
    y += GAP + ROW_HEIGHT
    parts.append(f'<text class="small" x="10" y="{y - 6}">Thin line: the bare loop or program, 1. Red: to be reached, at most.</text>')
    path.write_text(f'<svg xmlns="http://www.w3.org/2000/svg" width="{LABEL_WIDTH + BAR_WIDTH + 60}" height="{y + 10}" role="img">'
                    f'<title>Benchmarks of the start-up</title><style>{STYLE}</style>'
                    f'<rect class="page" width="100%" height="100%"/>{"".join(parts)}</svg>\n')
