"""Unpacking, recordings, statistics and calibration, against definitions and against the tool."""

import json
import pickle

import nerova_zel as nz
import numpy as np
import pytest


def packed_12p(pixels):
    pairs = pixels.reshape(-1, 2).astype(np.uint32)
    both = pairs[:, 0] | pairs[:, 1] << 12
    return np.stack([both & 255, both >> 8 & 255, both >> 16], 1).astype(np.uint8).tobytes()


@pytest.fixture(scope="module")
def stack():
    return np.random.default_rng(3).integers(0, 4096, (5, 30, 1 << 15), np.uint16)


def test_unpacking_by_any_buffer(stack):
    data = packed_12p(stack)
    size = stack.shape[1:]
    assert np.array_equal(nz.unpack(data, size, "Mono12p", threads=3), stack)
    assert nz.unpack(data[: len(data) // 5], size, "Mono12p").shape == size
    rows = np.frombuffer(data, np.uint8).reshape(5, -1)
    out = np.empty((1, *size), np.uint16)
    assert nz.unpack(rows[2:3], size, "Mono12p", out=out) is out and np.array_equal(out[0], stack[2])
    assert np.array_equal(nz.unpack(memoryview(stack), size, "Mono16"), stack)
    assert np.array_equal(nz.unpack(bytearray(b"\x01\x02\x03\x04"), (2, 2), "Mono8"), [[1, 2], [3, 4]])
    for call, words in (
        (lambda: nz.unpack(data[:-1], size, "Mono12p"), "1474560"),
        (lambda: nz.unpack(data, size, "Mono13"), "Mono13"),
        (lambda: nz.unpack(b"", size, "Mono8"), "0 bytes"),
        (lambda: nz.unpack(rows[:, ::2], size, "Mono12p"), "contiguous"),
        (lambda: nz.unpack(rows, size, "Mono12p", out=out), "out"),
    ):
        with pytest.raises(ValueError, match=words):
            call()


def test_recordings_are_sequences(stack, tmp_path):
    path = tmp_path / "run.raw"
    path.write_bytes(packed_12p(stack))
    about = {
        "format": "nerova-zel-recording",
        "version": 1,
        "pixel_format": "Mono12p",
        "width": stack.shape[2],
        "height": stack.shape[1],
        "origin": {"x": 1, "y": 2},
        "layout": 45,
        "frames": 4,
        "exposure_us": 7.5,
    }
    (tmp_path / "run.raw.json").write_text(json.dumps(about))
    recording = nz.open_recording(path)
    assert (len(recording), recording.layout, recording.origin, recording.bit_depth) == (4, 45, (1, 2), 12)
    assert recording.metadata["exposure_us"] == 7.5
    assert np.array_equal(recording[-1], stack[3]) and np.array_equal(recording[1:3].read(), stack[1:3])
    assert np.array_equal(recording[::-2].read(threads=2), stack[3::-2])
    assert sum(1 for _ in recording) == 4
    with pytest.raises(IndexError):
        recording[4]
    assert np.array_equal(pickle.loads(pickle.dumps(recording[2:]))[1], stack[3])
    for change, words in (
        ({"frames": 6}, "0 to 5"),
        ({"version": 2}, "version"),
        ({"format": "x"}, "describe a recording"),
        ({"width": 32770}, "bytes more"),
        ({"pixel_format": "Mono9"}, "Mono9"),
    ):
        (tmp_path / "run.raw.json").write_text(json.dumps({**about, **change}))
        with pytest.raises(ValueError, match=words):
            nz.open_recording(tmp_path / "run.raw.json")


def test_statistics_are_those_of_the_tool(frame, tmp_path, run_tool):
    np.save(tmp_path / "frame.npy", frame)
    for weight in ("equal", "power"):
        document = json.loads(
            run_tool(
                "stats",
                tmp_path / "frame.npy",
                "--layout",
                90,
                "--bit-depth",
                12,
                "--weight",
                weight,
                "--roi",
                "100,50,300,201",
                "--json",
            )
        )["all"]
        found = nz.statistics(frame, layout=90, bit_depth=12, roi=(100, 50, 300, 201), weight=weight, threads=2)
        for name, value in (
            ("pixels", found.pixels),
            ("mean_angle_degrees", found.mean_angle),
            ("resultant_length", found.resultant),
            ("mean_degree", found.mean_degree),
            ("angle_deviation_degrees", found.angle_deviation),
            ("pixels_without_angle", found.without_angle),
        ):
            assert document[name] == pytest.approx(value, rel=1e-9), name
        assert document["saturated_pixels"] == found.saturated and document["dark_pixels"] == found.dark


def test_statistics_add_up(frame):
    def of(frames):
        return nz.statistics(frames, layout=90, bit_depth=12)

    parts = [frame, frame[::-1].copy(), np.zeros_like(frame)]
    assert (
        sum(map(of, parts), nz.Statistics()) == of(np.stack(parts)) == pickle.loads(pickle.dumps(of(np.stack(parts))))
    )
    assert of(np.stack(parts)).without_degree == frame.size
    assert np.isnan(of(parts[2]).mean_angle) and nz.Statistics().pixels == 0


@pytest.fixture(scope="module")
def sensor():
    """A poor sensor before a polarized source: frames, angles, dark frame."""
    angles = list(range(0, 180, 15))
    faults = {"angle_errors": (1.2, -0.8, -1.5, 0.6), "extinctions": (300, 150, 220, 90), "dark_level": 64.0}
    frames = [
        nz.simulate((128, 160), 90, 12, 10000, source_angle=angle, seed=angle + 1, **faults)[0] for angle in angles
    ]
    dark = nz.simulate((128, 160), 90, 12, 10000, source_angle=0, source_power=0, **faults)[0]
    return np.stack(frames), angles, dark


def test_calibration_finds_and_corrects_the_sensor(sensor, tmp_path, run_tool):
    frames, angles, dark = sensor
    calibration = nz.calibrate(frames, angles, layout=90, bit_depth=12, dark=dark)
    assert [p.angle_error for p in calibration.polarizers] == pytest.approx([1.2, -0.8, -1.5, 0.6], abs=0.05)
    assert [p.extinction for p in calibration.polarizers] == pytest.approx([300, 150, 220, 90], rel=0.1)
    assert calibration.residuals.shape == (12, 4) and np.abs(calibration.residuals).max() < 0.002
    assert calibration.dark_levels == pytest.approx([64] * 4, abs=0.01) and calibration.warnings == ()
    made = nz.Processor(layout=90, bit_depth=12, calibration=calibration)
    if not made.route.startswith("built-in"):
        ideal = nz.Processor(layout=90, bit_depth=12)
        assert max(abs(np.median(made.transform(frames[i], "angle")["angle"]) - angles[i]) for i in range(1, 12)) < 0.05
        assert max(abs(np.median(ideal.transform(frames[i], "angle")["angle"]) - angles[i]) for i in range(1, 12)) > 0.2
    path = tmp_path / "camera.json"
    calibration.save(path)
    calibration.save(path)
    loaded = nz.Calibration.load(path)
    assert (
        loaded == calibration
        and np.array_equal(loaded.matrices, calibration.matrices)
        and loaded.residuals.shape == (0, 4)
    )
    assert list(tmp_path.iterdir()) == [path]
    np.save(tmp_path / "f.npy", frames[3])
    run_tool(
        "transform",
        "f.npy",
        "--layout",
        90,
        "--bit-depth",
        12,
        "--calibration",
        path,
        "--format",
        "npy",
        "--outputs",
        "azimuth,s1",
        "--out",
        "out",
        cwd=tmp_path,
    )
    for name, image in (
        nz.Processor(layout=90, bit_depth=12, calibration=path).transform(frames[3], ("azimuth", "s1")).items()
    ):
        assert np.array_equal(image, np.load(tmp_path / "out" / f"f_{name}.npy")), name


def test_each_colour_has_its_calibration(tmp_path, run_tool):
    camera = ("--size", "64x48", "--colour", "RGGB", "--photons", 10000, "--angle-errors=1.2,-0.8,-1.5,0.6")
    angles = range(0, 180, 30)
    for angle in angles:
        run_tool("simulate", f"{angle}.raw", *camera, "--source-angle", angle, "--seed", angle + 1, cwd=tmp_path)
    (tmp_path / "list.csv").write_text("".join(f"{angle},{angle}.raw\n" for angle in angles))
    raw = ("--raw", "64x48", "--pixel-format", "Mono12", "--layout", 90, "--colour", "RGGB")
    run_tool("calibrate", "--list", "list.csv", *raw, "--output", "camera.json", cwd=tmp_path)
    run_tool(
        "transform",
        "30.raw",
        *raw,
        "--calibration",
        "camera.json",
        "--format",
        "npy",
        "--outputs",
        "azimuth,s1",
        "--output",
        "out",
        cwd=tmp_path,
    )
    path = tmp_path / "camera.json"
    made = pickle.loads(pickle.dumps(nz.Processor(layout=90, bit_depth=12, colour="RGGB", calibration=path)))
    assert len({matrices.tobytes() for matrices in made.calibration.matrices}) == 4
    assert made.calibration.dark_levels.shape == (4, 4)
    frame = np.fromfile(tmp_path / "30.raw", np.uint16).reshape(48, 64)
    images = made.transform(np.stack([frame, frame]), ("azimuth", "s1"))
    for name, both in images.items():
        expected = np.load(tmp_path / "out" / f"30_{name}_r_g1_g2_b.npy")
        assert all(np.array_equal(one.reshape(expected.shape), expected) for one in both), name
    with pytest.raises(ValueError, match="colour"):
        nz.Processor(layout=90, bit_depth=12, calibration=made.calibration)
    with pytest.raises(ValueError, match="colours"):
        nz.Calibration.load(path)


def test_calibration_refuses_in_words(sensor, tmp_path):
    frames, angles, dark = sensor
    for call, words in (
        (lambda: nz.calibrate(frames[:3], angles[:3], layout=90, bit_depth=12), "four"),
        (lambda: nz.calibrate(frames, angles[:-1], layout=90, bit_depth=12), "more frames"),
        (lambda: nz.calibrate(frames[:-1], angles, layout=90, bit_depth=12), "11 frames and 12 angles"),
        (lambda: nz.calibrate(frames, angles, layout=0, bit_depth=12), "polarizer pass light"),
        (lambda: nz.calibrate(frames, angles, layout=90, bit_depth=8), "frame 0"),
        (lambda: nz.calibrate(frames, angles, layout=90, bit_depth=12, dark=dark + np.uint16(999)), "dark"),
        (lambda: nz.Calibration("{}", "camera.json"), "camera.json"),
    ):
        with pytest.raises(ValueError, match=words):
            call()
    calibration = nz.calibrate(frames, angles, layout=90, bit_depth=12, dark=dark)
    with pytest.raises(ValueError, match="12"):  # made from frames of 12 bits
        nz.Processor(layout=90, bit_depth=10, calibration=calibration).transform(frames[0] >> 2)
    with pytest.raises(FileNotFoundError):
        nz.Calibration.load(tmp_path / "none.json")
