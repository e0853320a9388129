"""A copy of the source tree with a build of its own, where one file at a time is changed."""

import json
import os
import shlex
import subprocess

from mutation.programs import own_programs_of
from mutation.sites import is_widely_included

_NOT_COPIED = {"build", "examples", "docs", "__pycache__"}


class BuildFailed(Exception):
    """The tree doesn't build as it stands."""


class Workshop:
    """Lives in `directory`, which is kept, so that the next run builds only what has changed since."""

    def __init__(self, root, directory, processes):
        self._root = root
        self._processes = str(processes)  # that a build may use at a time
        self._outdated = set()
        self.directory = directory
        self.tree = os.path.join(directory, "tree")
        self.build = os.path.join(self.tree, "build", "dev")
        # As far below the tree as the user's own build of this preset, so that ccache finds the same paths in both.
        self._environment = {**os.environ, "CCACHE_BASEDIR": root, "CCACHE_NOHASHDIR": "1", "ZELM_MUTANT": ""}

    def prepare(self, programs):
        """Copies the tree and builds the libraries and the test programs."""
        self._copy_tree()
        launcher = os.path.join(self._root, "scripts", "mutation", "compiler_launcher")
        configure = ["cmake", "--preset", "dev", f"-DCMAKE_CXX_COMPILER_LAUNCHER={launcher}"]
        # A program needn't be linked again when the shared library changes.
        configure += ["-DCMAKE_LINK_DEPENDS_NO_SHARED=ON", "-DZELM_BUILD_EXAMPLES=OFF", "-DZELM_INSTALL=OFF"]
        configure += ["-DZELM_JOIN_SOURCES=ON"]  # from scratch it is quicker
        self._run(configure)
        self._run(["ninja", "-C", self.build, *sorted(programs)])

    def _run(self, command):
        finished = subprocess.run(
            command,
            cwd=self.tree,
            env=self._environment,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            start_new_session=True,  # Ctrl-C lets it end in its own time
        )
        if finished.returncode != 0:
            raise BuildFailed(finished.stdout[-4000:])

    def _copy_tree(self):
        """Files that are the same keep their time stamps, and what was built from them."""
        wanted = set()
        for folder, subfolders, names in os.walk(self._root):
            subfolders[:] = [n for n in subfolders if n not in _NOT_COPIED and not n.startswith(".")]
            for name in names:
                source = os.path.join(folder, name)
                if name.startswith(".") or os.path.islink(source) or not os.path.isfile(source):
                    continue
                relative = os.path.relpath(source, self._root)
                wanted.add(relative)
                with open(source, "rb") as file:
                    self._write_if_other(relative, file.read())
        for folder, subfolders, names in os.walk(self.tree):
            subfolders[:] = [n for n in subfolders if n != "build"]
            for name in names:
                path = os.path.join(folder, name)
                if os.path.relpath(path, self.tree) not in wanted:
                    os.remove(path)

    def _write_if_other(self, relative, content):
        path = os.path.join(self.tree, relative)
        try:
            with open(path, "rb") as file:
                if file.read() == content:
                    return
        except FileNotFoundError:
            os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content)

    def read(self, path):
        with open(os.path.join(self.tree, path)) as file:
            return file.read()

    def write(self, path, text):
        self._write_if_other(path, text.encode())

    def compile(self, path):
        """Builds what the tests of the changed file need. False if it can't be built, with the compiler's words."""
        self._outdated.difference_update(self._targets(path))
        return self._compile(self._targets(path), "*" if path.endswith(".h") else path)

    def make_ready(self, program, path):
        """Builds again what earlier mutants went into, if the program is among it, while another one is tried."""
        if program in self._outdated:
            self._compile(sorted(self._outdated), path)
            self._outdated.clear()

    def _compile(self, targets, mutant):
        finished = subprocess.run(
            ["ninja", "-C", self.build, "-j", self._processes, *targets],
            env={**self._environment, "ZELM_MUTANT": mutant},
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            start_new_session=True,
        )
        return finished.returncode == 0, finished.stdout

    def _targets(self, path):
        library = "ZelmMessaging" if path.startswith("component_libraries/") else "ZelmCore"
        # These too: a test may include a private header, or have a source compiled into its program once more.
        return [library, *own_programs_of(path)]

    def has_same_code(self, path, original, changed):
        """Whether an optimising compiler makes the same of both texts: they can't behave differently then."""
        command = self._optimising_compiler(path)
        if not command:
            return False
        result = os.path.join(self.directory, "optimised.o")
        codes = []
        for text in (original, changed):
            self.write(path, text)
            finished = subprocess.run(
                command + ["-o", result], cwd=self.build, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL
            )
            if finished.returncode != 0:
                return False
            with open(result, "rb") as file:
                codes.append(file.read())
            os.remove(result)
        return codes[0] == codes[1]

    def _optimising_compiler(self, path):
        with open(os.path.join(self.build, "compile_commands.json")) as file:
            entries = json.load(file)
        source = os.path.join(self.tree, path)
        for entry in entries:
            if os.path.join(entry["directory"], entry["file"]) != source:
                continue
            words = shlex.split(entry["command"])
            if os.path.basename(words[0]) in ("ccache", "compiler_launcher"):
                words = words[1:]
            at = words.index("-o")
            del words[at : at + 2]
            return words + ["-O2", "-g0", "-w"]
        return None

    def restore(self, path, original):
        """What the mutant went into beside the core library, is built again: at once, or when it is needed."""
        self.write(path, original)
        if is_widely_included(path) and not path.startswith("component_libraries/"):
            self._compile(self._targets(path), "")
        else:
            self._outdated.update(self._targets(path))
