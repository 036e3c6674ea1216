#!/usr/bin/python3
"""Writes performance.md and its figures, and the README's measured part, from the results of a benchmark run.

Usage: write_report.py RESULTS.json DIRECTORY README"""

import pathlib
import statistics
import sys

import cv2
import numpy

import attainable_rate
import figures
import machine
import readme_section
from attainable_rate import LARGE, SETS, SMALL, name_of, table
from timings import STREAMS, Timings

SIZES = {LARGE: "2448 x 2048", SMALL: "640 x 64, in the second-level cache"}
OURS = ("avx512", "avx2", "sse41", "sse2")
PLUGINS = OURS[:2]
PEERS = ("plain", "opencv", "numpy")
SIDES = [2**power for power in range(4, 14)]
BYTES_PER_PIXEL = 20  # a sample, two floats and five 16-bit values
GROWTH = 1.15  # what counts as a knee between one side and the next


def ratio(numerator, denominator):
    return f"{numerator.fastest_rate / denominator.fastest_rate:.2f}" if numerator and denominator else "-"


class Report:
    def __init__(self, timings):
        self.timings = timings
        self.has = {case.route for case in timings.cases}
        self.ours = [route for route in OURS if route in self.has]
        self.fast = [route for route in self.ours if route != "sse2"]
        self.plugins = [route for route in PLUGINS if route in self.has]
        self.peers = [route for route in PEERS if route in self.has]

    def rates(self, size):
        """Median, quartiles and the fastest round of every route."""
        get = self.timings.get
        routes = [*STREAMS, *self.ours, *self.peers]

        def cell(route, outputs):
            timing = get(route, outputs, size)
            low, high = timing.quartile_rates
            return f"{timing.rate:.0f} ({low:.0f}..{high:.0f}) {timing.fastest_rate:.0f}"

        return table(["Mpixel/s", *(figures.LABELS[route] for route in routes)],
                     [[name_of(outputs), *(cell(route, outputs) for route in routes)] for outputs in SETS])

    def ratio_table(self, columns):
        """columns: head -> function of (outputs, size) giving text."""
        heads = ["", *(f"{head}, {size}" for size in (LARGE, SMALL) for head in columns)]
        rows = [[name_of(outputs), *(column(outputs, size) for size in (LARGE, SMALL) for column in columns.values())]
                for outputs in SETS]
        return table(heads, rows)

    def against_built_in(self):
        return self.ratio_table({
            figures.LABELS[route]: lambda outputs, size, route=route: ratio(
                self.timings.get(route, outputs, size), self.timings.get("sse41", outputs, size))
            for route in self.plugins})

    def against_peers(self):
        best = self.ours[0]
        return self.ratio_table({
            figures.LABELS[peer]: lambda outputs, size, peer=peer: ratio(
                self.timings.get(best, outputs, size), self.timings.get(peer, outputs, size)) for peer in self.peers})

    def calibration(self):
        def column(route, maxima):
            return lambda outputs, size: ratio(self.timings.get(route, outputs, size, maxima, "custom"),
                                               self.timings.get(route, outputs, size, maxima))
        return self.ratio_table({f"{figures.LABELS[route]}, maxima {'equal' if maxima == 'equal' else 'unequal'}":
                                 column(route, maxima) for route in self.plugins for maxima in ("rescaled", "equal")})

    def equal_maxima(self):
        return self.ratio_table({
            figures.LABELS[route]: lambda outputs, size, route=route: ratio(
                self.timings.get(route, outputs, size, "equal"), self.timings.get(route, outputs, size))
            for route in self.fast})

    def word_sizes(self, worker):
        """Time of a 32-bit build in parts of the 64-bit one's, so the rates stand the other way round."""
        return self.ratio_table({
            figures.LABELS[route]: lambda outputs, size, route=route: ratio(
                self.timings.get(route, outputs, size),
                self.timings.get(route, outputs, size, worker=worker)) for route in self.fast})

    def sizes(self):
        routes = [*STREAMS, *self.fast, "library", *self.peers]

        def cell(route, side):
            timing = self.timings.get(route, "all", f"{side}x{side}")
            return f"{timing.nanoseconds_per_pixel:.2f}" if timing else "-"

        return table(["ns per pixel", "bytes", *(figures.LABELS[route] for route in routes)],
                     [[f"{side} x {side}", machine.size_in_words(side * side * BYTES_PER_PIXEL),
                       *(cell(route, side) for route in routes)] for side in SIDES])

    def knees(self):
        """One line for each step of the side at which a route's time per pixel changes, and what changes there."""
        caches = machine.caches()
        routes = [*self.plugins, "sse41", *STREAMS]
        lines = []
        for small, large in zip(SIDES, SIDES[1:]):
            changes = {}
            for route in routes:
                before, after = (self.timings.get(route, "all", f"{side}x{side}") for side in (small, large))
                if before and after:
                    growth = after.nanoseconds_per_pixel / before.nanoseconds_per_pixel
                    apart = (after.quartile_rates[1] < before.quartile_rates[0]
                             or after.quartile_rates[0] > before.quartile_rates[1])
                    if apart and not 1 / GROWTH < growth < GROWTH:
                        changes[route] = f"{figures.LABELS[route]} x {growth:.2f}"
            if not changes:
                continue
            low, high = (side * side * BYTES_PER_PIXEL for side in (small, large))
            filled = [name for name, size in caches.items() if low < size <= high]
            lines.append(f"- {small} to {large}: " + ", ".join(changes.values()) + "."
                         + (f" The data outgrow {' and '.join(filled)} here." if filled else ""))
        return "\n".join(lines)

    def extra_cost(self, route, side, reference_side):
        """Nanoseconds of a small frame beyond the same number of pixels of a larger one."""
        small, large = (self.timings.get(route, "all", f"{s}x{s}").nanoseconds_per_pixel
                        for s in (side, reference_side))
        return (small - large) * side * side

    def small_frames(self):
        rows = ", ".join(f"{self.extra_cost(route, 32, 256) / 32:.0f} ns ({figures.LABELS[route]})"
                         for route in self.fast)
        direct, through = (self.timings.get(route, "all", "16x16").microseconds for route in (self.ours[0], "library"))
        return f"""On the left the costs of a row and of a call are spread over few pixels: every row ends in pixels or a step of its own
that mirror the edge, and every call through the C interface asks the processor (see below). Against the
rate at 256 x 256, a row of a frame of 32 x 32 takes longer by
{rows};
and through the C interface a frame of 16 x 16 takes {1000 * through:.0f} ns instead of {1000 * direct:.0f}."""

    def large_frames(self):
        def growth(route):
            small, large = (self.timings.get(route, "all", f"{side}x{side}").rate for side in (1024, 4096))
            return f"x {small / large:.2f}"

        return f"""From 1024 x 1024
to 4096 x 4096 streaming grows {growth('stream')} with plain stores and {growth('stream-uncached')} with uncached ones:
plain stores first read the lines that they fill, and once a cache is full each line pushes out another that has to be
written back. A route that computes longer hides part of that; {figures.LABELS[self.ours[0]]} grows {growth(self.ours[0])}."""

    def call_overhead(self):
        workers = [worker for worker in ("x86-64", "i386", "windows-x86") if self.timings.get("library", "all", "2x2", worker=worker)]

        def nanoseconds(route, worker):
            return 1000 * self.timings.get(route, "all", "2x2", worker=worker).microseconds

        rows = []
        kernel = self.ours[0]
        for worker in workers:
            for route, direct in (("library", kernel), ("library-alone", "sse41")):
                if not (self.timings.get(route, "all", "2x2", worker=worker)
                        and self.timings.get(direct, "all", "2x2", worker=worker)):
                    continue
                parts = [nanoseconds(part, worker) for part in (route, "cpu-question", direct)]
                rows.append([f"{worker}, {'plugins beside it' if route == 'library' else 'no plugins'}",
                             *(f"{part:.0f}" for part in parts), f"{parts[0] - sum(parts[1:]):.0f}"])
        return table(["ns, 2 x 2 frame, all six outputs", "the call", "of that: CPUID", "the four pixels",
                      "the rest"], rows)

    def spread(self):
        spreads = [timing.spread for case, timing in self.timings.cases.items() if case.size in SIZES]
        nine_in_ten = statistics.quantiles(spreads, n=10)[-1]
        return f"{100 * statistics.median(spreads):.0f} % of the median in half of the cases of the tables, at most " \
               f"{100 * nine_in_ten:.0f} % in nine of ten"

    def text(self):
        missing = [figures.LABELS[route] for route in (*OURS, *PEERS) if route not in self.has]
        left_out = f"\n\nLeft out, because they do not run on this machine: {', '.join(missing)}." if missing else ""
        context = self.timings.context
        load = context.get("load_avg", [])
        best = figures.LABELS[self.ours[0]]
        nl = "\n"
        return f"""# Performance

Written by `scripts/benchmark`, which builds, measures and draws the figures.

## Machine and method

{nl.join("- " + line for line in machine.description())}
- peers: OpenCV {cv2.__version__}, NumPy {numpy.__version__}

One thread, 12-bit random samples, {context["date"][:10]}. All cases belong to one run of {self.timings.rounds} rounds in random order; each
measurement begins with fresh memory and 40 ms of calls that are not counted, and is the fastest of the batches of calls
that the next 60 ms hold, three at least. Numbers are medians of the rounds, in parentheses the
quartiles, behind them in the two tables of rates the fastest round. The noise: the interquartile range is {self.spread()}.
Load average when the run began, behind a build: {load[0] if load else 0:.2f}. Unless said otherwise the
output maximum (65535) differs from full scale (4095) and the calibration is the default one.

The streaming limit reads the frame once and writes as many bytes as the outputs have, 32 pixels at a time, and computes
nothing: with plain stores, with plain stores to lines that were fetched ahead for writing, and with stores that bypass the
caches. Where one limit is meant, it is the fastest of the three. The attainable rate of a route is what that limit allows
and what the route itself makes of the same rows in its caches, 640 x 64, whichever is lower.
The peers agree with the library to rounding; `benchmarks/peers/check_peers.py` checks it before they are timed. They
are a per-pixel loop in C++ (`-O3 -march=native`), OpenCV's functions from C++, and NumPy with OpenCV from Python; one
thread each.{left_out}

## Mpixel/s by outputs and route

![Mpixel/s by outputs and route](performance.svg)

{SIZES[LARGE]}:

{self.rates(LARGE)}
{SIZES[SMALL]}:

{self.rates(SMALL)}
## Ratios

Between fastest rounds: what else goes on in a machine only ever takes time away, and on this one it often does.

Share of the attainable rate, behind Mpixel/s of 2448 x 2048 and in cache:

{attainable_rate.shares(self.timings)}
Times as fast as the built-in SSE4.1 form:

{self.against_built_in()}
{best}, times as fast as the peers:

{self.against_peers()}
Custom calibration, speed in parts of the default one's:

{self.calibration()}
Output maximum equal to full scale, speed in parts of the unequal one's:

{self.equal_maxima()}
32-bit Linux build, time in parts of the 64-bit one's:

{self.word_sizes("i386")}
Windows x86 build under Wine, time in parts of the 64-bit Linux one's:

{self.word_sizes("windows-x86")}
## How the cost grows with the frame

![Time per pixel by frame size and route](frame-sizes.svg)

All six outputs; bytes are those of the frame and its images. The shading in the figure lies between the quartiles.

{self.sizes()}
Where the time per pixel of a route changes by more than {100 * (GROWTH - 1):.0f} % from one size to the next, beyond the quartiles:

{self.knees()}

{self.small_frames()}

Mid-size frames are compute-bound: streaming with plain stores takes much less time, and a route's own line is flat. Large
frames are memory-bound: the streaming lines, which compute nothing, rise with a route's. {self.large_frames()}
The peers rise earlier, because the whole images that they keep in between take several times the room of the frame.

## What a call costs

{self.call_overhead()}
Through the C interface, no logger beside the library. Each part is timed by itself in the same run; the four pixels are
the same frame given directly to the kernel or plugin. CPUID is executed once in every call, because the choice between
the built-in forms is executed each time; in a virtual machine it is a round trip to the hypervisor. The clock is read
for the record of the time taken, and only where there is a logger. The rest is the argument checks, the dispatch,
saving and restoring the caller's floating-point environment, and what the parts do to each other: CPUID empties the
pipeline that the parts timed alone keep full.

## What was tried

Kept in the plugins, because it measured better:

- Rows instead of blocks: one row function for each polarizer that a row can begin with; two vectors a step, so that a
  16-bit output fills its stores.
- Divisions by full scale and by 180 as one multiplication and one fused operation, with the reciprocal as the sum of
  two floats; both Stokes quotients from one reciprocal. Exact, and proved so by trying every case.
- Where S1 and S2 are differences of samples, signs in place of comparisons in the arctangent, the squares that the
  degree needs anyway in place of magnitudes, and a negated argument in place of a negated result.
- Clamping results after they are narrowed to 16 bits, one instruction for two vectors.
- Prefetching the lines that a row will write, 5 % on all six outputs, more on the Stokes pair alone: 8 steps from now
  instead of 32, 2 to 4 % where measured on Cascade Lake, nothing on Emerald Rapids.
- Prefetching the partner row 4 KiB ahead: on Emerald Rapids 15 % on the total power, up to 5 % on the rest; on Cascade Lake 13 to
  58 %.
- Two steps at a time where registers suffice: with AVX-512 for up to three 16-bit outputs, 0 to 12 %, but 4 to 6 % slower on the
  five and on all six; with AVX2 for all but the sets with the Stokes pair and three others, 4 to 17 %, but 6 % slower on those.
  Of custom weights for single 16-bit outputs only, up to 11 %; 7 to 18 % slower on the Stokes pair and on more outputs.
- A row in one call, its last step in the same loop; short copies at the ends of rows without a call.
- Samples as the floats 2^23 + sample, made by putting 0x4B00 above their 16 bits, so that differences need no
  conversion; custom weights multiply them by a fused operation that takes the shift away again.
- That fused operation for one or two 16-bit outputs only: the shift's shares of more weights would take up registers,
  and the five outputs are 3 to 5 % faster without it.
- The end of a row copied a row ahead of its use. With the samples as floats: 8 to 33 % with AVX2, 4 to 30 % with AVX-512,
  6 to 16 % for custom calibration but for the Stokes pair, in the first-level cache.
- Even and odd columns in vectors of their own: AVX-512 loads them so with a mask, without a shuffle, and a result takes
  one shuffle more. 8 % faster than columns in the order in which results are narrowed on all six outputs and on the
  five, 5 to 15 % on single ones. With AVX2, which blends, 10 to 15 % on one or two 16-bit outputs of the default
  calibration; 2 % slower on all six, and 15 % on custom weights, for which the registers do not suffice.
- Stokes pairs stored past the caches, with AVX-512 by whole lines, where that is faster. It depends on the machine: on Cascade
  Lake plain stores were up to 1.9 times as fast; on Emerald Rapids the two are even up to 6 megapixels, and from 9
  on stores past the caches 1.2 to 1.9 times as fast. So 16 rows of each are timed, twice, in every frame of a megapixel or
  more: within 1 to 4 % of the better form.
- Likewise a 16-bit output that is alone, from 8 MiB on. On Emerald Rapids with AVX-512 horizontal/vertical and diagonal are
  5 to 12 % faster at 2448 x 2048, 15 to 20 % where every row begins a cache line (2432 x 2048), and 1.4 times as fast at
  8192 x 8192; total power 1.36 times there and the same below; azimuth and degree, which compute longer, the same. A line
  that two rows share must not be both stored and streamed: with that, 2448 x 2048 gained nothing.
- With AVX-512 a reciprocal's argument moved whole to the registers that the estimate knows: 1 to 5 %.
- The compiler's ordering of instructions before it gives out registers, in 64 bits: 4 to 11 % on all six outputs and 5
  to 10 % on custom weights. In 32 bits, with eight registers, all six were 11 % slower. Without regard to how many registers
  are left only for AVX-512 and the default calibration, up to 2 %; with AVX2 and two steps at a time 9 to 18 % slower.

Not kept:

- Making rows in a buffer in the cache and streaming them past it, 1024 pixels at a time: a quarter slower on all six
  outputs and on the five, faster on the Stokes pair alone. The stores wait for memory while nothing is computed.
- The same with each line sent on four steps after it was made, so that memory is busy all the time: 3 to 15 % slower
  than plain stores on all six and on the five, faster on the Stokes pair alone until prefetching caught up.
- The 16-bit outputs past the caches as well: a fifth slower on all six than the pairs alone.
- The five outputs past the caches: a sixth slower where the third level takes them, as it does here.
- Pairs and 16-bit outputs of a step in another order; fused products for all custom weights: nothing, or slower.
- Passing the halves of AVX-512's reciprocal estimates through memory instead of shuffling them: 4 to 12 % slower.
"""


def main():
    timings = Timings(sys.argv[1])
    directory = pathlib.Path(sys.argv[2])
    directory.mkdir(exist_ok=True)
    figures.throughput(timings, SETS, SIZES, directory / "performance.svg")
    figures.frame_sizes(timings, SIDES, machine.caches(), BYTES_PER_PIXEL, directory / "frame-sizes.svg")
    report = Report(timings)
    (directory / "performance.md").write_text(report.text())
    readme_section.update(pathlib.Path(sys.argv[3]), readme_section.section(timings))


if __name__ == "__main__":
    main()
