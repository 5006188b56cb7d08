# SPDX-License-Identifier: MIT
"""bench_posutil.py BIN REPETITIONS OUTPUT: measures posutil and jq as whole processes, by turns.

Writes the wall times to OUTPUT as a Google Benchmark program does, with the peak memory of the
process and the size of the document as counters.
"""
import json
import multiprocessing
import os
import pathlib
import random
import subprocess
import sys
import tempfile
import time

VALIDATION_RULES = "/usr/share/vulkan/registry/validusage.json"
LANGUAGES = "/usr/share/iso-codes/json/iso_639-3.json"
INTEGERS = 1_000_000
RECORDS = 100_000
TARGET = 0.2  # five times as fast as jq
START_TARGET_MS = 2.5


def integers(chance):
    return [chance.randrange(1_000_000_000) for _ in range(INTEGERS)]


def records(chance):
    words = ["".join(chance.choices("abcdefghijklmnopqrstuvwxyz", k=chance.randint(4, 12)))
             for _ in range(1000)]
    return [{"id": i, "name": f"{chance.choice(words)}{i}", "category": chance.choice(words),
             "tags": chance.choices(words, k=chance.randint(1, 3)),
             "price": round(chance.uniform(0, 1e6), 6),
             "position": {"x": round(chance.uniform(0, 1e3), 6), "y": chance.randrange(1000)}}
            for i in range(RECORDS)]


def write_documents(integers_path, records_path):
    chance = random.Random(1)
    for path, make in ((integers_path, integers), (records_path, records)):
        path.write_text(json.dumps(make(chance), separators=(",", ":")), encoding="ascii")


def documents(place):
    """The document of each case; those that are made are in the folder `place`."""
    made = {"print_integers": place / "integers.json", "print_records": place / "records.json"}
    # In a process of its own: the peak memory of a command includes that of the process that
    # starts it.
    maker = multiprocessing.Process(target=write_documents, args=[*made.values()])
    maker.start()
    maker.join()
    return made | {"print_validusage": pathlib.Path(VALIDATION_RULES),
                   "print_languages": pathlib.Path(LANGUAGES)}


def run(command):
    """The wall time in ns and the peak memory in bytes."""
    start = time.perf_counter_ns()
    with subprocess.Popen(command, stdout=subprocess.DEVNULL) as process:
        _, status, usage = os.wait4(process.pid, 0)
        elapsed = time.perf_counter_ns() - start
        process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))}: status {process.returncode}")
    return elapsed, usage.ru_maxrss * 1024


def main():
    folder, repetitions, output = pathlib.Path(sys.argv[1]), int(sys.argv[2]), sys.argv[3]
    posutil = folder / "posutil"
    with tempfile.TemporaryDirectory() as temporary:
        commands = {"start/ours": ([posutil, "version"], {"target_ms": START_TARGET_MS})}
        for case, document in documents(pathlib.Path(temporary)).items():
            size = {"document_bytes": document.stat().st_size}
            target = {"target": TARGET} if case != "print_languages" else {}
            commands[f"{case}/ours"] = ([posutil, "print", "--to", "json", document], size)
            commands[f"{case}/jq"] = (["jq", ".", document], size | target)
        runs = []
        for repetition in range(repetitions + 1):  # the first one fills the caches
            for family, (name, (command, counters)) in enumerate(commands.items()):
                elapsed, peak = run(command)
                if repetition > 0:
                    runs.append({"name": name, "run_name": f"{name}/real_time",
                                 "run_type": "iteration", "family_index": family,
                                 "per_family_instance_index": 0, "real_time": elapsed,
                                 "time_unit": "ns", "peak_bytes": peak, **counters})
    pathlib.Path(output).write_text(json.dumps({"benchmarks": runs}), encoding="utf-8")


if __name__ == "__main__":
    main()
