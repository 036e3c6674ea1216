"""Tries the mutants of written.toml: of the kernels and plugins, where an operator change says too little.

Each is built into a copy of the tree. Only the objects named there are rebuilt: an arithmetic fault in some of the
instantiations is a fault in all of them. The copy is built with less optimisation.
"""

import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import time
import tomllib
from concurrent.futures import ThreadPoolExecutor

from tree import copy_tree, run

TEST_PROGRAMS = ["campaign", "lifecycle_tests", "whole_frame_test", "real_plugins_test", "exact_quotients_avx2",
                 "exact_quotients_avx512", "cpu_features_test"]
SETTINGS = ["-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O1",
            "-DNEROVA_LANES_OPTIMIZATION=-O1", "-DNEROVA_WARNINGS_AS_ERRORS=OFF", "-DNEROVA_BUILD_TOOLS=OFF"]
TIME_LIMIT = 300  # seconds: a mutant may walk in circles


class Tests:
    """
    The tests by name. Campaigns run few frames first, and more before a mutant has survived: natively as many as in the
    suite, emulated a tenth of that.
    """

    def __init__(self, build):
        programs = build / "tests/bin"
        library = build / "lib/libnerova_zel_polarization_processor.so"
        built_in = build / "built_in_only/libnerova_zel_polarization_processor.so"

        def emulate(model):
            return ["qemu-x86_64", "-cpu", model]

        def campaign(file, route, emulator=()):
            command = [*emulator, programs / "campaign", "--library", file, "--route", route, "--cases"]
            few, many = ("300", "4000") if emulator else ("2000", "40000")
            return {}, [*command, few], [*command, many]

        def gtest(program, *arguments, emulator=(), level=None):
            command = [*emulator, programs / program, "--gtest_fail_fast", "--gtest_brief=1", *arguments]
            return {} if level is None else {"NEROVA_CPU_LEVEL": level}, command, None

        self.commands = {
            "lifecycle": gtest("lifecycle_tests"),
            "cpu_features": gtest("cpu_features_test"),
            "whole_frame": gtest("whole_frame_test"),
            "native": campaign(built_in, "sse41"),
            "conroe": campaign(built_in, "sse2", emulate("Conroe")),
            "haswell": campaign(library, "avx2", emulate("Haswell")),
            "avx512": campaign(library, "avx512"),
            "exact-avx2": ({}, [programs / "exact_quotients_avx2"], None),
            "exact-avx512": ({}, [programs / "exact_quotients_avx512"], None),
        }
        # Not the others: below -O2 GCC leaves the wide registers in use.
        only_routing, only_entry = "--gtest_filter=Routing*", "--gtest_filter=*InitializeOnly*"
        self.commands["entries"] = gtest("real_plugins_test", only_entry)
        for model, level in (("Conroe", "0"), ("Haswell", "1"), ("Haswell,-fma", "0"), ("Haswell,-avx2", "0")):
            self.commands[f"routing-{model}"] = gtest("lifecycle_tests", only_routing, emulator=emulate(model),
                                                      level=level)
            self.commands[f"entries-{model}"] = gtest("real_plugins_test", only_entry, emulator=emulate(model),
                                                      level=level)
        self.commands["entries-Haswell,-xsave"] = gtest("real_plugins_test", only_entry,
                                                        emulator=emulate("Haswell,-xsave"), level="0")

    def first_failure(self, names, thorough=True):
        """The name of the first test that fails, or None."""
        for full in (False, True) if thorough else (False,):
            for name in names:
                environment, command, full_command = self.commands[name]
                if full and full_command is None:
                    continue
                try:
                    if run(full_command if full else command, timeout=TIME_LIMIT,
                           env={**os.environ, **environment}).returncode != 0:
                        return name + (", all frames" if full else "")
                except subprocess.TimeoutExpired:
                    return name + ", time limit"
        return None


class Tree:
    """A copy of the sources and its build."""

    def __init__(self, root, folder):
        self.root = root
        self.sources = folder / "tree"
        self.build = folder / "build-written"
        self.kept = folder / "kept"

    def prepare(self):
        """Copies the sources and builds them; what is up to date stays."""
        copy_tree(self.root, self.sources)
        for command in (["cmake", "-S", self.sources, "-B", self.build, *SETTINGS],
                        ["cmake", "--build", self.build, "--target", *TEST_PROGRAMS]):
            result = run(command)
            if result.returncode != 0:
                sys.exit(f"{result.stdout[-3000:]}\nThe tree itself does not build.")
        entries = json.loads((self.build / "compile_commands.json").read_text())
        self.objects = {re.search(r" -o (\S+)", entry["command"]).group(1): entry for entry in entries}
        self.links = []
        for line in run(["ninja", "-C", self.build, "-t", "commands", *TEST_PROGRAMS]).stdout.splitlines():
            output = re.search(r" -o (lib/\S+\.so|tests/bin/\S+) ", line)
            if output:
                self.links.append((output.group(1), set(shlex.split(line)), line))

    def objects_of(self, mutant):
        pattern = mutant.get("objects", re.escape(pathlib.Path(mutant["file"]).name) + r"\.o$")
        if mutant["file"].endswith(".cpp"):
            source = str(self.sources / mutant["file"])
            found = [name for name, entry in self.objects.items() if entry["file"] == source]
            found = [name for name in found if "objects" not in mutant or re.search(pattern, name)]
        else:
            found = [name for name in self.objects if re.search(pattern, name)]
        if not found:
            raise ValueError(f"no object for {mutant['file']}")
        return found

    def compile(self, name):
        return run(self.objects[name]["command"], shell=True, cwd=self.objects[name]["directory"])

    def try_mutant(self, mutant, tests):
        """What became of it: "does not compile", "survived", or the test that failed."""
        source = self.sources / mutant["file"]
        original = source.read_text()
        if original.count(mutant["text"]) != 1:
            raise ValueError(f"{mutant['file']}: not exactly once: {mutant['text']}")
        objects = self.objects_of(mutant)
        links = [(output, line) for output, words, line in self.links if words & set(objects)]
        touched = [*objects, *(output for output, _ in links)]
        shutil.rmtree(self.kept, ignore_errors=True)
        for name in touched:
            (self.kept / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(self.build / name, self.kept / name)
        try:
            source.write_text(original.replace(mutant["text"], mutant["instead"]))
            with ThreadPoolExecutor(os.cpu_count()) as pool:
                if any(result.returncode != 0 for result in pool.map(self.compile, objects)):
                    return "does not compile"
            for _, line in links:
                if run(line, shell=True, cwd=self.build).returncode != 0:
                    return "does not compile"
            self.copy_built_in_only()
            return tests.first_failure(mutant["tests"]) or "survived"
        finally:
            source.write_text(original)
            for name in touched:
                shutil.copy2(self.kept / name, self.build / name)
            self.copy_built_in_only()

    def copy_built_in_only(self):
        name = "libnerova_zel_polarization_processor.so"
        shutil.copyfile(self.build / "lib" / name, self.build / "built_in_only" / name)


def read_mutants(root):
    mutants = []
    for group in tomllib.loads((root / "scripts/mutation/written.toml").read_text())["group"]:
        shared = {key: value for key, value in group.items() if key != "mutants"}
        for text, instead, breaks, *equivalent in group["mutants"]:
            mutants.append({**shared, "text": text, "instead": instead, "breaks": breaks,
                            "equivalent": equivalent[0] if equivalent else None})
    return mutants


def run_written(root, folder, only):
    """Tries the mutants whose file or description holds `only`. Returns whether none survived and all compiled."""
    mutants = [mutant for mutant in read_mutants(root) if only in mutant["file"] or only in mutant["breaks"]]
    tree = Tree(root, folder)
    tree.prepare()
    tests = Tests(tree.build)
    failed = tests.first_failure(sorted({name for mutant in mutants for name in mutant["tests"]}), False)
    if failed:
        sys.exit(f"{failed} fails without any mutant.")

    counts = {"caught": 0, "survived": 0, "equivalent": 0, "does not compile": 0}
    for number, mutant in enumerate(mutants, 1):
        start = time.monotonic()
        result = tree.try_mutant(mutant, tests)
        if result == "does not compile":
            verdict = result
        elif result == "survived":
            verdict = "equivalent" if mutant["equivalent"] else "survived"
        else:
            verdict = "caught"
        counts[verdict] += 1
        detail = f" by {result}" if verdict == "caught" else ""
        print(f"{number}/{len(mutants)} {verdict}{detail} ({time.monotonic() - start:.0f} s): {mutant['file']}: "
              f"{mutant['breaks']}", flush=True)
        if verdict == "caught" and mutant["equivalent"]:
            print(f"  though said to be equivalent: {mutant['equivalent']}")
    print(", ".join(f"{count} {verdict}" for verdict, count in counts.items()))
    return not (counts["survived"] or counts["does not compile"])
