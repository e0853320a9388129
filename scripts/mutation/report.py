"""What is printed: a line for each verdict, and the table at the end."""

from mutation.campaign import EQUAL, INVALID, NOTICED, SAME_CODE, SURVIVED, TIMED_OUT


def line_of(verdict):
    site = verdict.site
    place = f"{site.path}:{site.line}"
    note = f"  ({verdict.note})" if verdict.note else ""
    return f"{verdict.kind:<9} {site.ident} {place} {site.function} [{site.operator}]{note} {verdict.seconds:.1f} s"


def diff_of(site):
    return f"    - {site.before}\n    + {site.after}"


def noticed_share(verdicts):
    """Of the mutants that could be built and aren't known to be equal; None if there are none."""
    noticed = sum(verdict.kind in (NOTICED, TIMED_OUT) for verdict in verdicts)
    survived = sum(verdict.kind == SURVIVED for verdict in verdicts)
    return noticed / (noticed + survived) if noticed + survived else None


def table_of(verdicts):
    kinds = [NOTICED, TIMED_OUT, SURVIVED, EQUAL, SAME_CODE, INVALID]
    folders = {}
    for verdict in verdicts:
        parts = verdict.site.path.split("/")
        folders.setdefault("/".join(parts[:2]), []).append(verdict)
    lines = [f"{'':<32}{'sites':>7}" + "".join(f"{kind:>11}" for kind in kinds) + f"{'noticed':>10}"]
    for folder, own in [*sorted(folders.items()), ("all", verdicts)]:
        counts = "".join(f"{sum(v.kind == kind for v in own):>11}" for kind in kinds)
        share = noticed_share(own)
        lines.append(f"{folder:<32}{len(own):>7}{counts}{'' if share is None else f'{share:>9.1%}':>10}")
    return "\n".join(lines)


def time_of(verdicts):
    tried = [verdict.seconds for verdict in verdicts if verdict.kind != EQUAL]
    return f"{sum(tried) / len(tried):.1f} s a mutant" if tried else "nothing was tried"
