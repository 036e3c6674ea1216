"""The figures of the benchmark report."""

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt
from matplotlib.ticker import FixedLocator, FuncFormatter, NullLocator

plt.rcParams.update({"svg.hashsalt": "nerova", "font.size": 9, "axes.spines.top": False, "axes.spines.right": False,
                     "axes.grid": True, "axes.grid.axis": "y", "grid.color": "#dddddd", "axes.axisbelow": True})

# Label, colour and marker of each route: the library in colours, the peers in greys.
STYLES = {
    "avx512": ("AVX-512 plugin", "#b2182b", "D"),
    "avx2": ("AVX2 plugin", "#ef8a62", "s"),
    "sse41": ("built-in, SSE4.1", "#2166ac", "o"),
    "sse2": ("built-in, SSE2", "#67a9cf", "o"),
    "plain": ("per-pixel loop, C++", "#444444", "^"),
    "opencv": ("OpenCV, C++", "#777777", "v"),
    "numpy": ("NumPy and OpenCV", "#aaaaaa", "<"),
    "library": ("fastest, through the C interface", "#7b3294", "x"),
    "stream": ("streaming, plain stores", "black", None),
    "stream-prefetched": ("streaming, lines fetched ahead", "black", None),
    "stream-uncached": ("streaming, uncached stores", "black", None),
}
LABELS = {route: style[0] for route, style in STYLES.items()}


def plain_number(value, _position=None):
    return f"{value:g}" if value < 1000 else f"{value / 1000:g},000"


def throughput(timings, sets, sizes, path):
    """Mpixel/s by set of outputs and route, one panel a size; the streaming limit as a line."""
    figure, panels = plt.subplots(len(sizes), 1, figsize=(9, 8.2), sharex=True)
    routes = ("avx512", "avx2", "sse41", "sse2", "plain", "opencv", "numpy")
    for panel, (size, title) in zip(panels, sizes.items()):
        edges, limits = [], []
        for place, outputs in enumerate(sets):
            edges += [place - 0.5, place + 0.5]
            limits += [timings.limit(outputs, size).rate] * 2
        panel.plot(edges, limits, color="black", linewidth=1.5, label="streaming limit: read the frame, write the bytes")
        for order, route in enumerate(routes):
            label, colour, marker = STYLES[route]
            drawn = [(place + (order - (len(routes) - 1) / 2) * 0.11, timings.get(route, outputs, size))
                     for place, outputs in enumerate(sets) if timings.get(route, outputs, size)]
            if drawn:
                places, found = zip(*drawn)
                rates = [timing.rate for timing in found]
                errors = [[t.rate - t.quartile_rates[0] for t in found], [t.quartile_rates[1] - t.rate for t in found]]
                panel.errorbar(places, rates, yerr=errors, linestyle="none", color=colour, marker=marker, markersize=5,
                               label=label)
        for place in range(1, len(sets)):
            panel.axvline(place - 0.5, color="#dddddd", linewidth=0.8)
        panel.set_yscale("log")
        panel.yaxis.set_major_locator(FixedLocator([10, 20, 50, 100, 200, 500, 1000, 2000, 5000, 10000]))
        panel.yaxis.set_minor_locator(NullLocator())
        panel.yaxis.set_major_formatter(FuncFormatter(plain_number))
        panel.set_ylabel("Mpixel/s (log scale)")
        panel.set_title(title, loc="left", fontweight="bold")
        panel.set_xlim(-0.5, len(sets) - 0.5)
    panels[-1].set_xticks(range(len(sets)), sets.values())
    panels[-1].tick_params(axis="x", length=0)
    handles, labels = panels[0].get_legend_handles_labels()
    figure.legend(handles, labels, loc="upper center", ncol=4, frameon=False)
    figure.tight_layout(rect=(0, 0, 1, 0.93))
    figure.savefig(path, metadata={"Date": None})
    plt.close(figure)


def frame_sizes(timings, sides, caches, bytes_per_pixel, path):
    """Time per pixel over the side of square frames, all six outputs; where the caches end."""
    figure, axes = plt.subplots(figsize=(9, 6.2))
    routes = ("numpy", "opencv", "plain", "sse41", "library", "avx2", "avx512", "stream", "stream-prefetched", "stream-uncached")
    labels = []
    for route in routes:
        found = {side: timings.get(route, "all", f"{side}x{side}") for side in sides}
        found = {side: timing for side, timing in found.items() if timing}
        if not found:
            continue
        label, colour, marker = STYLES[route]
        style = {"stream-uncached": ":", "stream-prefetched": "--"}.get(route, "-")
        values = [timing.nanoseconds_per_pixel for timing in found.values()]
        axes.plot(found.keys(), values, color=colour, marker=marker, markersize=4, linestyle=style, linewidth=1.3)
        axes.fill_between(found.keys(), [1000 / t.quartile_rates[1] for t in found.values()],
                          [1000 / t.quartile_rates[0] for t in found.values()], color=colour, alpha=0.15, linewidth=0)
        labels.append([max(found), values[-1], label, colour])
    axes.set_xscale("log", base=2)
    axes.set_yscale("log")
    # Labels at the ends of the lines, pushed apart where they would touch; one column for each length of line.
    for end in {label[0] for label in labels}:
        lowest = 0
        for label in sorted((label for label in labels if label[0] == end), key=lambda label: label[1]):
            height = max(label[1], lowest)
            axes.annotate(label[2], (end, label[1]), xytext=(end * 1.12, height), color=label[3], va="center",
                          annotation_clip=False, bbox={"color": "white", "pad": 0.5}, fontsize=8)
            lowest = height * 1.27
    bottom, top = axes.get_ylim()
    for name, size in caches.items():
        side = (size / bytes_per_pixel) ** 0.5
        if sides[0] < side < sides[-1]:
            axes.axvline(side, color="#999999", linestyle="--", linewidth=0.8)
            axes.text(side, top * 1.02, f"{name}\nfull", ha="center", va="bottom", color="#666666", fontsize=8)
    axes.set_ylim(bottom, top)
    axes.set_xticks(sides, [str(side) for side in sides])
    axes.yaxis.set_major_locator(FixedLocator([0.2, 0.5, 1, 2, 5, 10, 20, 50, 100, 200, 500, 1000]))
    axes.yaxis.set_minor_locator(NullLocator())
    axes.yaxis.set_major_formatter(FuncFormatter(plain_number))
    axes.set_xlabel("width and height of the frame, pixels")
    axes.set_ylabel("ns per pixel, all six outputs (log scale)")
    figure.tight_layout(rect=(0, 0, 1, 0.97))
    figure.savefig(path, metadata={"Date": None})
    plt.close(figure)
