"""What was measured: Google Benchmark's JSON files, one for each program."""

import collections
import json
import os
import re
import statistics

# Times in nanoseconds. allocations and bytes are None where they weren't counted.
Measured = collections.namedtuple("Measured", "time allocations bytes folder")

# What Google Benchmark appends to a name.
DECORATION = re.compile(r"(iterations|repeats|min_time|min_warmup_time|threads):[^/]*|process_time|real_time|manual_time")
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


class Failed(Exception):
    """A benchmark that reports an error instead of a result."""


def split(name):
    """(row/case, who, whether wall time counts) of a benchmark's name."""
    parts = name.split("/")
    kept = [part for part in parts if not DECORATION.fullmatch(part)]
    is_wall_time = "real_time" in parts or "manual_time" in parts
    return "/".join(kept[:1] + kept[2:]), "/".join(kept[1:2]), is_wall_time


def folder_of(path):
    return re.sub(r"^zelm_|_benchmarks(\.json)?$", "", os.path.basename(path))


def median_of(runs, field):
    values = [run[field] for run in runs if field in run]
    return statistics.median(values) if values else None


def count_of(runs, counter):
    """For one iteration. What only the first of thousands does is no part of it."""
    count = median_of(runs, counter)
    return None if count is None else round(count, 2)


def read(paths):
    """{row/case: {who: Measured}}: the median of all repetitions."""
    runs_of = collections.defaultdict(list)
    for path in paths:
        with open(path, encoding="utf-8") as file:
            for run in json.load(file)["benchmarks"]:
                if run.get("error_occurred"):
                    raise Failed(f"{run['name']}: {run.get('error_message', '')}")
                if run["run_type"] == "iteration":
                    runs_of[run["run_name"], folder_of(path)].append(run)

    measured = {}
    for (name, folder), runs in runs_of.items():
        what, who, is_wall_time = split(name)
        time = median_of(runs, "real_time" if is_wall_time else "cpu_time") * NANOSECONDS[runs[0]["time_unit"]]
        measured.setdefault(what, {})[who] = Measured(time, count_of(runs, "allocations"), count_of(runs, "bytes"), folder)
    return measured
