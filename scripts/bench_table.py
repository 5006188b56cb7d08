"""Prints tables of ratios from the JSON output of Google Benchmark programs.

Benchmarks are named <case>/<series>[/n...]; the series "ours" is divided by every other series of the same case and n,
by medians of the repetitions (with --min before the files, by the fastest). Times are per item where both sides say how
many items they processed. A series with a counter "target" says how large its ratio may be: "<=" or ">" is put before it.
"""
import json
import re
import statistics
import sys

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
# What the benchmark library itself appends to a name.
MODIFIER = re.compile(r"(iterations|repeats|min_time|min_warmup_time|threads):.*|process_time|real_time|manual_time")
LARGEST_GROWTH = 1.3


class Result:
    """One benchmark: the time of its repetitions, summed up."""

    def __init__(self, runs, summary):
        run = runs[0]
        clock = "real_time" if re.search("/(real|manual)_time", run["run_name"]) else "cpu_time"
        self.per_call = summary(run[clock] * NANOSECONDS[run["time_unit"]] for run in runs)
        has_items = all("items_per_second" in run for run in runs)
        self.per_item = summary(1e9 / run["items_per_second"] for run in runs) if has_items else None
        self.target = run.get("target")


def split_name(name):
    """(case, n, series) of a benchmark's name; n is "" or its numbers."""
    parts = [part for part in name.split("/") if not MODIFIER.fullmatch(part)]
    numbers = []
    while parts and re.fullmatch(r"(\w+:)?\d+", parts[-1]):
        numbers.insert(0, parts.pop())
    if len(parts) < 2:
        sys.exit(f"{name}: not of the form <case>/<series>[/n]")
    return "/".join(parts[:-1]), "/".join(numbers), parts[-1]


def read(paths, summary):
    """The results by series, for each (case, n), in the order in which the programs declare them."""
    families = {}
    for path in paths:
        with open(path, encoding="utf-8") as file:
            runs = json.load(file)["benchmarks"]
        program = path.split("/")[-1].split(".")[0]
        for run in runs:
            if run.get("error_occurred"):
                sys.exit(f"{path}: {run['name']}: {run.get('error_message', 'failed')}")
            if run["run_type"] == "iteration":
                place = (program, run["family_index"], run["per_family_instance_index"], run["run_name"])
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
    """The cells of the table of ratios, its heading first."""
    yield ["case", "n", "ours ns", "ours divided by"]
    for (case, n), row in rows.items():
        ours = row.get("ours")
        if ours is None:
            sys.exit(f"{case}/{n}: there is no series \"ours\"")
        time = f"{ours.per_item:.1f}/item" if ours.per_item else f"{ours.per_call:.1f}"
        others = [f"{series} {judged(ratio(ours, result), result.target)}"
                  for series, result in row.items() if series != "ours"]
        yield [case, n, time, ", ".join(others)]


def growth(rows):
    """The cells of the table of time per item, n against a tenth of n, for cases measured at sizes this large."""
    yield ["case", "n", "growth per item when n grows tenfold"]
    for (case, n), row in rows.items():
        if not n.isdigit() or int(n) < 1_000_000:
            continue
        tenth = rows.get((case, str(int(n) // 10)))
        if tenth is None:
            continue
        grown = {series: ratio(result, tenth[series]) for series, result in row.items() if series in tenth}
        limit = max([LARGEST_GROWTH] + [value for series, value in grown.items() if series != "ours"])
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
