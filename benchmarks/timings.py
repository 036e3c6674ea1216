"""The cases of a benchmark run: microseconds and pixels, by the words of their names."""

import json
import statistics
from collections import defaultdict, namedtuple

# The words of a name, see benchmark_main.cpp.
Case = namedtuple("Case", "worker route outputs size maxima matrices")


STREAMS = ("stream", "stream-prefetched", "stream-uncached")


class Timing:
    def __init__(self, microseconds, size):
        self.microseconds = statistics.median(microseconds)
        low, _, high = statistics.quantiles(microseconds, n=4)
        width, height = map(int, size.split("x"))
        self.pixels = width * height
        self.rate = self.pixels / self.microseconds  # Mpixel/s
        self.fastest_rate = self.pixels / min(microseconds)
        self.fastest_calls_per_microsecond = 1 / min(microseconds)
        self.quartile_rates = (self.pixels / high, self.pixels / low)
        self.nanoseconds_per_pixel = 1000 * self.microseconds / self.pixels
        self.spread = (high - low) / self.microseconds  # interquartile range in parts of the median


class Timings:
    def __init__(self, path):
        with open(path) as file:
            run = json.load(file)
        self.context = run["context"]
        samples = defaultdict(list)
        for entry in run["benchmarks"]:
            if entry["run_type"] == "iteration" and not entry.get("error_occurred"):
                samples[Case(*entry["run_name"].split("/")[:6])].append(entry["real_time"])
        self.rounds = max(map(len, samples.values()))
        self.cases = {case: Timing(times, case.size) for case, times in samples.items()}

    def get(self, route, outputs, size, maxima="rescaled", matrices="default", worker="x86-64"):
        """None when the case did not run on this machine."""
        return self.cases.get(Case("python" if route == "numpy" else worker, route, outputs, size, maxima, matrices))

    def limit(self, outputs, size):
        """The fastest of the ways to stream."""
        return max((self.get(route, outputs, size) for route in STREAMS), key=lambda t: t.fastest_rate)
