"""What is expected of the benchmarks: the lines of benchmarks/targets.txt, whose head tells their form."""

import collections
import re

# row and case: of the benchmark; counter: None for time, or "allocations" or "bytes"; is_least: whether a ratio below the
# limit misses it, instead of one above it; text: the third field as it stands.
Target = collections.namedtuple("Target", "what against counter is_least limit text")

WHAT = re.compile(r"[a-z0-9_]+(/\S+)?")
AGAINST = re.compile(r"[a-z0-9_]+")
EXPECTED = re.compile(r"(?:(allocations|bytes) )?at (most|least) (\d+(?:\.\d+)?)")


class Unreadable(Exception):
    """Lines that aren't in the form."""


def parse(line):
    """The target of a line; None for one that is empty or a comment."""
    line = line.split("#")[0].strip()
    if not line:
        return None
    fields = [field.strip() for field in line.split("|")]
    if len(fields) != 3:
        raise Unreadable("expected three fields, \"row/case | against | at most X\"")
    what, against, text = fields
    if not WHAT.fullmatch(what):
        raise Unreadable(f"\"{what}\" is no row/case")
    if not AGAINST.fullmatch(against):
        raise Unreadable(f"\"{against}\" is nobody to compare with")
    expected = EXPECTED.fullmatch(text)
    if not expected:
        raise Unreadable(f"\"{text}\" is neither \"at most X\" nor \"at least X\", with or without a counter before")
    counter, bound, limit = expected[1], expected[2], float(expected[3])
    if counter and bound == "least":
        raise Unreadable(f"of {counter} the fewer the better: \"at most\"")
    if against == "ours" and not counter:
        raise Unreadable("a time is compared with somebody else's")
    if bound == "least" and limit == 0:
        raise Unreadable("every time is at least 0 times faster")
    return Target(what, against, counter, bound == "least", limit, text)


def read(path):
    """All targets. Raises Unreadable with a line for each one that isn't in the form."""
    targets, places, faults = [], {}, []
    with open(path, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            try:
                target = parse(line)
                if not target:
                    continue
                key = (target.what, target.against, target.counter)
                if key in places:
                    raise Unreadable(f"line {places[key]} says what is expected of it")
                places[key] = number
                targets.append(target)
            except Unreadable as fault:
                faults.append(f"{path}:{number}: {fault}")
    if faults:
        raise Unreadable("\n".join(faults))
    return targets
