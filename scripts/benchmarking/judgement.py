"""Compares what was measured with what is expected, and puts it into a table."""

import collections
import math

# How far beyond its limit a ratio may be before --check fails: measurements drift.
TOLERANCE = 1.1

# ratio: ours by theirs, or theirs by ours for "at least"; None where there are no two. verdict: MET, NEARLY
# (within the tolerance), MISSED, LEFT_OUT (the peer isn't installed), UNKNOWN (no such benchmark), or None without a
# target.
Row = collections.namedtuple("Row", "what against target ours theirs ratio verdict")
MET, NEARLY, MISSED, LEFT_OUT, UNKNOWN = "yes", "nearly", "NO", "left out", "NO BENCHMARK"


def verdict_on(value, limit, is_least):
    if is_least:
        return MET if value >= limit else NEARLY if value >= limit / TOLERANCE else MISSED
    return MET if value <= limit else NEARLY if value <= limit * TOLERANCE else MISSED


def divided(dividend, divisor):
    """Of nothing, be it a count or a time too short for the clock, everything is infinitely more."""
    return dividend / divisor if divisor else math.inf if dividend else 1.0


def judge(target, measured, left_out):
    """The row of a target. left_out: pairs of a folder and a peer."""
    sides = measured.get(target.what, {})
    ours, theirs = sides.get("ours"), sides.get(target.against)
    row = Row(target.what, target.against, target, ours, theirs, None, UNKNOWN)
    if ours and not theirs and (ours.folder, target.against) in left_out:
        return row._replace(verdict=LEFT_OUT)
    if not ours or not theirs:
        return row

    field = target.counter or "time"
    our_value, their_value = getattr(ours, field), getattr(theirs, field)
    if our_value is None or their_value is None:
        return row
    if target.against == "ours":
        return row._replace(verdict=verdict_on(our_value, target.limit, target.is_least))
    dividend, divisor = (their_value, our_value) if target.is_least else (our_value, their_value)
    ratio = divided(dividend, divisor)
    return row._replace(ratio=ratio, verdict=verdict_on(ratio, target.limit, target.is_least))


def rows_of(targets, measured, left_out):
    """A row for each target, and one for each comparison of times that has none."""
    rows = [judge(target, measured, left_out) for target in targets]
    with_target = {(target.what, target.against) for target in targets if not target.counter}
    for what, sides in sorted(measured.items()):
        ours = sides.get("ours")
        for who, theirs in sorted(sides.items()):
            if ours and who != "ours" and (what, who) not in with_target:
                rows.append(Row(what, who, None, ours, theirs, divided(ours.time, theirs.time), None))
    return rows


def shown_time(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}" if nanoseconds < 1000 * size else f"{nanoseconds / size:.0f} {unit}"
    return f"{nanoseconds:.3g} ns"


def shown(measured, field):
    value = getattr(measured, field) if measured else None
    if value is None:
        return "-"
    return shown_time(value) if field == "time" else f"{value:,.0f}" if value == int(value) else f"{value:,.2f}"


def shown_ratio(row):
    if row.ratio is None:
        return "-"
    return f"{row.ratio:.3g} x" if row.target and row.target.is_least else f"{row.ratio:.2f}"


HEADINGS = ("what", "against", "ours", "theirs", "ratio", "target", "met", "allocations", "theirs")


def cells(row):
    field = (row.target.counter if row.target else None) or "time"
    against_other = row.against != "ours"
    return (row.what, row.against if against_other else "", shown(row.ours, field),
            shown(row.theirs, field) if against_other else "", shown_ratio(row) if against_other else "",
            row.target.text if row.target else "", row.verdict or "",
            shown(row.ours, "allocations"), shown(row.theirs, "allocations") if against_other else "")


def table(rows):
    """The lines of the table, in the form of Markdown."""
    lines = [HEADINGS] + [cells(row) for row in rows]
    widths = [max(len(line[column]) for line in lines) for column in range(len(HEADINGS))]
    is_text = (True, True, False, False, False, True, True, False, False)

    def joined(line):
        return "| " + " | ".join(
            text.ljust(width) if left else text.rjust(width) for text, width, left in zip(line, widths, is_text)) + " |"

    rule = "|" + "|".join("-" * (width + 1) + ("-" if left else ":") for width, left in zip(widths, is_text)) + "|"
    return [joined(lines[0]), rule] + [joined(line) for line in lines[1:]]
