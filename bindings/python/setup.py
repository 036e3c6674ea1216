"""Builds the libraries by CMake, or takes them from a built tree, and puts them into the wheel.

NEROVA_BUILD_TREE in the environment names a configured and built tree of the project, also one for Windows; without it
the libraries are built here, which takes a few minutes.
"""

from __future__ import annotations

import os
import pathlib
import re
import shutil
import subprocess
import warnings

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py

try:
    from setuptools.command.bdist_wheel import bdist_wheel
except ImportError:  # setuptools before 70.1
    from wheel.bdist_wheel import bdist_wheel

ROOT = pathlib.Path(__file__).resolve().parents[2]
LIBRARIES = (
    "nerova_zel_polarization_processor",
    "nerova_zel_polarization_processor_vector_avx2",
    "nerova_zel_polarization_processor_vector_avx512",
    "nerova_zel_logger",
    "nerova_zel_imaging",
)
# The oldest C library of a distribution whose C++ library has these symbols (GLIBCXX_3.4.N).
LIBC_OF_LIBSTDCXX = {29: (2, 34), 30: (2, 35), 31: (2, 38), 32: (2, 38), 33: (2, 39), 34: (2, 42)}


def version() -> str:
    text = (ROOT / "include" / "nerova_zel" / "polarization_processor.h").read_text()
    found = re.search(r'^#define NEROVA_ZEL_POLARIZATION_PROCESSOR_VERSION "([0-9.]+)"', text, re.MULTILINE)
    assert found, "the header states no version"
    return found[1]


def newest(texts: list[bytes], symbols: bytes) -> tuple[int, ...]:
    found = [
        tuple(map(int, match.split(b"."))) for text in texts for match in re.findall(symbols + rb"_([0-9.]+)\0", text)
    ]
    return max(found, default=(0,))


def platform_tag(libraries: list[pathlib.Path]) -> str:
    """By what the libraries need: the newest symbols of the C library and of the C++ library."""
    if any(library.suffix == ".dll" for library in libraries):
        return "win_amd64"
    texts = [library.read_bytes() for library in libraries]
    libc = newest(texts, b"GLIBC")
    libstdcxx = newest(texts, b"GLIBCXX")
    if libstdcxx > (3, 4, 29):
        if libstdcxx[2] not in LIBC_OF_LIBSTDCXX:
            warnings.warn(
                f"GLIBCXX_{'.'.join(map(str, libstdcxx))} is unknown: the wheel is for this machine only", stacklevel=1
            )
            return "linux_x86_64"
        libc = max(libc, LIBC_OF_LIBSTDCXX[libstdcxx[2]])
    return f"manylinux_{libc[0]}_{libc[1]}_x86_64"


class BuildWithLibraries(build_py):
    def run(self) -> None:
        super().run()
        work = pathlib.Path(self.get_finalized_command("build").build_temp).absolute()
        tree = pathlib.Path(os.environ.get("NEROVA_BUILD_TREE") or self.build_tree(work / "cmake"))
        prefix = work / "installed"
        shutil.rmtree(prefix, ignore_errors=True)
        subprocess.run(
            ["cmake", "--install", tree, "--strip", "--component", "runtime", "--prefix", prefix],
            check=True,
            stdout=subprocess.DEVNULL,
        )
        folder = pathlib.Path(self.build_lib) / "nerova_zel" / "lib"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        for name in LIBRARIES:
            (library,) = (
                path for path in prefix.rglob("*") if path.name in (f"{name}.so", f"lib{name}.so", f"{name}.dll")
            )
            shutil.copy(library, folder)

    def build_tree(self, tree: pathlib.Path) -> pathlib.Path:
        off = [f"-DNEROVA_BUILD_{part}=OFF" for part in ("TOOLS", "TESTS", "BENCHMARKS")]
        generator = ["-G", "Ninja"] if shutil.which("ninja") else []
        subprocess.run(["cmake", "-S", ROOT, "-B", tree, *generator, "-DCMAKE_BUILD_TYPE=Release", *off], check=True)
        jobs = str(os.cpu_count() or 1)
        subprocess.run(["cmake", "--build", tree, "--parallel", jobs, "--target", *LIBRARIES], check=True)
        return tree


class WheelOfLibraries(bdist_wheel):
    """For every Python 3 on one platform."""

    def finalize_options(self) -> None:
        super().finalize_options()
        self.root_is_pure = False

    def run(self) -> None:
        self.run_command("build")  # the tag is that of what was built
        super().run()

    def get_tag(self) -> tuple[str, str, str]:
        folder = pathlib.Path(self.get_finalized_command("build_py").build_lib) / "nerova_zel" / "lib"
        libraries = sorted(folder.glob("*nerova_zel*"))
        return ("py3", "none", platform_tag(libraries) if libraries else super().get_tag()[2])


class DistributionOfLibraries(Distribution):
    def has_ext_modules(self) -> bool:
        return True


setup(
    version=version(),
    distclass=DistributionOfLibraries,
    cmdclass={"build_py": BuildWithLibraries, "bdist_wheel": WheelOfLibraries},
)
