# SPDX-License-Identifier: MIT
"""Reads the JSON output of Google Benchmark programs.

Benchmarks are named <case>/<series>[/n...]; n is a number of values, keys, bytes or threads. Times
are wall times, medians of the repetitions, per item if the benchmark counts items. A series with a
counter "target" is the largest acceptable ratio of the time of "ours" to its own; "target_ms" on
"ours" is the largest acceptable time. A repetition with a counter "no_core" above 0 does not count.
"""
import json
import re
import statistics
import sys

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
# Parts of a name that the benchmark library appends.
MODIFIER = re.compile(
    r"(iterations|repeats|min_time|min_warmup_time|threads):.*|process_time|real_time|manual_time")


# The programs in the order of the page; others follow.
PROGRAMS = ("bench_text", "bench_threads", "bench_stream", "bench_dict", "bench_clone",
            "bench_scalars", "bench_validate", "posutil", "bench_path", "bench_tempfile")


class Result:
    """One series of a case, over all of its repetitions."""

    def __init__(self, runs):
        self.counters = runs[0]
        self.has_items = all("items_per_second" in each for each in runs)
        times = [wall_time(each) for each in runs]
        self.time = statistics.median(times)
        self.repetitions = len(times)
        # The quartiles. Those of one time are that time.
        self.low, _, self.high = statistics.quantiles(times * (1 + (len(times) == 1)),
                                                      method="inclusive")

    def spread(self):
        """Half the distance of the quartiles, relative to the median."""
        return (self.high - self.low) / 2 / self.time


def wall_time(run):
    """In ns, of an item if the benchmark counts items."""
    time = run["real_time"] * NANOSECONDS[run["time_unit"]]
    if "items_per_second" not in run:
        return time
    # The library divides by the processor time, unless the benchmark chooses its clock.
    is_wall = re.search("/(real|manual)_time", run["run_name"])
    divisor = run["real_time" if is_wall else "cpu_time"] * NANOSECONDS[run["time_unit"]] / 1e9
    return time / (run["items_per_second"] * divisor)


class Goal:
    """The ratio of our time to a peer's, or a time in ms, that was to be reached. The value, and
    the least and the most of it within the quartiles, are None if it was not measured."""

    def __init__(self, case, n, peer, limit, value, low, high):
        self.case, self.n, self.peer, self.limit = case, n, peer, limit
        self.value, self.low, self.high = value, low, high

    def is_met(self):
        return self.value is not None and round(self.value, 2) <= self.limit

    def is_near(self):
        """Whether the noise may have decided the verdict."""
        return self.value is not None and self.low <= self.limit < self.high


class Results:
    """What all programs measured; `paths` are pathlib paths."""

    def __init__(self, paths):
        self.rows = {}  # (case, n): {series: Result}
        self.missing = []  # (case, n, series, reason)
        self.missing_goals = []  # without a value
        self.programs = {}  # case: the program
        self.loads = []  # the load average at the start of each program
        families = {}
        for path in sorted(paths, key=lambda path: program_place(program_of(path))):
            program = program_of(path)
            with open(path, encoding="utf-8") as file:
                text = file.read()
            if not text:  # the filter matched no benchmark of the program
                continue
            content = json.loads(text)
            self.loads += content.get("context", {}).get("load_avg", [])[:1]
            for run in content["benchmarks"]:
                self.programs[split_name(run["run_name"])[0]] = program
                place = (program_place(program), run["family_index"],
                         run["per_family_instance_index"], run["run_name"])
                if run["run_type"] == "iteration":
                    families.setdefault(place, []).append(run)
        for _, runs in sorted(families.items()):
            self._add(runs)
        cases = list(dict.fromkeys(case for case, _ in self.rows))
        self.rows = dict(sorted(self.rows.items(), key=lambda row: (cases.index(row[0][0]),
                                                                    row[0][1])))

    def _add(self, runs):
        case, n, series = split_name(runs[0]["run_name"])
        succeeded = [run for run in runs
                     if not run.get("error_occurred") and not run.get("no_core")]
        if succeeded:
            self.rows.setdefault((case, n), {})[series] = Result(succeeded)
            return
        self.missing.append((case, n, series,
                             runs[0].get("error_message", "no core for each thread")))
        if "target" in runs[0]:
            self.missing_goals.append(Goal(case, n, series, runs[0]["target"], None, None, None))

    def ratio(self, case, n, series):
        """Our time divided by that of the series, or None."""
        row = self.rows.get((case, n), {})
        if "ours" not in row or series not in row:
            return None
        return row["ours"].time / row[series].time

    def repetitions(self):
        """The least and the most of a series."""
        counts = [result.repetitions for row in self.rows.values() for result in row.values()]
        return (min(counts), max(counts)) if counts else (0, 0)

    def goals(self):
        """All goals, in the order of the rows; those that were not measured last."""
        for (case, n), row in self.rows.items():
            ours = row.get("ours")
            for series, result in row.items():
                if series == "ours" and "target_ms" in result.counters:
                    yield Goal(case, n, "", result.counters["target_ms"],
                               *(time / 1e6 for time in (ours.time, ours.low, ours.high)))
                elif "target" in result.counters and ours:
                    yield Goal(case, n, series, result.counters["target"],
                               self.ratio(case, n, series), ours.low / result.high,
                               ours.high / result.low)
        yield from self.missing_goals


def program_of(path):
    """A program may have several files: <program>.json, <program>.<part>.json."""
    return path.stem.partition(".")[0]


def program_place(name):
    """A key for sorting."""
    return (PROGRAMS.index(name) if name in PROGRAMS else len(PROGRAMS), name)


def split_name(name):
    """Splits a name into (case, n, series); n is a number, or 0 if there is none."""
    parts = [part for part in name.split("/") if not MODIFIER.fullmatch(part)]
    n = int(parts.pop()) if parts[-1].isdigit() else 0
    if len(parts) != 2:
        sys.exit(f"{name}: not of the form <case>/<series>[/n]")
    return parts[0], n, parts[1]
