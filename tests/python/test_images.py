"""Images of frames: bit for bit those of the reference model and of the tool, however they are asked for."""

import os
import subprocess

import nerova_zel as nz
import numpy as np
import pytest

CODES = ("power", "hv", "diagonal", "azimuth", "dolp")


def processor(**settings):
    return nz.Processor(**{"layout": 90, "bit_depth": 12, **settings})


def same(a, b):
    """To the last bit; all NaN are one."""
    return a.dtype == b.dtype and a.shape == b.shape and np.array_equal(a, b, equal_nan=a.dtype.kind == "f")


@pytest.mark.parametrize(
    ("width", "height", "phase", "origin", "bit_depth", "maximum"),
    [
        (2, 2, 0, (0, 0), 12, 65535),
        (3, 7, 1, (1, 0), 10, 1023),
        (65, 33, 2, (0, 1), 12, 4095),
        (128, 64, 3, (1, 1), 16, 65535),
        (1223, 260, 2, (0, 0), 12, 65535),
    ],
)
@pytest.mark.parametrize("threads", [1, 3])
def test_values_are_those_of_the_reference_model(tmp_path, width, height, phase, origin, bit_depth, maximum, threads):
    made = processor(layout=45 * phase, bit_depth=bit_depth, output_maximum=maximum, threads=threads)
    rules = {"built-in SSE2": "sse2", "built-in SSE4.1": "sse41"}.get(made.route, "per-pixel")
    subprocess.run(
        [
            os.environ["NEROVA_REFERENCE"],
            tmp_path,
            rules,
            *map(str, (width, height, phase, *origin, bit_depth, maximum)),
        ],
        check=True,
    )

    def read(name, dtype, *more):
        return np.fromfile(tmp_path / name, dtype).reshape(height, width, *more)

    images = made.transform(read("frame", np.uint16), nz.OUTPUTS[:6], origin)
    assert same(images["stokes"], read("stokes", np.float32, 2))
    for name in CODES:
        assert same(images[name], read(name, np.uint16)), name


def test_values_are_those_of_the_tool(frame, tool_images):
    images = processor(threads=2).transform(frame, nz.OUTPUTS)
    for name in nz.OUTPUTS:
        assert same(images[name], tool_images[name].reshape(images[name].shape)), name
    alone = processor().transform(frame, "angle")["angle"]  # another way to the same
    assert same(alone, images["angle"])


def test_angle_is_that_of_the_light():
    frame, truth = nz.simulate((256, 300), 135, 14)
    image = processor(layout=135, bit_depth=14).transform(frame, ("angle", "dolp"))
    polarized = truth["dolp"] > 0.2
    error = np.abs((image["angle"] - truth["angle"] + 90) % 180 - 90)[polarized]
    assert np.median(error) < 0.2
    assert np.median(np.abs(image["dolp"] / 65535 - truth["dolp"])[polarized]) < 0.002


def test_stacks_bytes_and_given_arrays(frame):
    made = processor(threads=2)
    stack = np.stack([frame, frame[::-1], frame])
    images = made.transform(stack, nz.OUTPUTS)
    for number, one in enumerate(stack):
        single = made.transform(np.ascontiguousarray(one), nz.OUTPUTS)
        assert all(same(images[name][number], single[name]) for name in nz.OUTPUTS)
    again = made.transform(stack[::-1].copy(), ("dolp", "stokes"), out=images)
    assert again["dolp"] is images["dolp"] and again["stokes"] is images["stokes"]
    assert same(again["dolp"][0], made.transform(frame, ["dolp"])["dolp"])
    small = (frame >> 4).astype(np.uint8)
    assert same(
        made.transform(small, ("power",))["power"],
        processor(bit_depth=8).transform(small.astype(np.uint16), ("power",))["power"],
    )
    assert made.transform(np.empty((0, 4, 4), np.uint16))["stokes"].shape == (0, 4, 4, 2)


def test_colour_frames_are_four_mosaics():
    frame = nz.simulate((64, 96), 45, 12, photons=500)[0]
    planes = nz.split_colours(frame, "GRBG")
    assert planes.shape == (2, 2, 32, 48)
    # A plane's 2 x 2 cells lie four apart; red is the second cell of the first row.
    assert np.array_equal(planes[0, 0, 0::2, 0::2], frame[0::4, 2::4])
    assert np.array_equal(planes[1, 1, 1::2, 1::2], frame[3::4, 1::4])
    images = processor(layout=45, colour="GRBG").transform(np.stack([frame, frame]), ("stokes", "dolp"))
    assert images["stokes"].shape == (2, 2, 2, 32, 48, 2)
    assert same(images["dolp"][1, 1, 0], processor(layout=45).transform(planes[1, 0], ("dolp",))["dolp"])


@pytest.mark.parametrize("style", ["plain", "light", "dark", "composite"])
def test_colours_are_those_of_the_tool(frame, style, tmp_path, run_tool):
    image = pytest.importorskip("matplotlib.image")
    np.save(tmp_path / "f.npy", frame)
    scales = ("--azimuth-style", style, "--degree-max", 0.5, "--power-max", 0.8)
    options = ("--layout", 90, "--bit-depth", 12, "--outputs", "azimuth-picture", *scales)
    run_tool("transform", tmp_path / "f.npy", *options, "--output", tmp_path / "out")
    (file,) = (tmp_path / "out").glob("*.png")
    picture = np.rint(image.imread(file) * 255).astype(np.uint8)
    images = processor().transform(frame, ("azimuth", "dolp", "power"))
    rgb = nz.colour(images["azimuth"], images["dolp"], images["power"], style, degree_max=0.5, power_max=0.8)
    assert np.array_equal(rgb, picture[..., :3])
    from_angle = processor().transform(frame, "angle")["angle"]
    close = nz.colour(from_angle, images["dolp"], images["power"], style, degree_max=0.5, power_max=0.8)
    assert np.abs(close.astype(int) - rgb)[np.isfinite(from_angle)].max() <= 4  # the azimuth's 0.16 degrees


@pytest.mark.parametrize(
    ("frame", "words"),
    [
        (np.zeros((4, 4), np.int32), r"frame.astype\(numpy.uint16\)"),
        (np.zeros((4, 4), ">u2"), "byte order"),
        (np.zeros((4, 8), np.uint16)[:, ::2], "numpy.ascontiguousarray"),
        (np.zeros(16, np.uint16), "height, width"),
        (np.zeros((4, 1), np.uint16), "2 x 2"),
        ([[1, 2], [3, 4]], "numpy.asarray"),
        (np.zeros((4, 4)), "whole numbers"),
    ],
)
def test_frames_that_would_be_read_wrong_are_refused(frame, words):
    with pytest.raises(ValueError, match=words):
        processor().transform(frame)
    with pytest.raises(ValueError, match=words):
        nz.statistics(frame, layout=90, bit_depth=12)


def test_arguments_are_refused_in_words(frame):
    with pytest.raises(TypeError, match="layout"):
        nz.Processor(bit_depth=12)
    for settings, words in (
        ({"layout": 30}, "0, 45, 90 or 135"),
        ({"bit_depth": 17}, "1 to 16"),
        ({"threads": 0}, "threads"),
        ({"output_maximum": 0}, "1 to 65535"),
        ({"colour": "RGB"}, "RGGB"),
        ({"bit_depth": 12.0}, "integer"),
    ):
        with pytest.raises(ValueError, match=words):
            processor(**settings)
    made = processor()
    image = np.empty(frame.shape, np.uint16)
    for call, words in (
        (lambda: made.transform(frame, ("angel",)), "'angel'; there are stokes"),
        (lambda: made.transform(frame, ("dolp",), (-1, 0)), "origin"),
        (lambda: made.transform(frame, ("dolp",), out={}), "no 'dolp'"),
        (lambda: made.transform(frame, ("dolp",), out={"dolp": image[1:]}), "numpy.empty"),
        (lambda: made.transform(frame, ("dolp",), out={"dolp": frame}), "shares memory"),
        (lambda: made.transform(frame, ("dolp", "power"), out={"dolp": image, "power": image}), "shares memory"),
        (lambda: processor(colour="RGGB").transform(frame), "4 x 4"),
        (lambda: nz.statistics(frame, layout=90, bit_depth=12, roi=(600, 0, 20, 20)), "beyond the frame"),
        (lambda: nz.colour(image, style="dark"), "needs dolp"),
        (lambda: nz.colour(image, image, image, style="loud"), "plain, light, dark or composite"),
        (lambda: nz.simulate((1, 4), 90, 12), "size"),
    ):
        with pytest.raises(ValueError, match=words):
            call()
