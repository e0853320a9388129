"""The list of changes that were read and make no difference, in equal_mutants.txt.

Each entry says where, what and why:

    zelm/core/base64.cpp: encodeBase64
    - before, the line or lines that the change touches, comments left out
    + after
    = the reason, which goes on in indented lines
"""

import os

PATH = os.path.join(os.path.dirname(__file__), "equal_mutants.txt")


def read(path=PATH):
    """The reasons, by Site.key."""
    reasons, key, last = {}, [], None
    with open(path) as lines:
        for number, line in enumerate(lines, 1):
            line = line.rstrip()
            if not line or line.startswith("#"):
                continue
            mark, rest = line[:2], line[2:].strip()
            if mark in ("- ", "+ ") or line in ("-", "+"):
                key.append(rest)
            elif mark == "= " and len(key) == 4:
                last = tuple(key)
                reasons[last] = rest
            elif mark == "  " and last:
                reasons[last] += " " + rest
            elif ":" in line and mark.strip() == mark:
                path_of_site, _, function = line.partition(":")
                key, last = [path_of_site, function.strip()], None
            else:
                raise ValueError(f"{path}:{number}: no line of an entry: {line}")
    return reasons


def entry(site, reason="?"):
    """How a site would be written down."""
    return f"{site.path}: {site.function}\n- {site.before}\n+ {site.after}\n= {reason}\n"
