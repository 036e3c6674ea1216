"""What the tests share. They run against the installed wheel, never the sources."""

import os
import pathlib
import subprocess

import nerova_zel as nz
import numpy as np
import pytest

TOOL = os.environ.get("NEROVA_TOOL", "nerova-polarize")


@pytest.fixture(scope="session")
def frame():
    """An odd-sized 12-bit frame of layout 90 with noise, large enough for several bands."""
    return nz.simulate((301, 615), 90, 12, photons=10000)[0]


@pytest.fixture(scope="session")
def run_tool():
    def run(*arguments, **options):
        return subprocess.run(
            [TOOL, *map(str, arguments)], check=True, capture_output=True, text=True, **options
        ).stdout

    return run


@pytest.fixture(scope="session")
def tool_images(frame, tmp_path_factory, run_tool):
    """Every output of the tool for the frame."""
    folder: pathlib.Path = tmp_path_factory.mktemp("tool")
    np.save(folder / "frame.npy", frame)
    run_tool(
        "transform",
        folder / "frame.npy",
        "--layout",
        90,
        "--bit-depth",
        12,
        "--format",
        "npy",
        "--outputs",
        ",".join(nz.OUTPUTS),
        "--out",
        folder / "out",
    )
    return {name: np.load(folder / "out" / f"frame_{name}.npy") for name in nz.OUTPUTS}
