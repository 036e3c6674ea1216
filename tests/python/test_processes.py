"""Threads, processes, and what is left behind."""

import gc
import multiprocessing
import pathlib
import pickle
import random
from concurrent.futures import ProcessPoolExecutor, ThreadPoolExecutor

import nerova_zel as nz
import numpy as np
import pytest

FRAMES = [nz.simulate((260, 512), 90, 12, photons=1000, seed=seed)[0] for seed in range(4)]
MADE = nz.Processor(layout=90, bit_depth=12, threads=2)


def digest(number):
    images = MADE.transform(FRAMES[number % 4], nz.OUTPUTS)
    return [array.tobytes() for array in images.values()]


def digest_by(made, number):
    return [array.tobytes() for array in made.transform(FRAMES[number % 4], nz.OUTPUTS).values()]


EXPECTED = [digest(number) for number in range(4)]


def test_one_processor_in_many_threads():
    with ThreadPoolExecutor(8) as pool:
        for number, found in enumerate(pool.map(digest, range(64))):
            assert found == EXPECTED[number % 4]


@pytest.mark.parametrize("method", ["fork", "spawn"])
def test_processes_by_any_method(method):
    context = multiprocessing.get_context(method)
    with ProcessPoolExecutor(2, mp_context=context) as pool:
        for number, found in enumerate(pool.map(digest_by, [MADE] * 8, range(8))):
            assert found == EXPECTED[number % 4]


def child(pipe):
    pipe.send(digest(1))
    del globals()["MADE"]
    gc.collect()
    pipe.send(nz.statistics(FRAMES[0], layout=90, bit_depth=12).pixels)


def test_fork_while_threads_compute():
    context = multiprocessing.get_context("fork")
    with ThreadPoolExecutor(2) as pool:
        busy = [pool.submit(digest, number) for number in range(40)]
        for _ in range(4):
            ours, theirs = context.Pipe()
            process = context.Process(target=child, args=(theirs,))
            process.start()
            assert ours.poll(60) and ours.recv() == EXPECTED[1]
            assert ours.poll(60) and ours.recv() == FRAMES[0].size
            process.join(60)
            assert process.exitcode == 0
        assert all(job.result() == EXPECTED[number % 4] for number, job in enumerate(busy))


def resident():
    """Bytes of memory of this process."""
    return int(pathlib.Path("/proc/self/statm").read_text().split()[1]) * 4096


def test_nothing_grows_over_ten_thousand_frames():
    frame = np.ascontiguousarray(FRAMES[0][:48, :64])
    packed = bytes(48 * 64 * 3 // 2)
    calibration = nz.Calibration(pathlib.Path(__file__).with_name("camera.json").read_text())

    def use(number):
        made = nz.Processor(layout=90, bit_depth=12, calibration=calibration) if number % 10 == 0 else MADE
        images = made.transform(frame)
        nz.colour(images["angle"], images["dolp"], style=("dark", "light")[number % 2])
        nz.unpack(packed, (48, 64), "Mono12p")
        nz.statistics(frame, layout=90, bit_depth=12)
        if number % 100 == 0:
            nz.Calibration(calibration.text)
            with pytest.raises(ValueError, match="layout"):
                nz.statistics(frame, layout=1, bit_depth=12)

    for number in range(1000):
        use(number)
    gc.collect()
    before = resident()
    for number in range(10000):
        use(number)
    gc.collect()
    assert resident() - before < 1 << 20


def test_things_may_go_in_any_order(tmp_path):
    calibration = nz.Calibration(pathlib.Path(__file__).with_name("camera.json").read_text())
    order = random.Random(1)
    for _ in range(50):
        things = {
            "made": nz.Processor(layout=90, bit_depth=12, calibration=calibration),
            "calibration": nz.Calibration(calibration.text),
            "other": nz.Processor(layout=0, bit_depth=8),
        }
        things["images"] = things["made"].transform(FRAMES[0], "dolp")
        cycle = [things]
        cycle.append(cycle)
        for name in order.sample(list(things), len(things)):
            del things[name]
        del cycle
    gc.collect()
    assert digest(2) == EXPECTED[2]
    again = pickle.loads(pickle.dumps(nz.Processor(layout=90, bit_depth=12, calibration=calibration, colour="RGGB")))
    assert again.calibration == calibration and "layout=90" in repr(again)
