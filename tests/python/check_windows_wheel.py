#!/usr/bin/python3
"""Builds the wheel for Windows and finds every export of its DLLs from a C program. No Python for Windows runs it."""

import argparse
import pathlib
import re
import subprocess
import sys
import tempfile
import zipfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts" / "internal"))
from build_wheel import build_wheel  # noqa: E402

PLUGINS = [f"nerova_zel_polarization_processor_vector_{level}" for level in ("avx2", "avx512")]
# In the order in which the package loads them.
LIBRARIES = ["nerova_zel_logger", *PLUGINS, "nerova_zel_polarization_processor", "nerova_zel_imaging"]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True, type=pathlib.Path, help="a built tree for Windows x64")
    parser.add_argument("--program", required=True, help="load_exports.exe")
    parser.add_argument("--emulator", required=True, help="what runs it")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as name:
        wheel = build_wheel(arguments.build, name)
        assert wheel.name.endswith("-py3-none-win_amd64.whl"), wheel.name
        zipfile.ZipFile(wheel).extractall(name)
        folder = pathlib.Path(name) / "nerova_zel" / "lib"
        assert {path.stem for path in folder.iterdir()} == set(LIBRARIES)
        wanted = []
        for library in LIBRARIES:
            (definition,) = ROOT.glob(f"*/**/{library}.def")
            exports = re.findall(r"^\s+(\w+)", definition.read_text(), re.MULTILINE)
            assert exports
            wanted += [f"+{library}.dll", *exports]
        said = subprocess.run(
            [*arguments.emulator.split(";"), arguments.program, f"Z:{folder}".replace("/", "\\"), *wanted],
            capture_output=True,
            text=True,
        )
        print(said.stdout, said.stderr)
        assert said.returncode == 0
        if " avx512dq " in pathlib.Path("/proc/cpuinfo").read_text():
            assert "route avx512" in said.stdout, "the plugins of the wheel are not found"
    return 0


if __name__ == "__main__":
    sys.exit(main())
