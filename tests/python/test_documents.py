"""Every Python block of the documents runs, and the example for many machines survives the loss of a worker."""

import json
import os
import pathlib
import re
import signal
import sys

import nerova_zel as nz
import numpy as np
import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "examples" / "dask"))
PAGES = [
    *sorted((ROOT / "docs" / "python").glob("*.md")),
    ROOT / "bindings" / "python" / "README.md",
    ROOT / "README.md",
]


@pytest.mark.parametrize("page", PAGES, ids=lambda page: str(page.relative_to(ROOT)))
def test_blocks_run(page, tmp_path, monkeypatch):
    """In their order, in one interpreter and an empty folder."""
    monkeypatch.chdir(tmp_path)
    monkeypatch.setenv("MPLBACKEND", "Agg")
    blocks = re.findall(r"^```python\n(.*?)^```", page.read_text(), re.MULTILINE | re.DOTALL)
    assert blocks
    names = {}
    for block in blocks:
        exec(compile(block, str(page), "exec"), names)


def test_first_picture_has_ten_lines():
    block = re.search(r"^```python\n(.*?)^```", (PAGES[0].parent / "first-picture.md").read_text(), re.M | re.S)[1]
    assert len([line for line in block.splitlines() if line]) <= 10


@pytest.fixture
def recording(tmp_path):
    width, height, frames = 640, 512, 60
    path = tmp_path / "run.raw"
    np.random.default_rng(5).integers(0, 256, frames * width * height * 3 // 2, np.uint8).tofile(path)
    about = {"format": "nerova-zel-recording", "version": 1, "pixel_format": "Mono12p", "width": width}
    about.update({"height": height, "origin": {"x": 0, "y": 0}, "layout": 90, "frames": frames})
    path.with_name("run.raw.json").write_text(json.dumps(about))
    return str(path)


def slow_part(*arguments):
    """Takes long enough for a worker to be lost in the middle."""
    import time

    import recording_statistics

    time.sleep(0.05)
    return recording_statistics.statistics_of_part(*arguments)


def test_losing_a_worker_changes_nothing(recording, tmp_path, monkeypatch):
    distributed = pytest.importorskip("distributed")
    import recording_statistics

    monkeypatch.setenv("PYTHONPATH", os.pathsep.join(sys.path[:1] + [str(pathlib.Path(__file__).parent)]))
    expected = recording_statistics.statistics_of_part(recording, 0, 60)
    work = recording_statistics.parts(60, 2)
    parts = [recording_statistics.statistics_of_part(recording, *part) for part in work]
    settings = {"n_workers": 2, "threads_per_worker": 1, "processes": True, "dashboard_address": None}
    with distributed.LocalCluster(**settings, local_directory=str(tmp_path)) as cluster:
        with distributed.Client(cluster) as client:
            client.upload_file(recording_statistics.__file__)
            client.upload_file(__file__)
            tasks = [client.submit(slow_part, recording, *part, pure=False) for part in work]
            distributed.wait(tasks[:4])
            workers = client.run(os.getpid)
            assert len(workers) == 2
            assert not all(task.done() for task in tasks)
            os.kill(next(iter(workers.values())), signal.SIGKILL)
            found = client.gather(tasks)
            assert found == parts
            images = tmp_path / "images"
            images.mkdir()
            total = recording_statistics.statistics_of_recording(client, recording, 7, str(images), 25)
    assert sum(found, nz.Statistics()) == sum(parts, nz.Statistics())
    assert total.pixels == expected.pixels and total.mean_angle == pytest.approx(expected.mean_angle, abs=1e-9)
    assert [path.name for path in sorted(images.iterdir())] == [f"{n:08d}_dolp.npy" for n in (0, 25, 50)]
