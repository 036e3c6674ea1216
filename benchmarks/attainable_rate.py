#!/usr/bin/python3
"""Shares of the attainable rate: of what memory allows on a large frame and what a route itself makes in its caches.

Usage: attainable_rate.py RESULTS.json    prints the table for the machine that it runs on."""

import statistics
import sys

import machine
from timings import Timings

LARGE, SMALL = "2448x2048", "640x64"
SETS = {"power": "total power", "hv": "horizontal/\nvertical", "diagonal": "diagonal", "azimuth": "azimuth",
        "dolp": "degree of\npolarization", "direction": "azimuth with\ndegree", "stokes": "normalized\nStokes",
        "five": "the five\n16-bit ones", "all": "all six"}
# Route, calibration, and the head of their columns.
COLUMNS = (("avx512", "default", "AVX-512"), ("avx512", "custom", "AVX-512, custom"),
           ("avx2", "default", "AVX2"), ("avx2", "custom", "AVX2, custom"),
           ("sse41", "default", "SSE4.1"), ("sse2", "default", "SSE2"))


def name_of(outputs):
    return SETS[outputs].replace("/\n", "/").replace("\n", " ")


def table(heads, rows):
    lines = ["| " + " | ".join(row) + " |" for row in (heads, ["---"] + ["---:"] * (len(heads) - 1), *rows)]
    return "\n".join(lines) + "\n"


def share(timings, route, outputs, matrices):
    """Between fastest rounds."""
    large, small = (timings.get(route, outputs, size, matrices=matrices).fastest_rate for size in (LARGE, SMALL))
    return large / min(small, timings.limit(outputs, LARGE).fastest_rate)


def shares(timings):
    """One line for each set of outputs, and the medians: Mpixel/s of the large frame and in cache, and the share."""
    columns = [column for column in COLUMNS if timings.get(column[0], "all", LARGE, matrices=column[1])]
    rows = []
    found = {column: [share(timings, column[0], outputs, column[1]) for outputs in SETS] for column in columns}
    for place, outputs in enumerate(SETS):
        cells = [f"{timings.limit(outputs, LARGE).fastest_rate:.0f}"]
        for column in columns:
            large, small = (timings.get(column[0], outputs, size, matrices=column[1]).fastest_rate
                            for size in (LARGE, SMALL))
            cells.append(f"{large:.0f}, {small:.0f}: {found[column][place]:.2f}")
        rows.append([name_of(outputs), *cells])
    rows.append(["median", "", *(f"{statistics.median(found[column]):.2f}" for column in columns)])
    return table(["Mpixel/s, in cache: share", "streaming limit", *(column[2] for column in columns)], rows)


def gigahertz(timings):
    """The processor's clock during the run: a thousand cycles a call."""
    return timings.get("cycles", "all", "2x2").fastest_calls_per_microsecond


def main():
    timings = Timings(sys.argv[1])
    print("\n".join("- " + line for line in machine.description()))
    print(f"- {gigahertz(timings):.2f} GHz in the fastest round; {timings.rounds} rounds, "
          f"{timings.context['date'][:10]}, load average before: {timings.context['load_avg'][0]:.2f}\n")
    print(shares(timings), end="")


if __name__ == "__main__":
    main()
