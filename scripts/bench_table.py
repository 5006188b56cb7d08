"""Prints tables of ratios from the JSON output of Google Benchmark programs.

Benchmarks are named <case>/<series>[/n...]. A ratio is the time of the series "ours" divided by the
time of another series of the same case and n. Times are medians of the repetitions, or with --min
before the files the fastest repetition. They are per item if both series have a number of items.
A series with a counter "target" limits its ratio; the table shows the limit after "<=" or ">".
"""
import json
import re
import statistics
import sys

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
# Parts of a name that the benchmark library appends.
MODIFIER = re.compile(
    r"(iterations|repeats|min_time|min_warmup_time|threads):.*|process_time|real_time|manual_time")
LARGEST_GROWTH = 1.3


class Result:
    """The time of one benchmark, over all of its repetitions."""

    def __init__(self, runs, summary):
        run = runs[0]
        clock = "real_time" if re.search("/(real|manual)_time", run["run_name"]) else "cpu_time"
        self.per_call = summary(run[clock] * NANOSECONDS[run["time_unit"]] for run in runs)
        has_items = all("items_per_second" in run for run in runs)
        self.per_item = None
        if has_items:
            self.per_item = summary(1e9 / run["items_per_second"] for run in runs)
        self.target = run.get("target")


def split_name(name):
    """Splits a name into (case, n, series); n is "" or the numbers at the end."""
    parts = [part for part in name.split("/") if not MODIFIER.fullmatch(part)]
    numbers = []
    while parts and re.fullmatch(r"(\w+:)?\d+", parts[-1]):
        numbers.insert(0, parts.pop())
    if len(parts) < 2:
        sys.exit(f"{name}: not of the form <case>/<series>[/n]")
    return "/".join(parts[:-1]), "/".join(numbers), parts[-1]


def read(paths, summary):
    """Returns the results by series, for each (case, n), in the order of the programs."""
    families = {}
    for path in paths:
        with open(path, encoding="utf-8") as file:
            runs = json.load(file)["benchmarks"]
        program = path.split("/")[-1].split(".")[0]
        for run in runs:
            if run.get("error_occurred"):
                sys.exit(f"{path}: {run['name']}: {run.get('error_message', 'failed')}")
            if run["run_type"] == "iteration":
                place = (program, run["family_index"], run["per_family_instance_index"],
                         run["run_name"])
                families.setdefault(place, []).append(run)
    rows = {}
    for _, runs in sorted(families.items()):
        case, n, series = split_name(runs[0]["run_name"])
        rows.setdefault((case, n), {})[series] = Result(runs, summary)
    return rows


def ratio(ours, other):
    if ours.per_item and other.per_item:
        return ours.per_item / other.per_item
    return ours.per_call / other.per_call


def judged(value, target):
    if not target:
        return f"{value:.2f}"
    return f"{value:.2f} {'<=' if value <= target else '>'} {target:g}"


def ratios(rows):
    """Yields the rows of the table of ratios, starting with the heading."""
    yield ["case", "n", "ours ns", "ours divided by"]
    for (case, n), row in rows.items():
        ours = row.get("ours")
        if ours is None:
            sys.exit(f"{case}/{n}: no series \"ours\"")
        time = f"{ours.per_item:.1f}/item" if ours.per_item else f"{ours.per_call:.1f}"
        others = [f"{series} {judged(ratio(ours, result), result.target)}"
                  for series, result in row.items() if series != "ours"]
        yield [case, n, time, ", ".join(others)]


def growth(rows):
    """Yields the rows of the table of time per item, n compared with n / 10, for large n."""
    yield ["case", "n", "growth per item when n grows tenfold"]
    for (case, n), row in rows.items():
        if not n.isdigit() or int(n) < 1_000_000:
            continue
        tenth = rows.get((case, str(int(n) // 10)))
        if tenth is None:
            continue
        grown = {series: ratio(result, tenth[series])
                 for series, result in row.items() if series in tenth}
        peers = [value for series, value in grown.items() if series != "ours"]
        limit = max([LARGEST_GROWTH] + peers)
        cells = [f"{series} {judged(value, round(limit, 2) if series == 'ours' else None)}"
                 for series, value in grown.items()]
        yield [case, n, ", ".join(cells)]


def show(cells):
    cells = list(cells)
    if len(cells) < 2:
        return
    widths = [max(len(row[column]) for row in cells) for column in range(len(cells[0]))]
    cells.insert(1, ["-" * width for width in widths])
    print()
    for row in cells:
        print("| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |")


def main():
    paths = sys.argv[1:]
    summary = statistics.median
    if paths and paths[0] == "--min":
        paths = paths[1:]
        summary = min
    rows = read(paths, summary)
    if not rows:
        sys.exit("no results")
    show(ratios(rows))
    show(growth(rows))


if __name__ == "__main__":
    main()
