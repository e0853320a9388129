"""Do the tests notice? Makes small changes to the sources, one at a time, and runs the tests that cover them.

Changes are made in copies below build/mutate, never to the files at hand: a comparison, an operator, a condition or a
constant becomes another, a statement goes. Each mutant is noticed by a test (a failure, a crash, no end), or it
survives; one that can't be compiled is invalid. Tests that don't end run once more, with twice the time, and all run once
more before a mutant survives. Survivors are to be read: either a test is missing, or the change makes
no difference, and then it is listed in scripts/mutation/equal_mutants.txt with the reason. Those aren't tried again.
Which sites are tried is a sample by a fixed seed; --all tries each of them.

Exit status: 0 the tests noticed each mutant that was tried and isn't listed, 1 one survived, or none was tried, 2 wrong
usage, or the sources don't build or pass their tests as they stand. Sites that --seconds leaves no time for are counted
and are no failure.
"""

import fnmatch
import os
import signal
import subprocess
import sys
import time

SCRIPTS = os.path.dirname(os.path.dirname(os.path.realpath(__file__)))
ROOT = os.path.dirname(SCRIPTS)
sys.path.insert(0, SCRIPTS)

from mutation import equal, report  # noqa: E402
from mutation.campaign import EQUAL, SURVIVED, Campaign, TestsFail  # noqa: E402
from mutation.sites import sample, sites_of  # noqa: E402
from mutation.workshop import BuildFailed  # noqa: E402
from shared.arguments import Parser, count, seconds  # noqa: E402


SAMPLE = 300


def arguments():
    usage = "[--sample N | --all | --site ID] [--files PATTERN] [--seed N] [--jobs N] [--seconds LIMIT] [--list]"
    parser = Parser("mutate", usage, __doc__)
    which = parser.add_mutually_exclusive_group()
    which.add_argument("--sample", type=count, metavar="N", help=f"try N of the sites ({SAMPLE})")
    which.add_argument("--all", action="store_true", help="try all sites")
    which.add_argument("--site", metavar="ID", help="show and try this one alone, also if it is listed as equal")
    parser.add_argument("--seed", type=int, default=1, metavar="N", help="which N of them (1)")
    parser.add_argument("--files", metavar="PATTERN", help="only files whose path matches, as zelm/core/* does")
    parser.add_argument("--jobs", type=count, default=1, metavar="N", help="mutants at a time, each with a build (1)")
    parser.add_argument("--seconds", type=seconds, metavar="LIMIT",
                        help="begin no further mutant after this time, which counts from when all is built and measured")
    parser.add_argument("--list", action="store_true", help="print the sites instead of trying them")
    options = parser.parse_args()
    if options.site and options.files:
        parser.error("argument --files: not allowed with argument --site")
    if options.sample is None:
        options.sample = SAMPLE
    return options


def all_sites():
    sites = []
    for top in ("component_libraries", "zelm"):
        for folder, subfolders, names in os.walk(os.path.join(ROOT, top)):
            subfolders.sort()
            for name in sorted(names):
                if name.endswith((".cpp", ".h")):
                    path = os.path.relpath(os.path.join(folder, name), ROOT)
                    with open(os.path.join(ROOT, path)) as file:
                        sites += sites_of(path, file.read())
    return sites


def chosen(sites, options):
    if options.site:
        sites = [site for site in sites if site.ident == options.site]
        if not sites:
            raise ValueError(f"there is no site {options.site} (see scripts/mutate --list --all)")
        return sites
    if options.files:
        sites = [site for site in sites if fnmatch.fnmatch(site.path, options.files)]
        if not sites:
            raise ValueError(f"no file with code matches {options.files} (a pattern for paths is meant, such as zelm/core/*)")
    return sites if options.all else sample(sites, options.sample, options.seed)


def say(verdict):
    print(report.line_of(verdict), flush=True)
    if verdict.kind == SURVIVED:
        print(report.diff_of(verdict.site), flush=True)


def main():
    begin = time.monotonic()
    options = arguments()
    everything = all_sites()
    sites = chosen(everything, options)
    reasons = listed = equal.read()
    if options.list:
        for site in sites:
            print(f"{site.ident} {site.path}:{site.line} {site.function} [{site.operator}]\n{report.diff_of(site)}")
        print(f"{len(sites)} sites")
        return 0

    subprocess.run([os.path.join(SCRIPTS, "setup"), "--checks"], check=True)
    if options.site:
        print(report.diff_of(sites[0]), flush=True)
        reasons = {}
    signal.signal(signal.SIGTERM, signal.default_int_handler)  # ends as Ctrl-C does, with a report
    campaign = Campaign(ROOT, options.jobs, reasons, say, options.seconds)
    left = campaign.run(sites)

    verdicts = campaign.verdicts
    survivors = sorted((v.site for v in verdicts if v.kind == SURVIVED), key=lambda site: (site.path, site.start))
    unexplained = [site for site in survivors if site.key not in listed]
    os.makedirs(os.path.join(ROOT, "build", "mutate"), exist_ok=True)
    with open(os.path.join(ROOT, "build", "mutate", "survivors.txt"), "w") as file:
        file.write("\n".join(equal.entry(site) for site in survivors))
    print()
    print(report.table_of(verdicts))
    for path, function, before, _ in listed.keys() - {site.key for site in everything}:
        print(f"equal_mutants.txt names a change that no site makes any more: {path}: {function}: {before}")
    if left:
        print(f"time was up: {left} of {len(sites)} sites weren't tried")
    print(f"{report.time_of(verdicts)}, {time.monotonic() - begin:.0f} s in all; survivors: build/mutate/survivors.txt")
    if all(verdict.kind == EQUAL for verdict in verdicts):
        print("mutate: no mutant was tried", file=sys.stderr)
        return 1
    if unexplained:
        print(f"mutate: {len(unexplained)} survived; each needs a test, or a reason in equal_mutants.txt", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (ValueError, BuildFailed, TestsFail, subprocess.CalledProcessError) as problem:
        print(f"mutate: {problem}", file=sys.stderr)
        sys.exit(2)
