"""Prints a table of ratios from the JSON output of Google Benchmark programs.

Benchmarks are named <case>/<series>[/n...]; the series "ours" is divided by every other series of the same case and n,
by medians of the repetitions. Times are per item where both sides say how many items they processed.
"""
import json
import re
import sys

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
# What the benchmark library itself appends to a name.
MODIFIER = re.compile(r"(iterations|repeats|min_time|min_warmup_time|threads):.*|process_time|real_time|manual_time")


class Median:
    """The median of one benchmark's repetitions."""

    def __init__(self, run):
        time = run["real_time" if re.search("/(real|manual)_time", run["run_name"]) else "cpu_time"]
        self.per_call = time * NANOSECONDS[run["time_unit"]]
        items = run.get("items_per_second")
        self.per_item = 1e9 / items if items else None


def split_name(name):
    """(case, n, series) of a benchmark's name; n is "" or its numbers."""
    parts = [part for part in name.split("/") if not MODIFIER.fullmatch(part)]
    numbers = []
    while parts and re.fullmatch(r"(\w+:)?\d+", parts[-1]):
        numbers.insert(0, parts.pop())
    if len(parts) < 2:
        sys.exit(f"{name}: not of the form <case>/<series>[/n]")
    return "/".join(parts[:-1]), "/".join(numbers), parts[-1]


def read(paths):
    """The medians by series, for each (case, n) in the order of the files."""
    rows = {}
    for path in paths:
        with open(path, encoding="utf-8") as file:
            runs = json.load(file)["benchmarks"]
        for run in runs:
            if run.get("error_occurred"):
                sys.exit(f"{path}: {run['name']}: {run.get('error_message', 'failed')}")
            if run.get("aggregate_name") == "median":
                case, n, series = split_name(run["run_name"])
                rows.setdefault((case, n), {})[series] = Median(run)
    return rows


def ratio(ours, other):
    if ours.per_item and other.per_item:
        return ours.per_item / other.per_item
    return ours.per_call / other.per_call


def table(rows):
    """The cells of the table, its heading first."""
    others = list(dict.fromkeys(series for row in rows.values() for series in row if series != "ours"))
    others.sort(key=lambda series: series == "floor")
    yield ["case", "n", "ours ns"] + [f"ours/{series}" for series in others]
    for (case, n), row in rows.items():
        ours = row.get("ours")
        if ours is None:
            sys.exit(f"{case}/{n}: there is no series \"ours\"")
        time = f"{ours.per_item:.1f}/item" if ours.per_item else f"{ours.per_call:.1f}"
        yield [case, n, time] + [f"{ratio(ours, row[series]):.2f}" if series in row else "" for series in others]


def main():
    cells = list(table(read(sys.argv[1:])))
    if len(cells) < 2:
        sys.exit("no medians: run with --benchmark_repetitions of 2 or more")
    widths = [max(len(row[column]) for row in cells) for column in range(len(cells[0]))]
    cells.insert(1, ["-" * width for width in widths])
    for row in cells:
        print("| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |")


if __name__ == "__main__":
    main()
