"""Measures what the library does often beside what its users would take instead, in the same run and on the same data.

Builds the preset "benchmark", the library as it is shipped, and prints one table: ours, theirs, the ratio, the target of
benchmarks/targets.txt, and whether it is met ("nearly": missed by a tenth at most). Times are medians of CPU time. The
ratio is ours by theirs; the one of a target "at least" is theirs by ours and marked "x". Allocations are counted for one
iteration. Only ratios mean much, and those only on a machine that has nothing else to do. The raw results go to
build/benchmark/results.

A ROW is a pattern for rows or row/case, as "read_*" or "read_string/twitter"; without one all are measured. A library
that isn't installed (scripts/setup --benchmarks tries) is left out with a line.

Exit status: 0 all is well, 1 a target is missed by more than a tenth (with --check), a target has no benchmark, results
don't agree, or the build fails, 2 wrong usage.
"""

import fnmatch
import glob
import json
import os
import re
import subprocess
import sys

SCRIPTS = os.path.dirname(os.path.dirname(os.path.realpath(__file__)))
ROOT = os.path.dirname(SCRIPTS)
sys.path.insert(0, SCRIPTS)

from benchmarking import judgement, results, targets  # noqa: E402
from shared.arguments import Parser, count  # noqa: E402

BUILD = "build/benchmark"
RESULTS = f"{BUILD}/results"
# Seconds for one repetition: together with the repetitions enough for a median that holds to a few hundredths.
SECONDS = 0.2


class Failure(Exception):
    """Ends the script with status 1; the text says why."""


def arguments():
    parser = Parser("benchmark", "[--check] [--quick | --report] [--repetitions N] [ROW...]", __doc__)
    parser.add_argument("rows", nargs="*", metavar="ROW", help="measure these alone")
    parser.add_argument("--check", action="store_true", help="fail if a target is missed by more than a tenth")
    parser.add_argument("--repetitions", type=count, default=5, metavar="N", help="measure each of them N times (5)")
    mode = parser.add_mutually_exclusive_group()
    mode.add_argument("--quick", action="store_true", help="run each of them once, to see that it runs; no times")
    mode.add_argument("--report", action="store_true", help="measure nothing: the table of the results at hand")
    options = parser.parse_intermixed_args()
    if options.quick and options.check:
        parser.error("--quick measures nothing that --check could look at")
    return options


def run(*command, **redirections):
    sys.stdout.flush()
    return subprocess.run(command, check=False, **redirections).returncode


def run_logged(path, complaint, *command):
    """Puts what the command prints into a file, and shows the end of it if the command fails."""
    with open(path, "w+", encoding="utf-8", errors="replace") as log:
        if run(*command, stdout=log, stderr=subprocess.STDOUT):
            log.seek(0)
            sys.stderr.write("".join(log.readlines()[-40:]))
            raise Failure(f"{complaint}, see {path}")


def build():
    if run("scripts/setup", "--benchmarks"):
        raise Failure("what it needs can't be installed")
    os.makedirs(BUILD, exist_ok=True)
    run_logged(f"{BUILD}/configure.log", "the build can't be configured", "cmake", "--preset", "benchmark")
    run_logged(f"{BUILD}/build.log", "the build fails", "cmake", "--build", "--preset", "benchmark")


def lines_of(path):
    with open(path, encoding="utf-8") as file:
        return file.read().splitlines()


def read_left_out():
    """{(folder, peer): the line about it}"""
    found = {}
    path = f"{BUILD}/benchmarks/left_out"
    for line in lines_of(path) if os.path.exists(path) else []:
        folder, peer = line.partition(":")[0].split()
        found[folder, peer] = line
    return found


def is_chosen(what, patterns):
    row = what.partition("/")[0]
    return not patterns or any(fnmatch.fnmatchcase(name, pattern) for name in (what, row) for pattern in patterns)


def chosen_names(program, patterns):
    listed = subprocess.run([program, "--benchmark_list_tests"], check=False, text=True, stdout=subprocess.PIPE)
    if listed.returncode:
        raise Failure(f"{program} doesn't list its benchmarks")
    return [name for name in listed.stdout.split() if is_chosen(results.split(name)[0], patterns)]


def measure(options):
    programs = [f"{BUILD}/bin/{name}" for name in lines_of(f"{BUILD}/benchmarks/programs")]
    chosen = [(program, chosen_names(program, options.rows)) for program in programs]
    if not any(names for _, names in chosen):
        raise Failure(f"no benchmark is called {' or '.join(options.rows)}")

    os.makedirs(RESULTS, exist_ok=True)
    for old in glob.glob(f"{RESULTS}/*.json"):
        os.remove(old)
    if options.quick:
        how = ["--benchmark_min_time=0"]
    else:
        how = [f"--benchmark_repetitions={options.repetitions}", f"--benchmark_min_time={SECONDS}",
               "--benchmark_enable_random_interleaving=true"]
    for program, names in chosen:
        if not names:
            continue
        print(f"benchmark: {os.path.basename(program)}, {len(names)} benchmarks", file=sys.stderr)
        pattern = "|".join(re.sub(r"([][.^$*+?(){}|\\])", r"\\\1", name) for name in names)
        raw = f"{RESULTS}/{os.path.basename(program)}.json"
        run_logged(f"{raw}.log", f"{program} fails", program, f"--benchmark_filter=^({pattern})$",
                   f"--benchmark_out={raw}", "--benchmark_out_format=json", *how)


def conditions(paths):
    """A line about the machine, as the first of the programs found it."""
    with open(paths[0], encoding="utf-8") as file:
        context = json.load(file)["context"]
    load = ", ".join(f"{load:.1f}" for load in context.get("load_avg", [])[:1])
    return f"{context['num_cpus']} processors of {context['mhz_per_cpu']} MHz, load {load or 'unknown'}, {context['date']}"


def report(options, expected, left_out):
    """Prints the table, or in the quick mode only what is wrong; the exit status."""
    paths = sorted(glob.glob(f"{RESULTS}/*.json"))
    if not paths:
        raise Failure("nothing has been measured yet; run it without --report")
    measured = {what: sides for what, sides in results.read(paths).items() if is_chosen(what, options.rows)}
    expected = [target for target in expected if is_chosen(target.what, options.rows)]
    rows = judgement.rows_of(expected, measured, left_out)
    if not options.quick:
        print("\n".join(judgement.table(rows)))
        print(conditions(paths))
    for line in left_out.values():
        print(f"left out: {line}")

    faults = [f"{row.what} against {row.against}: no such benchmark, or nothing to compare"
              for row in rows if row.verdict == judgement.UNKNOWN]
    if options.check:
        faults += [f"{row.what} against {row.against}: {judgement.cells(row)[4] or judgement.cells(row)[2]}, "
                   f"expected {row.target.text}" for row in rows if row.verdict == judgement.MISSED]
    for fault in faults:
        print(f"benchmark: {fault}", file=sys.stderr)
    if options.quick:
        print(f"benchmark: {sum(map(len, measured.values()))} benchmarks run")
    elif not faults:
        met = sum(row.verdict == judgement.MET for row in rows)
        print(f"benchmark: {met} of {sum(row.target is not None for row in rows)} targets are met")
    return 1 if faults else 0


def main():
    options = arguments()
    os.chdir(ROOT)
    expected = targets.read("benchmarks/targets.txt")
    if not options.report:
        build()
        measure(options)
    return report(options, expected, read_left_out())


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (Failure, targets.Unreadable, results.Failed) as failure:
        for line in str(failure).splitlines():
            print(f"benchmark: {line}", file=sys.stderr)
        sys.exit(1)
