#!/usr/bin/env python3
"""Installs a build into an empty place (for Windows by its package), and from that alone builds and runs consumers: by the
CMake package, by the pkg-config file, and for Windows by a stand-in for Visual C++."""

import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import zipfile

LIBRARIES = {"nerova_zel_polarization_processor", "nerova_zel_logger", "nerova_zel_imaging",
             "nerova_zel_polarization_processor_vector_avx2", "nerova_zel_polarization_processor_vector_avx512"}


def run(*command, **options):
    print("+", *command, flush=True)
    return subprocess.run([str(word) for word in command], check=True, text=True, **options)


def install(build, place, windows):
    """The prefix."""
    if not windows:
        run("cmake", "--install", build, "--strip", "--prefix", place / "usr", stdout=subprocess.DEVNULL)
        return place / "usr"
    run("cpack", "--config", build / "CPackConfig.cmake", "-B", place, stdout=subprocess.DEVNULL)
    (package,) = place.glob("*.zip")
    zipfile.ZipFile(package).extractall(place)
    return place / package.stem


def build_by_cmake(source, folder, *settings):
    run("cmake", "-G", "Ninja", "-S", source, "-B", folder, *settings, stdout=subprocess.DEVNULL)
    run("cmake", "--build", folder, stdout=subprocess.DEVNULL)


def consume_by_cmake(arguments, tree, example, program):
    """The packed examples, in C and in C++ by the header for it."""
    folder = program.parent / "by-cmake"
    build_by_cmake(example.parent, folder, f"-DCMAKE_TOOLCHAIN_FILE={arguments.toolchain}", f"-DCMAKE_PREFIX_PATH={tree}",
                   f"-DCMAKE_FIND_ROOT_PATH={tree}")
    return [folder / f"{name}{program.suffix}" for name in ("first_frame", "first_frame_cpp")]


def consume_by_pkg_config(arguments, tree, example, program):
    (folder,) = tree.rglob("pkgconfig")
    flags = run("pkg-config", "--cflags", "--libs", "nerova_polarization_processor", stdout=subprocess.PIPE,
                env=dict(os.environ, PKG_CONFIG_LIBDIR=str(folder))).stdout.split()
    run(arguments.compiler, *arguments.flags.split(), example, "-o", program, *flags)
    return [program]


def consume_by_visual_cpp(arguments, tree, emulator, folder):
    """Clang and LLD stand in for it: the import libraries, the calling convention and the C++ header."""
    source = pathlib.Path(__file__).parent / "visual_cpp"
    build_by_cmake(source, folder, f"-DCMAKE_TOOLCHAIN_FILE={source / 'toolchain.cmake'}",
                   f"-DNEROVA_TARGET={arguments.visual_cpp_target}", f"-DCMAKE_PREFIX_PATH={tree}")
    program = shutil.copy(folder / "client.exe", tree / "bin")
    code = subprocess.run([*emulator, program]).returncode
    if code != 100:
        sys.exit(f"the program of the stand-in for Visual C++ ended with {code}")


def check_contents(tree, library):
    """Companions lie where the library looks, links in documents lead somewhere, nothing tells where it was built."""
    files = [*library.parent.glob(f"*{library.suffix}"), *library.parent.glob(f"nerova_zel/*{library.suffix}")]
    found = {path.stem.removeprefix("lib") for path in files}
    if found != LIBRARIES:
        sys.exit(f"the libraries of the package are {sorted(found)}")
    for document in tree.rglob("*.md"):
        for link in re.findall(r"\]\((?!\w+:)([^)#]+)", document.read_text()):
            if not (document.parent / link).exists():
                sys.exit(f"{document.relative_to(tree)} refers to {link}, which is not there")
    root = str(pathlib.Path(__file__).resolve().parents[2]).encode()
    for path in tree.rglob("*"):
        if path.is_file() and root in path.read_bytes():
            sys.exit(f"{path.relative_to(tree)} names the folder it was built in")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True, type=pathlib.Path, help="a built tree")
    parser.add_argument("--toolchain", default="", help="its CMake toolchain file")
    parser.add_argument("--compiler", required=True)
    parser.add_argument("--flags", default="", help="compiler flags of that build, such as -m32")
    parser.add_argument("--emulator", default="", help="what runs its programs")
    parser.add_argument("--visual-cpp-target", help="what clang calls the target in the place of Visual C++")
    arguments = parser.parse_args()
    emulator = arguments.emulator.split(";") if arguments.emulator else []

    with tempfile.TemporaryDirectory() as name:
        place = pathlib.Path(name)
        tree = install(arguments.build, place, arguments.visual_cpp_target)
        (library,) = [path for path in tree.rglob("*nerova_zel_polarization_processor.*")
                      if path.suffix in (".so", ".dll")]
        check_contents(tree, library)

        # Windows looks beside the program.
        windows = library.suffix == ".dll"
        programs, suffix = (library.parent, ".exe") if windows else (place, "")
        (example,) = tree.rglob("first_frame.c")
        for consume in (consume_by_cmake, consume_by_pkg_config):
            for program in consume(arguments, tree, example, programs / f"{consume.__name__}{suffix}"):
                run(*emulator, program, env=dict(os.environ, LD_LIBRARY_PATH="" if windows else str(library.parent)))
        if arguments.visual_cpp_target:
            consume_by_visual_cpp(arguments, tree, emulator, place / "by-visual-cpp")

        tool = tree / "bin" / "nerova-polarize"
        if tool.exists():  # It finds the library by itself.
            run(tool, "simulate", place / "frame.png", "--size", "64x64", stdout=subprocess.DEVNULL)
            run(tool, "transform", place / "frame.png", "--output", place / "pictures", stdout=subprocess.DEVNULL)
            for document in ("man/man1/nerova-polarize.1", "bash-completion/completions/nerova-polarize",
                             "zsh/vendor-completions/_nerova-polarize"):
                assert (tree / "share" / document).stat().st_size > 0, document
    return 0


if __name__ == "__main__":
    sys.exit(main())
