# SPDX-License-Identifier: MIT
"""Reads the JSON output of Google Benchmark programs.

Benchmarks are named <case>/<series>[/n...]; n is a number of values, keys or threads. Times are
medians of the repetitions, per item if the benchmark counts items. A series with a counter "target"
is the largest acceptable ratio of the time of "ours" to its own; "target_ms" on "ours" is the
largest acceptable time.
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
        run = runs[0]
        self.counters = run
        clock = "real_time" if re.search("/(real|manual)_time", run["run_name"]) else "cpu_time"
        self.time = statistics.median(each[clock] * NANOSECONDS[each["time_unit"]] for each in runs)
        self.has_items = all("items_per_second" in each for each in runs)
        if self.has_items:
            self.time = statistics.median(1e9 / each["items_per_second"] for each in runs)


class Goal:
    """The ratio of our time to a peer's, or a time in ms, that was to be reached."""

    def __init__(self, case, n, peer, limit, value):
        self.case, self.n, self.peer, self.limit, self.value = case, n, peer, limit, value

    def is_met(self):
        return round(self.value, 2) <= self.limit


class Results:
    """What all programs measured; `paths` are pathlib paths."""

    def __init__(self, paths):
        self.rows = {}  # (case, n): {series: Result}
        self.missing = []  # (case, n, series, reason)
        self.loads = []  # the load average at the start of each program
        families = {}
        for path in sorted(paths, key=lambda path: program_place(path.stem)):
            with open(path, encoding="utf-8") as file:
                text = file.read()
            if not text:  # the filter matched no benchmark of the program
                continue
            content = json.loads(text)
            self.loads += content.get("context", {}).get("load_avg", [])[:1]
            for run in content["benchmarks"]:
                place = (program_place(path.stem), run["family_index"],
                         run["per_family_instance_index"], run["run_name"])
                if run["run_type"] == "iteration":
                    families.setdefault(place, []).append(run)
        for _, runs in sorted(families.items()):
            self._add(runs)

    def _add(self, runs):
        case, n, series = split_name(runs[0]["run_name"])
        succeeded = [run for run in runs if not run.get("error_occurred")]
        if succeeded:
            self.rows.setdefault((case, n), {})[series] = Result(succeeded)
        else:
            self.missing.append((case, n, series, runs[0].get("error_message", "failed")))

    def ratio(self, case, n, series):
        """Our time divided by that of the series, or None."""
        row = self.rows.get((case, n), {})
        if "ours" not in row or series not in row:
            return None
        return row["ours"].time / row[series].time

    def goals(self):
        """All goals that were measured, in the order of the rows."""
        for (case, n), row in self.rows.items():
            for series, result in row.items():
                if series == "ours" and "target_ms" in result.counters:
                    yield Goal(case, n, "", result.counters["target_ms"], result.time / 1e6)
                elif "target" in result.counters and "ours" in row:
                    yield Goal(case, n, series, result.counters["target"],
                               self.ratio(case, n, series))


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
