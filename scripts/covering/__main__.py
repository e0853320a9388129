"""Measures which lines and branches of zelm/ and component_libraries/ the test suite runs.

Prints the files with less than 100 %, what isn't covered with its reason, and the totals of each folder; writes a page
for each file to build/coverage/report/index.html. Branches that only an exception takes don't count, nor do those of lines
without a choice in the source.
The reasons stand in tests/not_covered.txt, whose head tells its form.

Exit status: 0 all is well, 1 a test fails, less than 98 % of the lines or 90 % of the branches are covered, a line or a
branch that isn't covered has no reason there, or the reason of a line is out of date, 2 wrong usage. Which branches there
are differs between compilers: the reasons are for those of GCC 12. With another one a branch without a reason is printed
with the others, and fails nothing.
"""

import collections
import json
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))

from shared.arguments import Parser  # noqa: E402

BUILD = ROOT / "build/coverage"
REPORT = BUILD / "report"
REASONS = ROOT / "tests/not_covered.txt"
LEAST_LINES = 98.0
LEAST_BRANCHES = 90.0
REASONED_COMPILER = "GNU 12."
# Where the source has no choice, the compiler's branches tell whether an exception is on its way through a clean-up, or
# whether a function's static object is made already. The last operand of a choice may stand on a line of its own.
NO_CHOICE = r"(?!.*(\b(if|while|for|switch)\b|(^| )(&&|\|\|)( |$)| \? ))|\s*static "


class Failure(Exception):
    """Ends the script with status 1; the text says why, if nothing else has."""


class Count:
    """How many lines or branches there are and how many of them were run."""

    def __init__(self):
        self.covered = self.all = 0

    def add(self, is_covered):
        self.all += 1
        self.covered += is_covered

    def __iadd__(self, other):
        self.all += other.all
        self.covered += other.covered
        return self

    def percent(self):
        return 100.0 * self.covered / self.all if self.all else 100.0

    def __str__(self):
        # Rounded down, so that 100.0 % means all of them.
        return f"{int(self.percent() * 10) / 10:5.1f} % ({self.covered}/{self.all})"


class Reason:
    """An entry of the list: what a line that isn't covered says, and why it can't or needn't be."""

    def __init__(self, path, code, kind, where):
        self.path, self.code, self.kind, self.where = path, code, kind, where
        self.text = ""
        self.uses = 0


def arguments():
    parser = Parser("coverage", "[--no-build | --report]", __doc__)
    mode = parser.add_mutually_exclusive_group()
    mode.add_argument("--no-build", action="store_true", help="test what is built already")
    mode.add_argument("--report", action="store_true",
                      help="neither build nor test: report what has been counted since the last build")
    return parser.parse_args()


def run(*command, **options):
    sys.stdout.flush()
    return subprocess.run(command, cwd=ROOT, **options).returncode


def build():
    if run("cmake", "--preset", "coverage") or run("cmake", "--build", "--preset", "coverage"):
        raise Failure("the build fails")


def compiler():
    """Its maker and release, as in "GNU 12.2.0"."""
    found = {}
    for description in (BUILD / "CMakeFiles").glob("*/CMakeCXXCompiler.cmake"):
        found.update(re.findall(r'set\(CMAKE_CXX_COMPILER_(ID|VERSION) "([^"]*)"\)', description.read_text()))
    return f"{found.get('ID', '')} {found.get('VERSION', '')}"


def test():
    """Runs the whole suite on counters that begin at zero; false if a test fails."""
    if not (BUILD / "CTestTestfile.cmake").exists():
        raise Failure("nothing is built; run it without --no-build")
    for counters in BUILD.rglob("*.gcda"):
        counters.unlink()
    return run("ctest", "--preset", "coverage", "--parallel", str(os.cpu_count())) == 0


def lines_behind_an_operator():
    """The lines that go on where the one in front of them ends with && or ||."""
    found = set()
    for top in ("zelm", "component_libraries"):
        for path in (ROOT / top).rglob("*"):
            if path.suffix in (".cpp", ".h"):
                lines = path.read_text().splitlines()
                found.update(after for before, after in zip(lines, lines[1:])
                             if re.search(r"(&&|\|\|)\s*(//.*)?$", before) and not before.lstrip().startswith("//"))
    return sorted(found)


def measure():
    """Merges the counters of all programs and libraries; what gcovr tells of each file."""
    REPORT.mkdir(parents=True, exist_ok=True)
    for old in REPORT.iterdir():
        old.unlink()
    details = REPORT / "coverage.json"
    no_choice = "".join(f"(?!{re.escape(line)}$)" for line in lines_behind_an_operator()) + f"(?:{NO_CHOICE})"
    log = BUILD / "gcovr.log"
    with log.open("w") as errors:
        status = run("gcovr", "--root", str(ROOT), "--filter", "zelm/", "--filter", "component_libraries/",
                     "--exclude-throw-branches", "--exclude-unreachable-branches",
                     "--exclude-branches-by-pattern", no_choice, "-j", str(os.cpu_count()),
                     "--html-details", str(REPORT / "index.html"), "--html-title", "Coverage of ZelmCore",
                     "--json", str(details), str(BUILD), stderr=errors)
    if status or not details.exists():
        print(*log.read_text(errors="replace").splitlines()[-10:], sep="\n", file=sys.stderr)
        raise Failure(f"gcovr fails, all it said is in {log.relative_to(ROOT)}; has the suite been run? (scripts/coverage)")
    return json.loads(details.read_text())["files"]


def read_reasons():
    reasons = []
    for number, line in enumerate(REASONS.read_text().splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        where = f"{REASONS.relative_to(ROOT)}:{number}"
        if line[0].isspace():
            if not reasons:
                raise Failure(f"{where}: a reason without a place")
            reasons[-1].text = f"{reasons[-1].text} {line.strip()}".lstrip()
            continue
        head, separator, code = line.partition(": ")
        kind, _, path = head.partition(" ")
        if not separator or kind not in ("line", "branch", "sometimes") or not path:
            raise Failure(f"{where}: expected \"line PATH: CODE\", \"branch PATH: CODE\" or \"sometimes PATH: CODE\"")
        reasons.append(Reason(path, code.strip(), kind, where))
    return reasons


def reason_for(reasons, path, code, kind):
    for reason in reasons:
        if reason.path == path and reason.code == code and reason.kind in (kind, "sometimes") and reason.text:
            reason.uses += 1
            return reason
    return None


def main():
    options = arguments()
    if run("scripts/setup", "--checks"):
        return 1
    if not options.no_build and not options.report:
        build()
    is_passed = options.report or test()

    reasons = read_reasons()
    lines_of, branches_of = collections.defaultdict(Count), collections.defaultdict(Count)
    table, explained, unexplained = [], [], []
    needs_all_reasons = compiler().startswith(REASONED_COMPILER)
    for file in sorted(measure(), key=lambda file: file["file"]):
        path = file["file"]
        source = (ROOT / path).read_text().splitlines()
        lines, branches = Count(), Count()
        for line in file["lines"]:
            if line["gcovr/noncode"]:
                continue
            is_run = line["count"] > 0
            lines.add(is_run)
            missed = 0
            for branch in line["branches"]:
                branches.add(branch["count"] > 0)
                missed += branch["count"] == 0
            if is_run and not missed:
                continue
            kind = "branch" if is_run else "line"
            code = source[line["line_number"] - 1].strip()
            reason = reason_for(reasons, path, code, kind)
            place = f"{path}:{line['line_number']}: {code}"
            if is_run:
                place += f"   [{missed} of {len(line['branches'])} branches]"
            if reason or (is_run and not needs_all_reasons):
                explained.append((place, reason.text if reason else "No reason is known."))
            else:
                unexplained.append(place)
        if lines.covered < lines.all or branches.covered < branches.all:
            table.append((path, lines, branches))
        folder = "/".join(path.split("/")[:2])
        for total in (folder, "in all"):
            lines_of[total] += lines
            branches_of[total] += branches

    def print_rows(title, rows):
        print(f"\n{title:62}{'lines':>22}{'branches':>24}")
        for name, lines, branches in rows:
            print(f"{name:62}{str(lines):>22}{str(branches):>24}")

    print_rows("Not wholly covered", table)
    print("\nNot covered")
    for place, text in explained:
        print(f"{place}\n    {text}")
    folders = sorted(lines_of, key=lambda name: (name == "in all", name))
    print_rows("Totals", [(name, lines_of[name], branches_of[name]) for name in folders])
    print(f"\nThe report: {(REPORT / 'index.html').relative_to(ROOT)}")

    faults = [] if is_passed else ["a test fails"]
    for place in unexplained:
        faults.append(f"not covered, and no reason in {REASONS.relative_to(ROOT)}: {place}")
    for reason in reasons:
        if not reason.text:
            faults.append(f"{reason.where}: no reason follows {reason.kind} {reason.path}: {reason.code}")
        elif not reason.uses and reason.kind != "sometimes":
            news = f"{reason.where}: out of date, this is covered or gone: {reason.path}: {reason.code}"
            if reason.kind == "line":
                faults.append(news)
            else:
                print(f"coverage: {news}", file=sys.stderr)
    if lines_of["in all"].percent() < LEAST_LINES:
        faults.append(f"less than {LEAST_LINES} % of the lines are covered")
    if branches_of["in all"].percent() < LEAST_BRANCHES:
        faults.append(f"less than {LEAST_BRANCHES} % of the branches are covered")
    for fault in faults:
        print(f"coverage: {fault}", file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except Failure as failure:
        print(f"coverage: {failure}", file=sys.stderr)
        sys.exit(1)
