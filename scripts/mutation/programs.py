"""Which test programs cover a file, what of them runs first, and how a program is run.

Tests mirror the sources: tests/metadata tests zelm/metadata. A change is shown to the short tests of its own folder
first, then to that folder's long ones and to programs of tests that can't share one with the others, and then to the
short tests of the folders that build on it. Tests that put
millions of messages through threads take longer than what they would notice here is worth, and are left out.
"""

import fnmatch
import os
import re
import resource
import signal
import subprocess
import tempfile
import time
from dataclasses import dataclass

# Tests of about a third of a second and more, with the sources (without their endings) that they are there for.
_LONG = {
    "core": [("*agreesWithThePlainDecoderOnEveryText*", "base64")],
    "metadata": [
        ("DeepElement*", "element* level_stack nesting parts"),
        ("DeepTokenReader.*", "reader_json reader_json_scanner level_stack nesting json_tokens stream_buffer"),
        ("DeepFastReader.*:DeepJsonStrings.*", "reader_json_fast json_strings level_stack nesting parts"),
        ("DeepPathSearch.*", "path_queries level_stack parts"),
        ("DeepWriterJson.*", "writer_json level_stack nesting parts"),
        ("JsonAllocation.failing*:FastReaderParsers.agree*", "reader_json_fast"),
        ("JsonAllocation.isNotNeededForWhiteSpaceInFront*", "reader_json reader_json_scanner json_tokens"),
        ("TokenReaderNumbers.are*:TokenReaderStream.isReadAlike*:TokenReaderStream.mayBeAFile*",
         "reader_json reader_json_scanner json_tokens stream_buffer"),
        ("WriterJson.writesAnyNumber*", "writer_json stream_buffer"),
        ("JsonRoundTrip.*", "reader_json* writer_json"),
        ("FindSubElementsHelper.agrees*", "path_queries"),
    ],
    "msgs": [("FindCoveringOracle.findsWhatA*", "handler_lookup message_key")],
    "components": [("MapFileOutOfMemory.*:MapInitialisation.copesWithAFileOfAnyDepth", "components_map*")],
    "messaging": [
        ("AtOneDispatcher.*WhileManyThreads*:Matching.isThatOfAWalk*",
         "message_dispatcher subscriptions delivery receiver retired_receivers topic_table patterns striped_mutex"),
        ("FixedDepthUnderLoad.*:*OfManyProducers*:*wakesAThreadForEachMessage*",
         "message_store message_queue fixed_depth_message_queue callback_message_queue"),
        ("*WhileManyThreadsPut:CallGate.isPassedByNobodyAnyMore*", "callback_message_queue call_gate"),
        ("TopicTable.findsWhatAWalk*", "topic_table patterns"),
        ("StripedMutex.letsNobodyWrite*", "striped_mutex"),
    ],
}
# Further programs of a folder, with the sources (without their endings) that they are there for.
_FURTHER_PROGRAMS = {
    "metadata": [
        ("reader_memory", "reader_json_fast level_stack asked_memory"),
        ("metadata_cell_heap", "cell_heap asked_memory"),
        ("metadata_cells", "cell_heap cells operator_new"),
        ("metadata_fixed_place", "operator_new"),
    ]
}
_LEFT_OUT = {
    "metadata": ["DeepElement.ofAMillionLevels*"],
    "messaging": ["ForwardingUnderLoad.*", "UnderLoad.*"],
}
_USERS = {"core": ["metadata", "components", "msgs"], "metadata": ["msgs", "components"], "msgs": ["messaging"]}

_MEMORY = 4 << 30
_FILE_SIZE = 256 << 20
_PROCESSOR_SECONDS = 900  # for those that nobody is left to end


@dataclass(frozen=True)
class Stage:
    """Some of the tests of a folder's program."""

    folder: str  # or the name of a further program
    long_tests: str = ""  # the patterns of those that are meant; without any, all short ones are

    @property
    def program(self):
        return f"zelm_{self.folder}_tests"

    @property
    def filter(self):
        left_out = _LEFT_OUT.get(self.folder, [])
        if not self.long_tests:
            left_out = [patterns for patterns, _ in _LONG.get(self.folder, [])] + left_out
        return (self.long_tests or "*") + ("-" + ":".join(left_out) if left_out else "")


def folder_of(path):
    """The folder of tests/ that tests a source."""
    return "messaging" if path.startswith("component_libraries/") else path.split("/")[1]


def stages_for(path):
    """In the order in which they run, until one notices."""
    folder, stem = folder_of(path), os.path.splitext(os.path.basename(path))[0]
    stages = [Stage(folder)]
    for tests, sources in _LONG.get(folder, []):
        if any(fnmatch.fnmatch(stem, pattern) for pattern in sources.split()):
            stages.append(Stage(folder, tests))
    for program, sources in _FURTHER_PROGRAMS.get(folder, []):
        if stem in sources.split():
            stages.append(Stage(program))
    return stages + [Stage(user) for user in _USERS.get(folder, [])]


def own_programs_of(path):
    """The programs of the file's folder among them: the only ones that may have a part of it compiled into them."""
    users = {Stage(user).program for user in _USERS.get(folder_of(path), [])}
    return sorted({stage.program for stage in stages_for(path)} - users)


@dataclass
class Outcome:
    passed: bool
    how: str  # empty if it passed: the test that failed, the signal, or that time was up
    timed_out: bool
    seconds: float


def run_stage(stage, build, scratch, timeout):
    """Runs the tests up to the first failure, within limits of time, memory and what they may write."""
    # Not below the tree, whose path the tests' own files would have in theirs: it may hold words by which the search for
    # component libraries leaves a file out, or characters that mean others to a pattern.
    with tempfile.TemporaryDirectory(prefix="zelm-mutate-", dir="/tmp", ignore_cleanup_errors=True) as temporary:
        return _run_in(temporary, stage, build, os.path.join(scratch, "tests.log"), timeout)


def _run_in(temporary, stage, build, log_path, timeout):
    command = [os.path.join(build, "bin", stage.program), "--gtest_fail_fast", "--gtest_color=no"]
    command.append("--gtest_filter=" + stage.filter)
    begin = time.monotonic()
    with open(log_path, "w") as log:
        process = subprocess.Popen(
            command,
            cwd=temporary,
            env={**os.environ, "TMPDIR": temporary},
            stdin=subprocess.DEVNULL,
            stdout=log,
            stderr=subprocess.STDOUT,
            start_new_session=True,
            preexec_fn=_limit,
        )
        try:
            status = process.wait(timeout)
        except subprocess.TimeoutExpired:
            status = None
        finally:
            _end(process)
    seconds = time.monotonic() - begin
    if status is None:
        return Outcome(False, f"no end within {timeout:.0f} s{_last_test(log_path)}", True, seconds)
    if status == 0:
        return Outcome(True, "", False, seconds)
    return Outcome(False, _what_failed(log_path, status), False, seconds)


def _limit():
    resource.setrlimit(resource.RLIMIT_AS, (_MEMORY, _MEMORY))
    resource.setrlimit(resource.RLIMIT_FSIZE, (_FILE_SIZE, resource.RLIM_INFINITY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_CPU, (_PROCESSOR_SECONDS, _PROCESSOR_SECONDS))


def _end(process):
    """With the children that it may have left: it leads a session of its own."""
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    process.wait()


def _log_text(path):
    with open(path, "rb") as log:
        log.seek(max(0, os.path.getsize(path) - 200_000))
        return log.read().decode(errors="replace")


def _last_test(log_path):
    running = re.findall(r"^\[ RUN      \] (\S+)", _log_text(log_path), re.MULTILINE)
    return f" in {running[-1]}" if running else ""


def _what_failed(log_path, status):
    failed = re.search(r"^\[  FAILED  \] (\w[\w/]*\.[\w/]+)", _log_text(log_path), re.MULTILINE)
    if failed:
        return failed.group(1)
    ending = f"signal {-status}" if status < 0 else f"status {status}"
    return ending + _last_test(log_path)
