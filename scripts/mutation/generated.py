"""Tries generated mutants of one module: a fixed sample, each judged by the tests of that module only."""

import os
import random
import resource
import signal
import subprocess
import time
import tomllib

from operators import mutants_of
from tree import copy_tree, run

SETTINGS = ["-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O1",
            "-DNEROVA_LANES_OPTIMIZATION=-O1", "-DNEROVA_WARNINGS_AS_ERRORS=OFF", "-DNEROVA_BUILD_CAMERAS=ON"]
# A mutant may loop for ever and take memory and disk meanwhile.
TIME_LIMIT = (20, 5)  # seconds, and times what a test takes without a mutant
MEMORY_LIMIT = 8 << 30
FILE_LIMIT = 2 << 30


def prepare_process():
    signal.signal(signal.SIGINT, signal.SIG_DFL)  # a shell's background jobs ignore it, and tests raise it
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_LIMIT, FILE_LIMIT))


def read_modules(folder):
    return tomllib.loads((folder / "modules.toml").read_text())


class GeneratedMutants:
    def __init__(self, root, folder, name, module):
        self.name = name
        self.module = module
        self.sources = folder / "tree"
        self.build = folder / "build-generated"
        self.root = root
        self.usual = {}  # seconds that each test takes without a mutant
        self.equivalent = {(entry["file"], entry["line"], entry["change"]): entry["reason"]
                           for entry in module.get("equivalent", [])}

    def prepare(self):
        """Builds a copy of the sources. Returns an error text, or None."""
        copy_tree(self.root, self.sources)
        result = run(["cmake", "-S", self.sources, "-B", self.build, *SETTINGS])
        if result.returncode == 0:
            result = self.compile()
        if result.returncode != 0:
            return result.stdout[-3000:] + "\nThe tree itself does not build."
        failed = self.first_failure()
        return f"{failed} fails without any mutant." if failed else None

    def compile(self):
        return run(["cmake", "--build", self.build, "--target", *self.module["targets"]])

    def first_failure(self):
        for test in self.module["tests"]:
            program, *arguments = test.split()
            command = [self.build / "tests/bin" / program, "--gtest_fail_fast", "--gtest_brief=1", *arguments]
            # A session of its own, so that what a test has started ends with it.
            process = subprocess.Popen(command, cwd=self.build, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                       stderr=subprocess.DEVNULL, start_new_session=True, preexec_fn=prepare_process)
            start = time.monotonic()
            try:
                if process.wait(TIME_LIMIT[0] + TIME_LIMIT[1] * self.usual.get(test, TIME_LIMIT[0])) != 0:
                    return test
                self.usual.setdefault(test, time.monotonic() - start)
            except subprocess.TimeoutExpired:
                return test + ", time limit"
            finally:
                try:
                    os.killpg(process.pid, signal.SIGKILL)
                except ProcessLookupError:
                    pass
                process.wait()
        return None

    def candidates(self):
        found = []
        for pattern in self.module["files"]:
            for path in sorted(self.root.glob(pattern)):
                name = str(path.relative_to(self.root))
                if path.suffix in (".cpp", ".h") and not any(path.match(p) for p in self.module.get("except", [])):
                    found += mutants_of(name, path.read_text())
        if not self.module.get("numbers", True):
            found = [mutant for mutant in found if not mutant.text[0].isdigit()]
        return found

    def try_mutant(self, mutant):
        """"does not compile", "survived" or the test that failed."""
        source = self.sources / mutant.file
        original = source.read_text()
        try:
            source.write_text(mutant.apply(original))
            if self.compile().returncode != 0:
                return "does not compile"
            return self.first_failure() or "survived"
        finally:
            source.write_text(original)
            now = time.time() + 1  # newer than what was built from the mutant
            os.utime(source, (now, now))

    def run(self, count, seed):
        """Tries mutants until `count` have compiled, prints survivors, and returns the percentage caught."""
        candidates = self.candidates()
        random.Random(seed).shuffle(candidates)
        tried, caught, equivalent, survived = 0, 0, 0, 0
        for mutant in candidates:
            if tried - equivalent == count:
                break
            result = self.try_mutant(mutant)
            if result == "does not compile":
                continue
            tried += 1
            reason = self.equivalent.get((mutant.file, mutant.source_line, f"{mutant.text} -> {mutant.instead}"))
            if result != "survived":
                caught += 1
                if reason:
                    print(f"{self.name}: caught, though said to be equivalent: {mutant}", flush=True)
            elif reason:
                equivalent += 1
            else:
                survived += 1
                print(f"{self.name}: survived: {mutant}", flush=True)
        counted = tried - equivalent
        share = 100 * caught / counted if counted else 0
        print(f"{self.name}: {caught} of {counted} caught ({share:.0f} %), {survived} survived, "
              f"{equivalent} equivalent; seed {seed}, {len(candidates)} places", flush=True)
        return share
