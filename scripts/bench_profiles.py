# SPDX-License-Identifier: MIT
"""bench_profiles.py BIN OUTPUT RESULT.json...: profiles our side of every case that missed a goal.

Runs each case alone under `perf record -e cpu-clock` and writes the functions with the largest
shares of the samples to OUTPUT. A profile of time, unlike one of instructions, shows waiting for
memory. What makes the documents of a benchmark is left out, as far as it can be told by its name.
"""
import collections
import json
import pathlib
import re
import subprocess
import sys
import tempfile

import bench_posutil
from bench_results import Results

SECONDS = 1
STARTS = 100
LEAST_SHARE = 0.05
MOST_FUNCTIONS = 6
SETUP = re.compile(r"nlohmann|mersenne|Bench::\(anonymous namespace\)::(Maker|Write\()")
SAMPLE = re.compile(r"\s*[0-9a-f]+ (.*) \((.*)\)$")
PROCEDURE = re.compile(r"&(?:\w+::)*(?:\(anonymous namespace\)::)?(\w+)>::Call")


def short(symbol):
    """A function without its namespaces and template arguments. A procedure of the host is named
    after the function that its guard calls."""
    procedure = PROCEDURE.search(symbol)
    if procedure:
        return procedure[1]
    symbol = symbol.replace("(anonymous namespace)::", "")
    while re.search("<[^<>]*>", symbol):
        symbol = re.sub("<[^<>]*>", "", symbol)
    return re.sub(r"^(KAPHost|KAP_T_MT|NPOSObjectImpl|Bench|std)::", "", symbol)


def place(symbol, module):
    if "kernel" in module or module.endswith(".ko") or module == "[vdso]":
        return "the system"
    if "/ld-linux" in module:
        return "the dynamic linker"
    return f"`{short(symbol)}`"


def profile(command, name):
    """Pairs of a share and a function or group of functions, for the process of that name."""
    with tempfile.TemporaryDirectory() as folder:
        data = f"{folder}/perf.data"
        subprocess.run(["perf", "record", "-q", "-F", "2000", "-e", "cpu-clock", "-o", data, "--",
                        *command], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        samples = subprocess.run(["perf", "script", "-i", data, "--comms", name[:15],
                                  "-F", "ip,sym,dso"], check=True, capture_output=True, text=True)
    counts = collections.Counter()
    for line in samples.stdout.splitlines():
        match = SAMPLE.match(line)
        if match and not SETUP.search(match[1]):
            counts[place(match[1], match[2])] += 1
    return [(f"{count * 100 / counts.total():.0f} %", where)
            for where, count in counts.most_common(MOST_FUNCTIONS)
            if count >= LEAST_SHARE * counts.total()]


def commands(folder, results, documents):
    """The case, n, program and command of each case that missed a goal. A case of several threads
    is left out: its process runs the peers, too."""
    missed = dict.fromkeys((goal.case, goal.n) for goal in results.goals()
                           if goal.value is not None and not goal.is_met())
    for case, n in missed:
        program = results.programs[case]
        if case == "start":
            yield case, n, "posutil", ["sh", "-c", f"for i in $(seq {STARTS}); do "
                                       f"{folder}/posutil version; done"]
        elif case in documents:
            yield case, n, "posutil", [f"{folder}/posutil", "print", "--to", "json",
                                       documents[case]]
        elif program != "bench_threads":
            tail = f"/{n}" if n else ""
            yield case, n, program, [f"{folder}/{program}", f"--benchmark_min_time={SECONDS}",
                                     f"--benchmark_filter=^{case}/ours{tail}$"]


def main():
    folder, output = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    results = Results(list(map(pathlib.Path, sys.argv[3:])))
    with tempfile.TemporaryDirectory() as temporary:
        documents = bench_posutil.documents(pathlib.Path(temporary))
        rows = [{"case": case, "n": n, "shares": profile(command, program)}
                for case, n, program, command in commands(folder, results, documents)]
    output.write_text(json.dumps(rows), encoding="utf-8")


if __name__ == "__main__":
    main()
