# SPDX-License-Identifier: MIT
"""bench_tables.py [--page PAGE] [--slopes FILE] [--profiles FILE] RESULT.json...: prints the tables
of a run, or puts them into PAGE.

PAGE is a Markdown file. Each table replaces the text between the lines "<!-- bench: NAME -->"
and "<!-- bench end -->". Results in a folder "single" are those of processes with one thread. The
files are what scripts/slopes and bench_profiles.py wrote.
"""
import argparse
import itertools
import json
import pathlib
import platform
import re
import statistics
import subprocess
import textwrap
import time

from bench_results import Results

LARGEST_GROWTH = 1.3
WIDE_SPREAD = 0.1
LEAST_DOCUMENT = 5_000_000  # bytes
BLOCK = re.compile(r"(<!-- bench: (\w+) -->\n).*?(<!-- bench end -->)", re.DOTALL)
PACKAGES = {"g++": "g++", "Google Benchmark": "libbenchmark-dev", "nlohmann": "nlohmann-json3-dev",
            "RapidJSON": "rapidjson-dev", "Boost.JSON": "libboost-json1.81-dev",
            "valijson": "libvalijson-dev", "jq": "jq"}


def table(rows):
    """A Markdown table; the first row is the heading."""
    rows = [[str(cell) for cell in row] for row in rows]
    rows.insert(1, ["-" * max(len(row[column]) for row in rows) for column in range(len(rows[0]))])
    widths = [len(cell) for cell in rows[1]]
    if sum(widths) + 3 * len(widths) + 1 > 100:  # columns that are not aligned fit the line
        widths = [0] * len(widths)
        rows[1] = ["--"] * len(widths)
    lines = ["| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |"
             for row in rows]
    return "\n".join(lines) + "\n"


def number(n):
    exponent = len(str(n)) - 1
    if exponent >= 3 and n == 10**exponent:
        return f"10^{exponent}"
    return f"{n:,}".replace(",", " ") if n else ""


def figure(value):
    return "" if value is None else f"{value:.2f}" if value < 10 else f"{value:.0f}"


def time_of(result):
    """In the unit that suits it."""
    for limit, unit in ((1e3, "ns"), (1e6, "µs"), (1e9, "ms")):
        if result.time < limit:
            return f"{result.time / limit * 1e3:.3g} {unit}"
    return f"{result.time / 1e9:.3g} s"


def machine(results):
    """What the figures were measured on."""
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        model = re.search("model name\t: (.*)", file.read())
    cores = subprocess.run(["nproc"], capture_output=True, text=True, check=True).stdout.strip()
    versions = []
    for name, package in PACKAGES.items():
        found = subprocess.run(["dpkg-query", "-W", "-f=${Version}", package], capture_output=True,
                               text=True, check=False)
        if found.returncode == 0:
            versions.append(f"{name} {re.sub('^[0-9]+:|[-+].*', '', found.stdout)}")
    loads = f"{min(results.loads):.1f} to {max(results.loads):.1f}" if results.loads else "unknown"
    least, most = results.repetitions()
    repetitions = f"{least}" if least == most else f"{least} to {most}"
    spreads = [result.spread() for row in results.rows.values() for result in row.values()]
    wide = sum(spread > WIDE_SPREAD for spread in spreads)
    lines = [f"Measured on {time.strftime('%-d %B %Y', time.gmtime())}.",
             f"{cores} cores, {model.group(1) if model else platform.machine()}.",
             f"{repetitions} repetitions of each benchmark. The quartiles lie within "
             f"{statistics.median(spreads) * 100:.1f} % of the median for half of the "
             f"{len(spreads)} series, and beyond {WIDE_SPREAD * 100:.0f} % for {wide}.",
             f"Load average at the start of each program: {loads}; 1 is the run itself.",
             f"{', '.join(versions)}."]
    return "".join(textwrap.fill(line, 100, initial_indent="- ", subsequent_indent="  ") + "\n"
                   for line in lines)


def goals(results):
    """One row for the same case, peer and goal."""
    yield ["case", "n", "by", "goal", "reached", ""]
    key = lambda goal: (goal.case, goal.peer, goal.limit)
    for (case, peer, limit), same in itertools.groupby(sorted_by_case(results.goals()), key):
        same = list(same)
        unit = "" if peer else " ms"
        yield [f"`{case}`", ", ".join(number(goal.n) for goal in same), peer, f"{limit:g}{unit}",
               ", ".join(map(reached, same)) + unit, verdict(same)]


def reached(goal):
    if goal.value is None:
        return "–"
    return figure(goal.value) + ("~" if goal.is_near() else "")


def verdict(same):
    measured = [goal for goal in same if goal.value is not None]
    missed = sum(not goal.is_met() for goal in measured)
    if not measured:
        return "not measured"
    return "met" if not missed else "missed" if missed == len(measured) else "in part"


def sorted_by_case(goals_):
    """Stable: the goals of a case and peer together, where the first of them is."""
    goals_ = list(goals_)
    places = {}
    for goal in goals_:
        places.setdefault(goal.case, len(places))
    peers = {}
    for goal in goals_:
        peers.setdefault((goal.case, goal.peer), len(peers))
    return sorted(goals_, key=lambda goal: (places[goal.case], peers[goal.case, goal.peer], goal.n))


def count(results):
    found = list(results.goals())
    met = sum(goal.is_met() for goal in found)
    absent = sum(goal.value is None for goal in found)
    near = sum(goal.is_near() for goal in found)
    text = (f"Of {len(found)} goals, {met} are met, {len(found) - met - absent} missed and "
            f"{absent} not measured. {near} of the verdicts are within the noise (`~`).")
    return textwrap.fill(text, 100) + "\n"


def ratios(results):
    """A table for all cases with the same series."""
    groups = {}
    for (case, n), row in results.rows.items():
        if "ours" in row:
            groups.setdefault(tuple(sorted(row.keys() - {"ours"}, key=list(row).index)), []).append(
                (case, n, row["ours"]))
    for others, rows in groups.items():
        yield [["case", "n", "ours", "±"] + [f"/ {each}" for each in others]] + [
            [f"`{case}`", number(n), time_of(ours), f"{ours.spread() * 100:.0f} %"] +
            [figure(results.ratio(case, n, each)) for each in others] for case, n, ours in rows]


def growth(results):
    """Time for each item of a million, compared with a tenth; floors are not judged."""
    yield ["case", "ours", "nlohmann", ""]
    for (case, n), row in results.rows.items():
        tenth = results.rows.get((case, n // 10), {})
        if n != 1_000_000 or not all({"ours", "nlohmann"} <= each.keys() for each in (row, tenth)):
            continue
        ours, peer = (row[each].time / tenth[each].time for each in ("ours", "nlohmann"))
        met = round(ours, 2) <= max(LARGEST_GROWTH, round(peer, 2))
        yield [f"`{case}`", figure(ours), figure(peer), "met" if met else "missed"]


def threads(results):
    """How many times as many values all threads process as one."""
    yield ["case", "threads", "series", "ns for each value", "times one thread"]
    for (case, n), row in results.rows.items():
        one = results.rows.get((case, 1), {})
        if not case.startswith("threads_") or n == 1:
            continue
        for series, result in row.items():
            if series in one:
                yield [f"`{case}`", n, series, figure(result.time),
                       figure(one[series].time / result.time)]


def single(results, alone):
    """The ratios of a process with one thread beside those of a threaded one."""
    yield ["case", "n", "divided by", "one thread", "threaded"]
    for (case, n), row in alone.rows.items():
        for series in row:
            if series != "ours":
                yield [f"`{case}`", number(n), series, figure(alone.ratio(case, n, series)),
                       figure(results.ratio(case, n, series))]


def memory(results):
    """The peak memory of processes; for small documents it would be that of their parent."""
    yield ["case", "document", "posutil", "for each byte of it", "jq"]
    for (case, _), row in results.rows.items():
        if all("peak_bytes" in row.get(series, NO_RESULT).counters for series in ("ours", "jq")):
            if row["ours"].counters["document_bytes"] < LEAST_DOCUMENT:
                continue
            ours, jq = row["ours"].counters, row["jq"].counters
            yield [f"`{case}`", megabytes(ours["document_bytes"]), megabytes(ours["peak_bytes"]),
                   f"{ours['peak_bytes'] / ours['document_bytes']:.1f} B",
                   megabytes(jq["peak_bytes"])]


class NO_RESULT:  # pylint: disable=invalid-name,too-few-public-methods
    """In place of a series that was not measured."""
    counters = {}


def megabytes(size):
    return f"{size / 1e6:.1f} MB"


def missing(results):
    """What could not be measured, and why."""
    lines = {f"`{case}` for {number(n)}: {reason}" for case, n, _, reason in results.missing}
    text = f"Not measured: {', '.join(sorted(lines))}."
    return textwrap.fill(text, 100, break_on_hyphens=False) + "\n" if lines else ""


def slopes(path):
    """The case, its figures for the three largest documents, and the slope."""
    for line in path.read_text(encoding="utf-8").splitlines() if path and path.is_file() else ():
        cells = [cell.strip() for cell in line.strip("| ").split("|")]
        if not line.startswith("|-"):
            yield cells[:1] + cells[-4:]


def profiles(path):
    """A row for each case and n that bench_profiles.py profiled."""
    yield ["case", "n", "share of the samples"]
    for row in json.loads(path.read_text(encoding="utf-8")) if path and path.is_file() else ():
        shares = ", ".join(f"{share} {name}" for name, share in row["shares"])
        yield [f"`{row['case']}`", number(row["n"]), shares]


def blocks(results, alone, slopes_file, profiles_file):
    """The text of each block by its name. A table without rows is left out."""
    def optional(rows):
        rows = list(rows)
        return table(rows) if len(rows) > 1 else ""
    yield "machine", machine(results)
    yield "goals", "\n".join(filter(None, (count(results), optional(goals(results)))))
    yield "growth", optional(growth(results))
    yield "threads", "\n".join(filter(None, (optional(threads(results)), missing(results))))
    yield "slopes", optional(slopes(slopes_file))
    yield "single", optional(single(results, alone))
    yield "memory", optional(memory(results))
    yield "profiles", optional(profiles(profiles_file))
    yield "ratios", "\n".join(table(rows) for rows in ratios(results))


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--page", type=pathlib.Path)
    parser.add_argument("--slopes", type=pathlib.Path)
    parser.add_argument("--profiles", type=pathlib.Path)
    parser.add_argument("results", nargs="+", type=pathlib.Path)
    arguments = parser.parse_args()
    is_single = lambda path: path.parent.name == "single"
    results = Results([path for path in arguments.results if not is_single(path)])
    alone = Results([path for path in arguments.results if is_single(path)])
    texts = dict(blocks(results, alone, arguments.slopes, arguments.profiles))
    if not arguments.page:
        print("\n".join(text for text in texts.values() if text))
        return
    page = arguments.page.read_text(encoding="utf-8")
    page = BLOCK.sub(lambda match: match[1] + "\n" + texts[match[2]] + "\n" + match[3], page)
    arguments.page.write_text(page, encoding="utf-8")


if __name__ == "__main__":
    main()
