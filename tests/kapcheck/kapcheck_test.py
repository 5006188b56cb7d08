#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""kapcheck_test KAPCHECK FOLDER LIBRARY: what kapcheck says about components and hosts. FOLDER has
the small components, scenarios and hosts of this folder; LIBRARY is libKAPUtils.so.
"""
import concurrent.futures
import contextlib
import json
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import unittest.mock

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))
import interfaces  # noqa: E402, pylint: disable=wrong-import-position

KAPCHECK, FOLDER, LIBRARY = "kapcheck", pathlib.Path("."), pathlib.Path("libKAPUtils.so")
# A sanitizer exports symbols of its own, and makes some crashes into exits.
IS_SANITIZED = "ASAN_OPTIONS" in os.environ

AFTER_LOAD = {"initialise", "output", "cycles", "initialise-twice", "terminate-twice", "leaks",
              "registrations", "dead-handles", "after-termination", "exit", "exceptions",
              "missing-interfaces", "missing-procedures", "process-state", "refused-calls",
              "refused-registrations", "counter", "threads", "scenario", "refused-scenario"}
AFTER_INITIALISE = AFTER_LOAD - {"initialise"}
DECLARED = {"random-calls", "concurrent-calls", "late-calls"}

ABORTED = "crashes: Aborted; step: "

# The component, the tests that fail, words of each reason and step, and the tests that cannot run.
COMPONENTS = [
    ("good", {}, set()),
    ("no_version", {"exports": "does not export no_versionGetVersion",
                    "load": "does not export no_versionGetVersion"}, AFTER_LOAD),
    ("extra_export", {"exports": "also exports HelperOfTheComponent"}, set()),
    ("crash_at_load", {"load": "crashes: Aborted"}, AFTER_LOAD),
    ("stay_loaded", {"load": "stays in memory after dlclose"}, AFTER_LOAD),
    ("exit_at_start", {"initialise": "ends the process with status 0"}, AFTER_INITIALISE),
    ("hang_at_start", {"initialise": "does not end within 10 seconds"}, AFTER_INITIALISE),
    ("fail_at_start", {"initialise": "fails; it reports: no licence"}, AFTER_INITIALISE),
    ("start_once", {"initialise": "Initialize fails after a termination"}, AFTER_INITIALISE),
    ("print", {"output": 'standard output in the test initialise-twice: "hello'}, set()),
    ("pin_at_start", {"cycles": "dlclose when it was initialised and terminated"}, set()),
    ("leak_at_second_start", {"initialise-twice": 'two initialisations: atom "forgotten": 1'},
     set()),
    ("leak_at_second_stop", {"terminate-twice": "the second termination releases or takes"},
     set()),
    ("leak_atom", {"leaks": 'holds after its termination: atom "forgotten": 1'}, set()),
    ("stay_registered", {"registrations": "after its termination: LeftInterface, Answer"}, set()),
    ("release_twice", {"initialise": "ends the process with status 1"} if IS_SANITIZED else
     {"dead-handles": "used by librelease_twice.so in KAPStringInterface.DeleteStringAtom",
      "leaks": 'atom "forgotten": 1'}, set()),
    ("release_twice_on_failure",
     {"refused-scenario": "(KAPStringInterface, NewStringAtom): release of a dead atom"}, set()),
    ("call_at_unload", {"after-termination": "calls the host after its termination: "}, set()),
    ("call_at_exit", {"exit": "calls the host while the process exits: "}, set()),
    ("throw_without_host", {"exceptions": "leaves throw_without_hostInitialize: no callback"},
     set()),
    ("need_cache", {"missing-interfaces": ABORTED + "initialises without KAPCacheInterface",
                    "missing-procedures": ABORTED + "initialises without KAPCacheInterface, "
                    "GetCacheTime",
                    "refused-calls": ABORTED + "initialises with look-up 3 failing"}, set()),
    ("need_procedure", {"missing-procedures": ABORTED + "runs the scenario without "
                        "KAPCacheInterface, GetCacheTime",
                        "refused-scenario": ABORTED + "runs the scenario with look-up 3 failing"},
     set()),
    ("need_memory", {"refused-calls": ABORTED + "initialises with host call 2 failing"}, set()),
    ("leak_on_failure", {"refused-calls": "failing (KAPStringInterface, NewStringAtom): atom"},
     set()),
    ("start_unregistered", {"refused-registrations": "cannot register OtherInterface, Answer"},
     set()),
    ("keep_address", {"counter": "no longer registered: KAPStringInterface, AddRef"}, set()),
    ("leave_thread", {"threads": "leaves threads running after its termination: 1"}, set()),
    ("leave_process", {"threads": "leaves processes running after its termination: 1"}, set()),
    ("leave_file_open", {"process-state": 'nothing became "/dev/null"'}, set()),
    ("close_files", {"initialise": "closes descriptors that are not its own"}, AFTER_INITIALISE),
    ("wrong_answer", {"scenario": "the scenario fails in run 1"}, {"refused-scenario"}),
    ("leak_in_use", {"refused-scenario": 'atom "forgotten": 1'}, set()),
    ("throw_in_use", {"refused-scenario": "gets into the scenario: no atom"}, set()),
]

# The same for components whose scenario declares an interface.
DECLARING = [
    ("note", {}, set()),
    ("good", {name: "declares but does not register NoteInterface"
              for name in DECLARED}, set()),
    ("crash_at_null", {name: "crashes: Aborted" for name in DECLARED}, set()),
    ("note_late", {"late-calls": "when it is called after its termination: "}, set()),
    ("error_and_result", {name: "NoteInterface, Make returns both an error and a result"
                          for name in DECLARED}, set()),
    ("leak_at_random", {"random-calls": "holds after random calls: container",
                        "concurrent-calls": "threads: container"}, set()),
]

# The fault of a host, the checks that fail, and words of each reason.
HOSTS = [
    ("no_registration", {"probe": "the host cannot register the probe's procedure"}),
    ("no_replacement", {"binder.register": "finds the procedure that was replaced"}),
    ("still_counter", {"binder.counter": "the counter grows by 0",
                       "threads.counter": "the counter grows by 0"}),
    ("name_kept", {"binder.names": "finds nothing when the caller's name changes"}),
    ("null_registered", {"binder.null": "argument 1 is null, and the procedure is registered"}),
    ("unregisters_all", {"binder.unregister": "another name removes the interface",
                         "binder.counter": "the counter grows by 0",
                         "containers.method": "no longer finds KAPStringInterface, NewStringAtom",
                         "containers.interfaces": "no longer finds KAPStringInterface",
                         **{name: "no longer finds KAP, KAPRegisterProcAddress"
                            for name in ("binder.register", "binder.names", "threads.counter",
                                         "containers.parent-method", "containers.clone",
                                         "containers.clone-of-all")}}),
    ("report_crashes", {"binder.report": "crashes: Aborted"}),
    ("threads_now_and_then", {"binder.threads": "two calls return different results"}),
    ("texts_not_interned", {"atoms.interned": "equal strings have different pointers",
                            "atoms.lives": "the text changes",
                            "atoms.references": "the atom is lost",
                            "errors.atoms": "does not live as long as the error",
                            "containers.signature-word": "is not the signature",
                            "threads.atoms": "different atoms of one string"}),
    ("text_of_null", {"atoms.null-text": "a null atom has a text"}),
    ("atom_of_null", {"atoms.null": "null has an atom"}),
    ("atoms_leak", {"atoms.release": "the process keeps what was given back",
                    "accounting": 'still held after atoms.text: atom "'}),
    ("no_component", {"errors.component": "GetComponent returns null"}),
    ("short_code", {"errors.code": "the code 1099511627776 becomes another one"}),
    ("data_not_freed", {"errors.last-release": "frees the client data 0 times",
                        "errors.null": "outlives one release",
                        "client-streams.delete-fails": "is not released",
                        "threads.errors": "ends the object 0 times"}),
    ("small_blocks", {"memory.size": "a block of 17 bytes has a size of 16"}),
    ("huge_blocks", {"memory.size": "ends the process" if IS_SANITIZED else "crashes"}),
    ("promised_blocks", {"memory.too-large": "Alloc returns a block of 8 EiB"}),
    ("block_changed", {"memory.resize-fails": "the block has other bytes"}),
    ("bytes_lost", {"memory.resize": "a grown block has other bytes"}),
    ("reference_always", {"containers.references": "AddRef of null returns true"}),
    ("references_race", {"threads.containers": "ends the process" if IS_SANITIZED else
                         "the object ends while a reference is left",
                         "accounting": '"KAPProbeImpl": 0 (-1 references)'}),
    ("null_delete_called", {"containers.null-delete": "crashes: Aborted"}),
    ("clone_is_itself", {"containers.clone": "the clone is the container itself"}),
    ("instance_out_of_nothing", {"containers.instance": "GetInstance finds an unknown name"}),
    ("signature_of_nothing", {"containers.no-signature": "an empty container has a signature"}),
    ("error_without_instance", {"containers.no-instance-error": 'the error "unknown'}),
    ("decrement_deletes", {"containers.decrement": "the container is deleted"}),
    ("wrong_offset", {"containers.words": "is not the primary instance",
                      "containers.signature-word": "is not the signature",
                      "containers.empty-word": "of an empty container are not null"}),
    ("writable_buffer", {"streams.read-only": "Write to a read-only stream returns no error"}),
    ("file_out_of_nothing", {"streams.no-file": "of a missing file returns no error",
                             "streams.error-place": "of a missing file returns no error"}),
    ("client_not_deleted", {"client-streams.simple": "deletes the client 0 times",
                            "client-streams.delete-fails": "is not released"}),
    ("short_read_ends", {"client-streams.simple": 'what is read is "012", not "0123"',
                         "client-streams.short-read": "short reads lose bytes"}),
    ("read_too_much", {"streams.read": "more bytes than were requested",
                       "streams.end": "more bytes than were requested",
                       "client-streams.short-read": "more bytes than were requested"}),
    ("read_never_fails", {"streams.wrong-handle": "what is not a stream returns no error",
                          "streams.file": 'with mode "wb" succeeds or fails wrongly',
                          "client-streams.too-much": "and so does the host",
                          "client-streams.errors": "no error although the client does"}),
    ("rewind_ignored", {"streams.memory": "the stream reads other bytes than written",
                        "streams.rewind": "the position is 7",
                        "streams.views": 'is "345", not "012"',
                        "streams.rewindable-views": 'is "345", not "012"',
                        "client-streams.errors": "Rewind returns no error",
                        "client-streams.rewind": "does not reach the client"}),
    ("view_is_copy", {"streams.views": "what is read after a write",
                      "client-streams.errors": "an error and a stream",
                      "client-streams.views": "not asked for a new client"}),
    ("view_is_itself", {"streams.rewindable-views": "moves the position of the first one",
                        "client-streams.errors": "no error although the client does",
                        "client-streams.rewindable-views": "not asked for a new client"}),
    ("seek_from_start", {"streams.seek": "Seek(2, 1) leads to 2, not to 5",
                         "client-streams.positions": "with other arguments"}),
    ("buffer_not_zeroed", {"buffers.zeroed": "a byte is not zero"}),
    ("unowned_releases", {"buffers.owned": "a buffer with a reference is deleted"}),
    ("mark_ignored", {"caches.mark": "with one of two marks left is purged",
                      "caches.mark-steps": "with one of two marks left is purged",
                      "caches.mark-purged": "marks an item that was purged"}),
    ("cost_ignored", {"caches.cost": "UpdateCost does not set the cost"}),
    ("purged_item", {"caches.purged": "Attach returns an item that was purged"}),
    ("set_of_null_crashes", {"caches.set-release": "crashes: Aborted"}),
    ("purge_of_null_crashes", {"caches.purge-null": "crashes: Aborted"}),
    ("purge_not_removed", {"caches.static-added": "is called 2 times",
                           "caches.static-removed": "is called after RemoveClientPurge"}),
    ("purge_crashes", {name: "crashes: Aborted" for name in
                       ("caches.oldest", "caches.purge-ends", "caches.mark-steps",
                        "caches.unmark")}),
    ("time_hangs", {"caches.time": "does not end within 10 seconds"}),
    ("target_ignored", {"filters.retarget": "the old target stays",
                        "filters.ring": "SetDataSink that makes a ring returns no error"}),
    ("chain_always_open", {"filters.chain": "a closed filter further on is not counted",
                           "filters.null-place": "ends the process" if IS_SANITIZED else
                           "crashes: Segmentation fault",
                           "filters.error-place": "GetChainState of a sink returns no error"}),
    ("filter_throws", {"filters.is-filter": "thrown by the host"}),
    ("progress_of_null", {"progress.null-argument": "an argument is null, and the result is not"}),
    ("progress_never_stops", {"progress.stop": "Update of a client that returns an error returns"}),
]

# Procedures that may do nothing, and what notices it besides their own checks.
IDLE = {"KAP, KAPRegisterProcAddress": "probe", "KAP, KAPReportError": None,
        "KAP, KAPIsMultiThreaded": None, "KAPCacheInterface, DeleteCachePurge": "accounting",
        "KAPCacheInterface, DeleteCacheSet": "accounting",
        "KAPSharedBuffInterface, DeleteUnowned": None}
# Checks that no host of the tests fails.
NEVER_FAIL = {"threads.memory"}

# Checks whose sentence is not the method's own: a convention, or one of the interface.
SHARED_SENTENCES = (r".*-place|.*\.wrong-handle|threads\..*|.*-keeps-client|client-streams\..*|"
                    r"containers\.(empty-|signature-)word|filters\.last-release|"
                    r"filters\.not-jpeg|atoms\.shared")


def run(*arguments, fault=None, prefix=()):
    environment = dict(os.environ, **({"KAP_FAULT": fault} if fault else {}))
    return subprocess.run([*prefix, KAPCHECK, *map(str, arguments)], env=environment, check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=300)


def library(name):
    return FOLDER / f"lib{name}.so"


def tests_of(done):
    return json.loads(done.stdout)["tests"]


def comments(path):
    """The text of all comments of a source, in one line."""
    lines = re.findall(r"^\s*//(.*)|^#.*", path.read_text(encoding="utf-8"), re.MULTILINE)
    return " ".join(" ".join(lines).split())


class Kapcheck(unittest.TestCase):
    """Each test ends without temporary files and processes of kapcheck."""
    maxDiff = None

    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.folder = pathlib.Path(place.name)
        patch = unittest.mock.patch.dict(os.environ, {"TMPDIR": place.name})
        patch.start()
        self.addCleanup(patch.stop)

    def tearDown(self):
        left = [path.name for path in self.folder.glob("kapcheck-*")]
        for environment in pathlib.Path("/proc").glob("[0-9]*/environ"):
            with contextlib.suppress(OSError):
                if f"TMPDIR={self.folder}/kapcheck-".encode() in environment.read_bytes():
                    left.append(environment.parent.name)
        self.assertEqual(left, [])

    def compare(self, done, reasons, not_run=None):
        """Exactly these tests fail, each for its reason; and exactly these do not run."""
        self.assertEqual(done.stderr, "")
        tests = tests_of(done)
        failed = {test["name"]: test["reason"] + "; step: " + test.get("step", "")
                  for test in tests if test["result"] == "failed"}
        self.assertEqual(sorted(failed), sorted(reasons), failed)
        for name, words in reasons.items():
            self.assertIn(words, failed[name], name)
        if not_run is not None:
            self.assertEqual({test["name"] for test in tests if test["result"] == "not run"},
                             not_run)
        self.assertEqual(done.returncode, 1 if reasons else 0)


class Components(Kapcheck):
    def check(self, rows, scenario, others):
        for name, reasons, not_run in rows:
            with self.subTest(name):
                arguments = ["component", library(name), "--scenario", library(scenario),
                             "--format", "json", "--time-limit",
                             10 if name == "hang_at_start" else 60]
                expected = not_run | others
                if IS_SANITIZED:  # processes are slow: only what must fail, and what that needs
                    if set(reasons) == {"exports"}:
                        self.skipTest("the sanitizer exports symbols")
                    reasons = {test: words for test, words in reasons.items() if test != "exports"}
                    arguments += ["--only", ",".join({"load", "initialise-twice", *reasons})]
                    expected = None
                self.compare(run(*arguments), reasons, expected)

    def test_each_fault_has_its_name(self):
        self.check(COMPONENTS, "scenario", DECLARED)

    def test_declared_interfaces(self):
        self.check(DECLARING, "declaring_scenario", set())

    def test_every_small_component_is_in_a_table(self):
        sources = {path.stem for path in (ROOT / "tests/kapcheck/components").glob("*.cpp")}
        self.assertEqual(sources, {row[0] for row in COMPONENTS + DECLARING})

    def test_every_test_fails_for_some_component(self):
        names = {line.split()[0] for line in run("component", "--list").stdout.splitlines()}
        tested = {name for row in COMPONENTS + DECLARING for name in row[1]}
        self.assertEqual(names - tested, {"dead-handles"} if IS_SANITIZED else set())

    def test_the_library_and_the_probe_pass(self):
        tests = [] if not IS_SANITIZED else ["--only", "load,initialise,leaks,refused-calls,"
                                             "refused-scenario,counter,threads,random-calls,"
                                             "late-calls,exit"]
        self.compare(run("component", LIBRARY, "--scenario", library("library_scenario"),
                         "--format", "json", "--time-limit", 280, *tests), {}, set())
        self.compare(run("component", LIBRARY.parent / "libkapprobe.so", "--format", "json",
                         *tests), {})

    def test_random_calls_depend_on_the_seed(self):
        def steps(seed):
            done = run("component", library("crash_at_null"), "--scenario",
                       library("declaring_scenario"), "--only", "random-calls", "--seed", seed,
                       "--format", "json")
            return tests_of(done)[0]["step"]
        self.assertEqual(steps(5), steps(5))
        self.assertGreater(len({steps(seed) for seed in range(1, 6)}), 1)
        self.assertRegex(steps(5), r"^random call \d+: NoteInterface, Length\(null\)$")


def host_procedures():
    """"interface, method" of every procedure that a host registers."""
    header = (ROOT / "public/include/kap/KAPHostInterfaces.h").read_text(encoding="utf-8")
    listed = re.search(r"TKAPInterfaceSet<([^>]*)>", header)[1].replace(",", " ").split()
    return [f"{interface.name}, {method.name}" for _, _, declared in interfaces.headers(ROOT)
            for interface in declared if interface.struct in listed
            for method in interface.methods]


class Hosts(Kapcheck):
    def run_faulty(self, fault):
        return run("host", "--host", library("faulty_host"), "--format", "json",
                   "--time-limit", 10 if fault == "time_hangs" else 60, fault=fault)

    def test_each_fault_has_its_name_and_each_check_its_fault(self):
        source = (ROOT / "tests/kapcheck/hosts/faulty_host.cpp").read_text(encoding="utf-8")
        self.assertEqual(sorted(re.findall(r'>\(\s*"(\w+)"\)', source)),
                         sorted(row[0] for row in HOSTS))
        procedures = [] if IS_SANITIZED else host_procedures()
        with concurrent.futures.ThreadPoolExecutor(4) as pool:
            named = pool.map(self.run_faulty, [name for name, _ in HOSTS])
            idle = pool.map(self.run_faulty, [f"nothing:{name}" for name in procedures])
            for (name, reasons), done in zip(HOSTS, named):
                with self.subTest(name):
                    self.compare(done, reasons)
            failed = {name for _, reasons in HOSTS for name in reasons}
            for procedure, done in zip(procedures, idle):
                with self.subTest(procedure):
                    tests = [test for test in tests_of(done) if test["result"] == "failed"]
                    failed |= {test["name"] for test in tests}
                    found = {test["name"] for test in tests
                             if test.get("procedure") == procedure or test["name"] == "accounting"}
                    found |= {"probe"} & {test["name"] for test in tests}
                    if IDLE.get(procedure, "") is not None:
                        self.assertIn(IDLE.get(procedure, next(iter(found), "none")), found)
        if not IS_SANITIZED:
            names = {test["name"] for test in tests_of(run("host", "--format", "json"))}
            self.assertEqual(names - failed, NEVER_FAIL)

    def test_the_reference_host_passes_and_each_sentence_is_declared(self):
        done = run("host", "--format", "json")
        self.compare(done, {})
        own, shared = {}, {}
        folder = ROOT / "public/include"
        common = " ".join(comments(folder / "kap" / name)
                          for name in ("KAPHostInterfaces.h", "KAPTypes.h"))
        for path, _, all_declared in interfaces.headers(ROOT):
            for interface in all_declared:
                for method in interface.methods:
                    key = f"{interface.name}, {method.name}"
                    own[key] = " ".join(method.comment.split())
                    shared[key] = comments(folder / path) + " " + common
        tests = [test for test in tests_of(done) if test["name"] != "accounting"]
        for test in tests:
            with self.subTest(test["name"]):
                is_shared = re.fullmatch(SHARED_SENTENCES, test["name"])
                declared = (shared if is_shared else own)[test["procedure"]]
                self.assertIn(test["description"], declared)
        # What a host must have, some check is about.
        self.assertEqual(set(host_procedures()) - {test["procedure"] for test in tests}, set())

    def test_a_host_of_its_own(self):
        done = run("host", "--host", library("own_host"), "--format", "json")
        reasons = {f"containers.{name}": "this host does not do that"
                   for name in ("empty", "instances", "interfaces", "clone")}
        self.compare(done, reasons)
        results = {test["name"]: test["result"] for test in tests_of(done)}
        blocked = {name for name, result in results.items() if result == "blocked"}
        self.assertEqual(blocked, {"containers.empty-word", "containers.no-signature",
                                   "containers.parent-method", "containers.clone-of-all"})
        missing = {name for name, result in results.items() if result == "not offered"}
        families = {"streams", "client-streams", "buffers", "caches", "filters", "progress",
                    "threads", "accounting"}
        self.assertEqual({name.split(".")[0] for name in missing}, families)
        self.assertEqual({name for name in results if name.split(".")[0] in families}, missing)
        output = next(test for test in tests_of(done) if test["name"] == "output")
        self.assertIn("reported: a report of the probe", output["description"])

    def test_bad_input(self):
        rows = [(["--host", library("good")], 3, "does not export KAPCheckHost"),
                (["--host", "/no/such/host.so"], 3, "No such file or directory"),
                (["--host", __file__], 3, "not a shared library"),
                (["--host", ""], 2, "the name is empty"),
                (["--probe", library("good")], 3, "does not export kapprobeInitialize"),
                (["--probe", ""], 2, "the name is empty")]
        for arguments, status, words in rows:
            with self.subTest(arguments):
                done = run("host", *arguments)
                self.assertEqual((done.returncode, done.stdout), (status, ""), done.stderr)
                self.assertIn(words, done.stderr)
        # A host without faults that only registers is not a host.
        done = run("host", "--host", library("faulty_host"), fault="only_binder")
        self.assertEqual((done.returncode, done.stdout.splitlines()[-3].strip()),
                         (1, "reason: the host offers nothing but the binder"))


class Results(Kapcheck):
    """What kapcheck makes of the results."""

    def test_the_text_of_failures(self):
        crash = run("component", library("need_memory"), "--only", "refused-calls,leaks")
        crash = re.sub(r"(?m)^ *\|.*\n", "", crash.stdout)  # of a sanitizer
        self.assertEqual(crash, """libneed_memory.so (need_memory), seed 1
passed   leaks          releases all that it takes of the host
FAILED   refused-calls  survives each failing host call and look-up of its initialisation
          reason: crashes: Aborted
          step: initialises with host call 2 failing
1 passed, 1 failed, 0 not run
""")
        if IS_SANITIZED:
            self.skipTest("a sanitizer ends the process instead")
        misuse = run("component", library("release_twice"), "--only", "dead-handles").stdout
        self.assertRegex(misuse, r"\|     \S*release_twice")  # a frame
        self.assertNotIn("KAPCheck::", misuse)
        self.assertEqual(re.sub(r"(?m)^ *\|     .*\n", "", misuse),
                         """librelease_twice.so (release_twice), seed 1
FAILED   dead-handles  uses no handle after its last release
          reason: misuses a handle: release of a dead atom "kept by a small component"
          |   used by librelease_twice.so in KAPStringInterface.DeleteStringAtom
          |   made by librelease_twice.so in KAPStringInterface.NewStringAtom
          |   ended by librelease_twice.so in KAPStringInterface.DeleteStringAtom
0 passed, 1 failed, 0 not run
""")

    def test_a_failed_test_that_others_need_is_a_result(self):
        for name, failed in ("crash_at_load", "load"), ("wrong_answer", "scenario"):
            with self.subTest(name):
                done = run("component", library(name), "--scenario", library("scenario"),
                           "--only", "leaks", "--format", "json")
                self.assertEqual((done.returncode, [test["name"] for test in tests_of(done)
                                                    if test["result"] == "failed"]), (1, [failed]))
        self.assertIn("(without the scenario)", done.stdout)

    def test_a_plugin_that_crashes_has_a_step(self):
        done = run("component", library("good"), "--scenario", library("scenario"), "--only",
                   "scenario", "--format", "json", fault="at load")
        self.compare(done, {"scenario": ABORTED + "loads the scenario"})

    def test_a_library_without_sections(self):
        whole = library("good").read_bytes()
        path = self.folder / "libgood.so"
        path.write_bytes(whole[:40] + bytes(8) + whole[48:60] + bytes(4) + whole[64:])
        self.compare(run("component", path, "--format", "json", "--only",
                         "load" if IS_SANITIZED else "exports,load"), {})

    def test_few_descriptors_are_enough(self):
        self.compare(run("component", library("good"), "--format", "json", "--only", "leaks",
                         prefix=["sh", "-c", 'ulimit -n 20 && exec "$@"', "sh"]), {})

    def test_an_interrupt_leaves_nothing(self):
        with subprocess.Popen([KAPCHECK, "component", library("hang_at_start"), "--format", "json"],
                              stdout=subprocess.PIPE, text=True) as process:
            while not list(self.folder.glob("kapcheck-*")):
                time.sleep(0.01)
            process.send_signal(signal.SIGTERM)
            output = process.communicate(timeout=60)[0]
        self.assertEqual((process.returncode, json.loads(output)["interrupted"]),
                         (-signal.SIGTERM, "Terminated"))


class BadInput(Kapcheck):
    def test_status_and_message(self):
        folder = self.folder
        whole = library("good").read_bytes()
        files = {"text": b"no library", "empty": b"", "header": whole[:64],
                 "half": whole[:len(whole) // 2], "object": whole[:16] + b"\1" + whole[17:]}
        for name, content in files.items():
            (folder / f"lib{name}.so").write_bytes(content)
        (folder / "good.so").write_bytes(whole)
        (folder / "lib-x.so").write_bytes(whole)
        pipe = folder / "libpipe.so"
        os.mkfifo(pipe)
        good = library("good")
        rows = [([folder / f"lib{name}.so"], 3, "a shared library") for name in files]
        rows += [
            (["/no/such/liba.so"], 3, "No such file or directory"),
            (["/no/\x1b[31m/liba.so"], 3, r"/no/\x1b[31m/liba.so: No such file"),
            ([KAPCHECK, "--name", "kapcheck"], 3, "not a shared library"),
            ([folder, "--name", "folder"], 3, "not a file"),
            ([pipe], 3, "not a file"),
            ([folder / "good.so"], 2, "use --name"),
            ([folder / "lib-x.so"], 2, "use --name"),
            ([good, "--name", "1x"], 2, "not a component's name"),
            ([], 2, "LIBRARY is required"),
            ([good, "--only", "leaks,nothing"], 2, 'no test "nothing"'),
            ([good, "--time-limit", "0"], 2, "--time-limit"),
            ([good, "--time-limit", "nan"], 2, "--time-limit"),
            ([good, "--seed", "0"], 2, "--seed"),
            ([good, "--format", "xml"], 2, "--format"),
            ([good, "--scenario", "/no/such/plugin.so"], 3, "No such file"),
            ([good, "--scenario", pipe], 3, "not a file"),
            ([good, "--scenario", good], 3, "exports neither KAPCheckScenario nor"),
        ]
        for arguments, status, words in rows:
            with self.subTest(arguments):
                done = run("component", *arguments)
                self.assertEqual((done.returncode, done.stdout), (status, ""), done.stderr)
                self.assertIn(words, done.stderr)

    def test_another_name(self):
        path = self.folder / "other.so"
        path.write_bytes(library("good").read_bytes())
        done = run("component", path, "--name", "good", "--only", "initialise")
        self.assertEqual((done.returncode, done.stdout.splitlines()[-1]),
                         (0, "1 passed, 0 failed, 0 not run"), done.stdout)

    def test_a_closed_output_is_an_error(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            done = subprocess.run([KAPCHECK, "component", "--list"], check=False, stdout=full,
                                  stderr=subprocess.PIPE, text=True)
        self.assertEqual((done.returncode, done.stderr), (3, "kapcheck: <stdout>: cannot write\n"))


if __name__ == "__main__":
    KAPCHECK, FOLDER, LIBRARY = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]])
