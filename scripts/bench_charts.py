# SPDX-License-Identifier: MIT
"""bench_charts.py FOLDER RESULT.json...: draws the charts of a run into FOLDER, as SVG, by gnuplot.

A chart that has no results is not drawn, and an old one stays.
"""
import math
import pathlib
import subprocess
import sys

from bench_results import Results

CONTENTS = ("integers", "reals", "words", "strings", "records")
SERIES = {  # series: title, colour
    "ours": ("KAPUtils", "#d55e00"),
    "nlohmann": ("nlohmann", "#0072b2"),
    "boost_json": ("Boost.JSON", "#009e73"),
    "rapidjson_malloc": ("RapidJSON, malloc", "#8a6fae"),
    "rapidjson_arena": ("RapidJSON, arena", "#999999"),
}
BARS_AT = 100_000  # values
# A white background, because pages are read on dark ones too.
HEAD = """set terminal svg size {width},{height} font "sans-serif,12" background "white"
set border 3
set grid ytics linecolor "#dddddd"
set key noenhanced outside bottom center horizontal
set tics nomirror
"""


def block(name, rows):
    """Inline data for gnuplot; an absent value is '?'."""
    lines = [" ".join(f'"{cell}"' if isinstance(cell, str) else "?" if cell is None else str(cell)
                      for cell in row) for row in rows]
    return f"${name} << end\n" + "\n".join(lines) + "\nend\n"


def draw(path, width, height, commands):
    script = HEAD.format(width=width, height=height) + 'set datafile missing "?"\n' + commands
    run = subprocess.run(["gnuplot"], input=script, capture_output=True, text=True, check=True)
    if run.stderr:
        sys.exit(f"bench_charts: {path.name}: {run.stderr}")
    path.write_text(run.stdout, encoding="utf-8")


def time_of(results, case, n, series):
    result = results.rows.get((case, n), {}).get(series)
    return result.time if result else None


def growth(results, folder):
    """A panel for each kind of document: time for each value by the number of values."""
    sizes = sorted({n for case, n in results.rows if case.startswith("parse_")})
    if len(sizes) < 2:
        return
    tics = ", ".join(f'"10^{{{round(math.log10(n))}}}" {n}' for n in sizes)
    commands = ("set multiplot layout 2,3\nset logscale x\nunset key\n"
                f"set xtics ({tics})\nset xrange [600:1.6e6]\nset yrange [0:*]\n")
    for content in CONTENTS:
        rows = [[n] + [time_of(results, f"parse_{content}", n, series) for series in SERIES]
                for n in sizes]
        lines = ", ".join(f'$grow{content} using 1:{column} with linespoints pointtype 7 '
                          f'pointsize 0.5 linewidth 2 linecolor "{colour}" title "{title}"'
                          for column, (title, colour) in enumerate(SERIES.values(), 2))
        commands += block(f"grow{content}", rows)
        commands += f'set title "{content}: ns for each value"\nplot {lines}\n'
    legend = ", ".join(f'NaN with lines linewidth 2 linecolor "{colour}" title "{title}"'
                       for title, colour in SERIES.values())
    commands += ("unset title\nunset logscale\nunset border\nunset tics\nset xrange [0:1]\n"
                 f"set yrange [0:1]\nset key inside center center vertical\nplot {legend}\n")
    draw(folder / "growth.svg", 900, 520, commands)


def bars(rows, series, label):
    """Clusters of bars: a row is a cluster with a name and a value for each series."""
    plots = ", ".join(f'$bars using {column}{":xtic(1)" if column == 2 else ""} '
                      f'linecolor "{SERIES[each][1]}" title "{SERIES[each][0]}"'
                      for column, each in enumerate(series, 2))
    return (block("bars", rows) + "set style data histogram\nset style fill solid\n"
            f'set style histogram clustered gap 1\nset ylabel "{label}"\nset yrange [0:*]\n'
            f"plot {plots}\n")


def peers(results, folder):
    rows = [[content] + [time_of(results, f"parse_{content}", BARS_AT, series) for series in SERIES]
            for content in CONTENTS]
    if any(value is not None for row in rows for value in row[1:]):
        draw(folder / "peers.svg", 900, 360, bars(rows, SERIES, "ns for each value"))


def threads(results, folder):
    """Values a second of all threads together, for each kind of document and number of threads."""
    series = [each for each in SERIES if any(each in row for (case, _), row in results.rows.items()
                                             if case.startswith("threads_"))]
    rows = []
    for content in CONTENTS:
        for case, n in results.rows:
            if case == f"threads_{content}":
                times = [time_of(results, case, n, each) for each in series]
                rows.append([f"{content}, {n}"] + [time and 1e3 / time for time in times])
    if rows:
        label = "million values a second"
        draw(folder / "threads.svg", 900, 360, bars(rows, series, label))


def goals(results, folder):
    """A row for each case and peer, and in it a point for each n: the ratio divided by the goal."""
    rows = {}
    for goal in results.goals():
        if goal.peer and goal.value is not None:
            rows.setdefault(f"{goal.case} / {goal.peer}", []).append(goal)
    if not rows:
        return
    worst = sorted(rows, key=lambda row: max(goal.value / goal.limit for goal in rows[row]))
    points = [[len(rows) - 1 - place, row, goal.value / goal.limit,
               0x009E73 if goal.is_met() else 0xD55E00]
              for place, row in enumerate(worst) for goal in rows[row]]
    commands = block("goals", points) + (
        "unset key\nset logscale x\nset xtics (0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10)\n"
        "set grid xtics\nset ytics noenhanced font ',10'\n"
        "set xlabel 'ratio divided by the goal: 1 or less is met'\n"
        f"set yrange [-1:{len(rows)}]\n"
        "set arrow from 1, graph 0 to 1, graph 1 nohead linewidth 2 linecolor '#555555'\n"
        "plot $goals using 3:1:4:ytic(2) with points pointtype 7 pointsize 0.6 linecolor rgb "
        "variable\n")
    draw(folder / "goals.svg", 900, 80 + 15 * len(rows), commands)


def main():
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    paths = [path for path in map(pathlib.Path, sys.argv[2:]) if path.parent.name != "single"]
    results = Results(paths)
    for chart in (growth, peers, threads, goals):
        chart(results, folder)


if __name__ == "__main__":
    main()
