"""Makes one mutant after the other, in one or several workshops at once, and collects what becomes of them."""

import os
import queue
import sys
import threading
import time
from dataclasses import dataclass

from mutation.programs import own_programs_of, run_stage, stages_for
from mutation.sites import is_widely_included
from mutation.workshop import Workshop

NOTICED, TIMED_OUT, SURVIVED = "noticed", "timed out", "survived"
INVALID, EQUAL, SAME_CODE = "invalid", "equal", "same code"


@dataclass
class Verdict:
    site: object
    kind: str
    note: str  # the test that noticed, the reason why it is equal, or the compiler's first error
    seconds: float


class TestsFail(Exception):
    """The tests notice something where nothing was changed."""


class Campaign:
    """`say` is called with each verdict, one at a time, as they come. `limit` is the time in seconds after which no
    further mutant begins; what comes before the first one, the build most of all, isn't part of it."""

    def __init__(self, root, jobs, reasons, say, limit=None):
        self._jobs = jobs
        self._reasons = reasons
        self._say = say
        self._limit = limit
        self._seconds = {}  # what each stage takes where nothing was changed
        self._lock = threading.Lock()
        self._building = threading.Lock()
        self._measuring = threading.Lock()
        self._stop = threading.Event()
        self._directory = os.path.join(root, "build", "mutate")
        self._root = root
        self.verdicts = []
        self.failure = None

    def run(self, sites):
        """Returns the number of sites that there was no time for."""
        listed = [site for site in sites if site.key in self._reasons]
        waiting = queue.SimpleQueue()
        for site in sites:
            if site.key not in self._reasons:
                waiting.put(site)
        for site in listed:
            self._add(Verdict(site, EQUAL, self._reasons[site.key], 0))
        if waiting.empty():
            return 0
        stages = {stage for site in sites if site.key not in self._reasons for stage in _stages(site)}
        threads = [
            threading.Thread(target=self._work, args=(number, stages, waiting)) for number in range(1, self._jobs + 1)
        ]
        for thread in threads:
            thread.start()
        try:
            for thread in threads:
                thread.join()
        except KeyboardInterrupt:
            self._stop.set()
            for thread in threads:
                thread.join()
        if self.failure:
            raise self.failure
        return waiting.qsize()

    def _work(self, number, stages, waiting):
        processes = max(1, (os.cpu_count() or 1) // self._jobs)
        workshop = Workshop(self._root, os.path.join(self._directory, f"job{number}"), processes)
        try:
            self._prepare(workshop, stages)
            first = now = time.monotonic()
            while not self._stop.is_set() and (now == first or self._limit is None or now - first < self._limit):
                try:
                    site = waiting.get_nowait()
                except queue.Empty:
                    break
                begin = now
                kind, note = self._try_out(workshop, site)
                now = time.monotonic()
                self._add(Verdict(site, kind, note, now - begin))
        except Exception as failure:  # told by run, when the other threads have ended too
            self.failure = self.failure or failure
            self._stop.set()

    def _prepare(self, workshop, stages):
        programs = {stage.program for stage in stages} | {"ZelmCore"}
        if any(stage.folder == "messaging" for stage in stages):
            programs.add("ZelmMessaging")
        with self._building:  # the next one finds what it needs in the compiler's cache
            print(f"mutate: building in {workshop.directory}", file=sys.stderr, flush=True)
            workshop.prepare(programs)
        with self._measuring:  # the first one measures for all
            for stage in sorted(stages, key=lambda stage: (stage.folder, stage.long_tests)):
                if stage in self._seconds or self._stop.is_set():
                    continue
                tests = stage.long_tests or "short tests"
                print(f"mutate: {stage.program} unchanged: {tests}", file=sys.stderr, flush=True)
                outcome = run_stage(stage, workshop.build, workshop.directory, 300)
                if not outcome.passed:
                    raise TestsFail(f"{stage.program} fails where nothing was changed: {outcome.how}")
                self._seconds[stage] = outcome.seconds

    def _add(self, verdict):
        with self._lock:
            self.verdicts.append(verdict)
            self._say(verdict)

    def _try_out(self, workshop, site):
        original = workshop.read(site.path)
        changed = site.applied_to(original)
        try:
            workshop.write(site.path, changed)
            is_built, words = workshop.compile(site.path)
            if not is_built:
                return INVALID, _first_error(words)
            stages = _stages(site)
            # Some tests give a thread a moment to do what it mustn't, which a busy machine may keep it from: whatever
            # would survive is tried once more.
            for number, stage in enumerate(2 * stages):
                if number == 1 and workshop.has_same_code(site.path, original, changed):
                    return SAME_CODE, "compiled with optimisation, both are the same"
                workshop.make_ready(stage.program, site.path)
                outcome = self._run(stage, workshop)
                if not outcome.passed:
                    return TIMED_OUT if outcome.timed_out else NOTICED, f"{stage.folder}: {outcome.how}"
            return SURVIVED, ""
        finally:
            workshop.restore(site.path, original)

    def _run(self, stage, workshop):
        """A machine that is busy for a while makes tests slow: those that don't end get twice the time, once."""
        limit = 8 + 4 * self._seconds[stage]
        outcome = run_stage(stage, workshop.build, workshop.directory, limit)
        return run_stage(stage, workshop.build, workshop.directory, 2 * limit) if outcome.timed_out else outcome


def _stages(site):
    """Where a public header was changed, the programs of other folders would have to be built again."""
    stages = stages_for(site.path)
    if is_widely_included(site.path):
        return [stage for stage in stages if stage.program in own_programs_of(site.path)]
    return stages


def _first_error(words):
    errors = [line for line in words.splitlines() if "error: " in line]
    return errors[0].split("error: ")[-1].strip() if errors else words[-200:]
