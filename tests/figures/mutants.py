#!/usr/bin/env python3
"""mutants.py - does the suite notice when the library is changed

Changes one operator or one constant of the library's sources, compiles what that touches, links a
library with all the other, unchanged objects, and runs the suite with it: the mutant is killed by
the first test that fails, dies or takes ten times as long. Of a random sample of the sites, the
share of killed ones is the figure:

  GOAL C4 <killed in percent> >=90 PASS|FAIL

Sites are those of kelvofxds/**/*.cpp and *Internal.h that the release build compiles; public
headers are left out, because the tests compile what is inline in those themselves (those few tests
that include an internal header are compiled anew with its mutants). Left out too is what never
runs: directives, static assertions, attributes, parameters of templates, assert (which the release
build has not). A mutant is replaced by the next of the sample when it does not compile, when its
object files are those of the unchanged library byte by byte, and when equivalent.txt lists it: a
list of those that differ from the library only in cost or in what nobody can see, each with the
reason. All others count.

Needs the release build: its test programs, which load the library dynamically, and its flags.
"""

import argparse
import json
import os
import pathlib
import re
import resource
import select
import shutil
import signal
import subprocess
import sys
import threading
import time

sys.dont_write_bytecode = True  # nothing is made in the tree
import knownMutants
import mutationSites

TOP = pathlib.Path(__file__).resolve().parents[2]
GOAL = 90
SURVIVED = "SURVIVED"
EQUIVALENTS = TOP / "tests/figures/equivalent.txt"
SLOW = 0.2  # seconds; a test that takes longer runs after all that do not
PATIENCE = 10  # times as long as with the unchanged library, and as many seconds


def say(text):
    print(text, file=sys.stderr, flush=True)


# --- compiling and linking ------------------------------------------------------------------------


class Library:
    """The unchanged objects, and libraries that differ from them in a file."""

    def __init__(self, build, folder):
        self.base = folder / "base"
        self.flags = {}  # of each source, in link order
        for entry in json.loads((build / "compile_commands.json").read_text()):
            words = entry["command"].split()
            if "-Dkelvofxds_EXPORTS" in words:
                source = re.search(r"kelvofxds/\w+/\w+\.cpp$", entry["file"]).group()
                self.flags[source] = self.kept(words)
        self.files_of = {}  # of each source, those it is made of
        for source in self.flags:
            self.compile_base(source)

    @staticmethod
    def kept(words):
        """A command without what names files, folders and warnings."""
        words = words[:words.index("-o")]
        return [w.replace('\\"', '"') for w in words if not re.match("-[IW]", w)]

    def object_of(self, source):
        return self.base / (source.replace("/", ".") + ".o")

    def compile_base(self, source):
        target = self.object_of(source)
        target.parent.mkdir(parents=True, exist_ok=True)
        rule = target.with_suffix(".d")
        if not self.up_to_date(target, rule):
            command = self.flags[source] + ["-w", "-I.", "-MMD", "-MF", str(rule), "-c", source]
            subprocess.run(command + ["-o", str(target)], cwd=TOP, check=True)
        self.files_of[source] = self.read_rule(rule)

    @staticmethod
    def read_rule(rule):
        words = rule.read_text().replace("\\\n", " ").split()[1:]
        return {os.path.normpath(word) for word in words}

    def up_to_date(self, target, rule):
        if not target.exists() or not rule.exists():
            return False
        made = target.stat().st_mtime
        return all((TOP / f).exists() and (TOP / f).stat().st_mtime < made
                   for f in self.read_rule(rule))

    def touched_by(self, path):
        return [source for source, files in self.files_of.items() if path in files]

    def live_lines(self):
        """The lines of each file that are compiled in at least one source."""
        live = {}
        for source, flags in self.flags.items():
            wanted = [f for f in self.files_of[source]
                      if f == source or f.endswith("Internal.h")]
            command = flags + ["-w", "-E", "-I" + str(TOP), str(TOP / source)]
            lines = mutationSites.live_lines(command, [str(TOP / f) for f in wanted])
            for path in wanted:
                live.setdefault(path, set()).update(lines[str(TOP / path)])
        return live

    def sites(self):
        return [site for path, lines in sorted(self.live_lines().items())
                for site in mutationSites.sites_of(path, (TOP / path).read_text(), lines)]

    def files(self):
        """All that the library is made of."""
        return {TOP / path for files in self.files_of.values() for path in files}

    def link(self, folder, changed):
        """A library in `folder` with the objects of `changed` in the place of the unchanged."""
        folder.mkdir(parents=True, exist_ok=True)
        objects = [str(changed.get(source, self.object_of(source))) for source in self.flags]
        flags = next(iter(self.flags.values()))
        command = flags + ["-shared", "-Wl,-soname,libkelvofxds.so.1"] + objects
        return self.runs(command + ["-o", str(folder / "libkelvofxds.so.1")])

    def link_unchanged(self, folder):
        linked = folder / "libkelvofxds.so.1"
        newest = max(self.object_of(source).stat().st_mtime for source in self.flags)
        return (linked.exists() and linked.stat().st_mtime > newest) or self.link(folder, {})

    def compile_mutant(self, site, folder):
        """The objects that differ from the unchanged, or None if there is no such library."""
        shutil.rmtree(folder, ignore_errors=True)
        mutated = folder / site.path
        mutated.parent.mkdir(parents=True)
        mutated.write_text(site.applied((TOP / site.path).read_text()))
        changed = {}
        for source in self.touched_by(site.path):
            target = folder / (source.replace("/", ".") + ".o")
            there = mutated if source == site.path else source
            if not self.runs(self.flags[source] + ["-w", f"-I{folder}", "-I.", "-c", str(there),
                                                   "-o", str(target)]):
                return None
            if target.read_bytes() != self.object_of(source).read_bytes():
                changed[source] = target
        return changed

    @staticmethod
    def runs(command):
        try:
            return subprocess.run(command, cwd=TOP, timeout=120, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL).returncode == 0
        except subprocess.TimeoutExpired:
            return False


class OwnCopies:
    """The tests that include internal headers, and so have copies of what those define."""

    def __init__(self, build):
        self.build = build / "tests"
        self.command_of = {}
        for entry in json.loads((build / "compile_commands.json").read_text()):
            match = re.search(r"(tests/\w+)/\w+_test\.cpp$", entry["file"])
            if match and match.group(1) != "tests/figures":
                self.command_of[match.group()] = Library.kept(entry["command"].split())

    def including(self, header):
        return [test for test in self.command_of if header in self.closure(test, set())]

    def closure(self, path, seen):
        """What `path` includes, itself or by way of another file of the tests."""
        if path not in seen:
            seen.add(path)
            if path.startswith("tests/") and (TOP / path).exists():
                for included in re.findall(r'^#include "(.*)"', (TOP / path).read_text(), re.M):
                    self.closure(included, seen)
        return seen

    def compile(self, test, sources):
        """The program of one test file, compiled with what is mutated in `sources`, or None."""
        objects = [sources / "test.o"] + sorted(
            (self.build / "CMakeFiles/kelvofxds_tests.dir/support").glob("*.o"))
        archives = [self.build.parent / "lib" / name for name in ("libgtest_main.a", "libgtest.a")]
        program = sources / "test"
        flags = self.command_of[test]
        there = f"-I{sources}", "-I."
        if Library.runs(flags + ["-w", *there, "-c", test, "-o", str(objects[0])]) and Library.runs(
                ["g++", "-m32", "-no-pie", *map(str, objects + archives), f"-L{sources.parent}/lib",
                 "-l:libkelvofxds.so.1", "-o", str(program)]):
            return program
        return None


# --- running programs -----------------------------------------------------------------------------


RUNNING = set()


class Workplace:
    """A folder with a library of its own and a place for the files of the tests."""

    def __init__(self, folder):
        self.folder = folder
        self.library = folder / "lib"
        self.files = folder / "files"

    def start(self, command):
        shutil.rmtree(self.files, ignore_errors=True)
        self.files.mkdir(parents=True)
        environment = dict(os.environ, LD_LIBRARY_PATH=str(self.library),
                           TEST_TMPDIR=str(self.files), KELVOFXDS_FOLDER=str(self.files))
        process = subprocess.Popen(command, cwd=self.files, env=environment,
                                   start_new_session=True, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        RUNNING.add(process)
        return process


def end(process):
    """Ends the process with all that it has started."""
    RUNNING.discard(process)
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    process.stdout.close()
    return process.wait()


def lines_of(process, seconds):
    """The lines of its output; None when none has come for as long as `seconds()` says."""
    kept = b""
    while True:
        ready, _, _ = select.select([process.stdout], [], [], seconds())
        if not ready:
            yield None
            return
        piece = os.read(process.stdout.fileno(), 1 << 16)
        if not piece:
            return
        *lines, kept = (kept[-1000:] + piece).split(b"\n")
        for line in lines:
            yield line.decode("latin-1")


def how_it_ended(status):
    if status < 0:
        return f"died of {signal.Signals(-status).name}"
    return f"ended with {status}"


def run_program(workplace, program, seconds):
    """Why `program` failed, or None."""
    process = workplace.start(program)
    until = time.monotonic() + seconds
    for line in lines_of(process, lambda: max(0.0, until - time.monotonic())):
        if line is None:
            end(process)
            return "takes too long"
    try:
        process.wait(max(0.1, until - time.monotonic()))
    except subprocess.TimeoutExpired:
        end(process)
        return "takes too long"
    status = process.returncode
    end(process)
    return how_it_ended(status) if status else None


def interrupted(number, _):
    """Leaves no program behind when this one is ended."""
    for process in list(RUNNING):
        end(process)
    os._exit(128 + number)


class TestRun:
    """Tests of one program in one process, watched test by test."""

    def __init__(self, workplace, program, names, times):
        self.times = times
        self.current = None
        self.since = time.monotonic()
        flags = workplace.folder / "flags"
        flags.write_text("--gtest_filter=" + ":".join(names) + "\n--gtest_fail_fast\n")
        self.process = workplace.start([str(program), f"--gtest_flagfile={flags}"])

    def seconds_left(self):
        limit = PATIENCE * (1 + self.times.get(self.current, 0))
        return max(0.0, self.since + limit - time.monotonic())

    def failure(self):
        """The test that failed and how, or None."""
        for line in lines_of(self.process, self.seconds_left):
            if line is None or self.seconds_left() == 0.0:
                end(self.process)
                return self.current, "takes too long"
            match = re.search(r"\[( RUN      |  FAILED  )\] ([\w/]+\.[\w/]+)", line)
            if match and match.group(1) == "  FAILED  ":
                end(self.process)
                return match.group(2), "fails"
            if match:
                self.current, self.since = match.group(2), time.monotonic()
        return self.outcome()

    def outcome(self):
        try:
            self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            end(self.process)
            return self.current, "takes too long"
        status = self.process.returncode
        end(self.process)
        return (self.current, how_it_ended(status)) if status else None


# --- the suite ------------------------------------------------------------------------------------


class Suite:
    """The test programs, with the file and the time of each test."""

    def __init__(self, program, others, workplace, copies, quick):
        self.program = program
        self.copies = copies
        self.quick = quick
        self.others = others
        self.time_of = {}
        self.file_of = {}
        self.measure_tests(workplace)
        self.other_times = [self.measured(workplace, other) for other in others]

    def measure_tests(self, workplace):
        """Kept until the program or a source changes, and only when all tests pass."""
        self.check_loads(workplace)
        kept = workplace.folder / (self.program.name + ".json")
        library = workplace.library / "libkelvofxds.so.1"
        made = max(self.program.stat().st_mtime, library.stat().st_mtime)
        if not kept.exists() or kept.stat().st_mtime < made:
            self.run_all(workplace).rename(kept)
        for suite in json.loads(kept.read_text())["testsuites"]:
            for test in suite["testsuite"]:
                name = suite["name"] + "." + test["name"]
                self.time_of[name] = float(test["time"].rstrip("s"))
                self.file_of[name] = test["file"]

    def run_all(self, workplace):
        results = workplace.folder / "results.json"
        process = workplace.start([str(self.program), f"--gtest_output=json:{results}"])
        for _ in lines_of(process, lambda: 600):
            pass
        if process.wait():
            raise SystemExit("mutants.py: a test fails with the unchanged library")
        return results

    def check_loads(self, workplace):
        shown = subprocess.run([str(self.program)], capture_output=True, text=True, env={
            "LD_TRACE_LOADED_OBJECTS": "1", "LD_LIBRARY_PATH": str(workplace.library)})
        if str(workplace.library) not in shown.stdout:
            raise SystemExit(f"mutants.py: {self.program} does not load a library it is given")

    @staticmethod
    def measured(workplace, program):
        start = time.monotonic()
        failure = run_program(workplace, program, 600)
        if failure:
            raise SystemExit(f"mutants.py: unchanged, {program[0]} {failure}")
        return time.monotonic() - start

    def files(self):
        """The programs, and the sources that are compiled anew."""
        return {self.program, *(pathlib.Path(other[0]) for other in self.others),
                *(TOP / test for test in self.copies.command_of)}

    def stages(self, path):
        """All tests, those first that will kill a mutant of this file soonest: quick ones before
        slow ones; those named as the file, of its folder, others; those that die last."""
        folder = path.split("/")[1]
        stem = re.sub("Internal$", "", pathlib.Path(path).stem)
        stages = {}
        for name, file in self.file_of.items():
            near = f"/tests/{folder}/" in file
            rank = 0 if near and pathlib.Path(file).name.startswith(stem) else 1 if near else 2
            key = (self.time_of[name] > SLOW, rank, "DeathTest" in name)
            stages.setdefault(key, []).append(name)
        return [stages[key] for key in sorted(stages) if not (self.quick and key[0])]

    def killer(self, path, workplace):
        """What fails with the library of the workplace, or None."""
        for program, names in self.programs(path, workplace):
            failure = self.failure(workplace, program, names)
            if failure:
                return " ".join(str(word) for word in failure)
        for program, seconds in zip(self.others, self.other_times):
            failure = run_program(workplace, program, PATIENCE * (1 + seconds))
            if failure:
                return f"{pathlib.Path(program[0]).name} {failure}"
        return None

    def programs(self, path, workplace):
        """Programs, each with the tests of it that are run, in their order."""
        for names in self.stages(path):
            yield self.program, names
        for test in self.copies.including(path):
            program = self.copies.compile(test, workplace.folder / "src")
            if program:
                yield program, ["*"]

    def failure(self, workplace, program, names):
        """A failure counts when it comes again: alone, or after the same other tests."""
        first = TestRun(workplace, program, names, self.time_of).failure()
        if not first:
            return None
        again = None
        if first[0]:
            again = TestRun(workplace, program, [first[0]], self.time_of).failure()
        return again or TestRun(workplace, program, names, self.time_of).failure()


# --- the sample -----------------------------------------------------------------------------------


class Sample:
    """Takes sites in their order until `count` mutants have been counted."""

    def __init__(self, order, count, equivalents, results, log):
        self.order = iter(order)
        self.equivalents = equivalents
        self.results = results
        self.count = count
        self.log = log
        self.lock = threading.Lock()
        self.taken = self.killed = self.survived = 0
        self.replaced = {"equivalent": 0, "does not compile": 0, "same objects": 0}

    def next(self):
        """The next site whose mutant has to be made."""
        with self.lock:
            while self.taken < self.count and (site := next(self.order, None)) is not None:
                self.taken += 1
                if site in self.equivalents:
                    self.count_result(site, "equivalent")
                elif site.name() in self.results.known:
                    self.count_result(site, self.results.known[site.name()])
                else:
                    return site
            return None

    def judge(self, site, result):
        with self.lock:
            self.results.add(site, result)
            self.count_result(site, result)

    def count_result(self, site, result):
        if result in self.replaced:
            self.taken -= 1
            self.replaced[result] += 1
        else:
            self.survived += result.startswith(SURVIVED)
            self.killed += not result.startswith(SURVIVED)
            say(f"{self.killed + self.survived}/{self.count} {site}: {result}")
        print(f"{site}: {result}", file=self.log, flush=True)


def work(sample, library, suite, folder):
    workplace = Workplace(folder)
    while (site := sample.next()) is not None:
        start = time.monotonic()
        changed = library.compile_mutant(site, folder / "src")
        if changed and not library.link(workplace.library, changed):
            changed = None
        if not changed:
            sample.judge(site, "does not compile" if changed is None else "same objects")
            continue
        killer = suite.killer(site.path, workplace) or SURVIVED
        sample.judge(site, f"{killer} ({time.monotonic() - start:.0f} s)")


def run_sample(sample, library, suite, folder, jobs):
    workers = [threading.Thread(target=work, args=(sample, library, suite, folder / f"w{i}"))
               for i in range(jobs)]
    for worker in workers:
        worker.start()
    for worker in workers:
        worker.join()


def other_programs(build):
    """The programs of the suite, beside that of the tests, which use the library."""
    figures = build / "tests/figures"
    hosts = [host for host in (build / "tests/hosts").glob("host_*") if host.is_file()]
    return ([[str(build / "tests/reference"), str(TOP / "docs/reference")],
             [str(figures / "refusals")]] + [[str(host)] for host in sorted(hosts)] +
            [[str(figures / "kelvofxds_figures"), "--gtest_filter=figure*"]])


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("-n", type=int, default=200, metavar="COUNT", help="mutants (200)")
    parser.add_argument("--seed", type=int, default=1, help="of the sample (1)")
    parser.add_argument("-j", type=int, default=os.cpu_count(), help="processes (the cores)")
    parser.add_argument("--only", action="append", metavar="FILE:LINE",
                        help="the mutants of a line instead of a sample")
    parser.add_argument("--resume", action="store_true",
                        help="keep the results of an earlier run of the same sources and programs")
    parser.add_argument("--quick", action="store_true",
                        help="the quick tests alone: more survive than with the whole suite")
    parser.add_argument("--list", action="store_true", help="show the sites and end")
    parser.add_argument("--build", default=TOP / "build/release", type=pathlib.Path,
                        help="a release build of these sources (build/release)")
    parser.add_argument("--tests", type=pathlib.Path, metavar="PROGRAM",
                        help="run the tests of this program alone")
    parser.add_argument("--folder", default=TOP / "build/mutants", type=pathlib.Path,
                        help="for objects, libraries and the log (build/mutants)")
    given = parser.parse_args()
    for name in ("build", "folder"):
        setattr(given, name, getattr(given, name).resolve())
    return given


def report(sample, order):
    done = sample.killed + sample.survived
    say(f"{len(order)} sites; replaced: {sample.replaced}; killed {sample.killed} of {done}")
    percent = 100 * sample.killed / done if done else 0
    passed = done == sample.count and percent >= GOAL  # a part of the sample is none
    print(f"GOAL C4 {percent:.1f} >={GOAL} {'PASS' if passed else 'FAIL'}")
    return passed


def main():
    given = arguments()
    signal.signal(signal.SIGTERM, interrupted)
    signal.signal(signal.SIGINT, interrupted)
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    library = Library(given.build, given.folder)
    sites = library.sites()
    equivalents = knownMutants.Equivalents(EQUIVALENTS, sites)
    order = mutationSites.in_random_order(sites, given.seed)
    if given.only:
        order = [site for site in sites if f"{site.path}:{site.line}" in given.only]
    if given.list:
        print("\n".join(str(site) for site in sites))
        return 0
    workplace = Workplace(given.folder / "unchanged")
    if not library.link_unchanged(workplace.library):
        raise SystemExit("mutants.py: the unchanged library cannot be linked")
    say(f"seed {given.seed}, {len(sites)} sites; measuring the suite")
    others = [] if given.tests or given.quick else other_programs(given.build)
    program = given.tests or given.build / "tests/kelvofxds_tests"
    suite = Suite(program.resolve(), others, workplace, OwnCopies(given.build), given.quick)
    partial = given.only or given.quick or given.tests
    results = knownMutants.Results(
        given.folder / ("partial.txt" if partial else "results.txt"),
        library.files() | suite.files(), given.resume and not partial)
    with open(given.folder / "mutants.log", "w", encoding="utf-8") as log:
        sample = Sample(order, len(order) if given.only else given.n,
                        () if given.only else equivalents.sites, results, log)
        run_sample(sample, library, suite, given.folder, given.j)
    if partial:
        return 0
    return 0 if report(sample, order) else 1


if __name__ == "__main__":
    sys.exit(main())
