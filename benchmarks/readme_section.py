"""The measured part of the README: between two marks, all of it from the results of a benchmark run."""

import re
import statistics
import textwrap

import machine
from attainable_rate import LARGE, SETS, name_of, share, table

BEGIN, END = "<!-- measured: begin -->\n", "<!-- measured: end -->\n"
ROUTES = {"avx512": "AVX-512", "avx2": "AVX2", "sse41": "SSE4.1"}


def section(timings):
    def paragraph(text):
        return textwrap.fill(text, 120, break_long_words=False, break_on_hyphens=False) + "\n\n"

    routes = [route for route in ROUTES if timings.get(route, "all", LARGE)]
    rows = []
    shares = {route: [share(timings, route, outputs, "default") for outputs in SETS] for route in routes}
    for place, outputs in enumerate(SETS):
        cells = (f"{timings.get(route, outputs, LARGE).fastest_rate:.0f} ({shares[route][place]:.2f})" for route in routes)
        rows.append([name_of(outputs), f"{timings.limit(outputs, LARGE).fastest_rate:.0f}", *cells])
    rows.append(["median share", "", *(f"{statistics.median(shares[route]):.2f}" for route in routes)])
    call, question = (1000 * timings.get(route, "all", "2x2").microseconds for route in ("library", "cpu-question"))
    return (
        paragraph(f"{machine.description()[0]}; one thread, {LARGE.replace('x', ' x ')}, 12-bit samples rescaled to 65535. "
                  f"The fastest of {timings.rounds} rounds of one interleaved run, {timings.context['date'][:10]}.")
        + table(["Mpixel/s (share of the attainable rate)", "streaming limit", *(ROUTES[route] for route in routes)], rows)
        + "\n" + paragraph(f"A call costs {call:.0f} ns for a frame of 2 x 2, of which one CPUID instruction takes "
                           f"{question:.0f}.")[:-1])


def update(path, text):
    """Replaces what stands between the marks."""
    readme = path.read_text()
    path.write_text(re.sub(f"(?<={BEGIN}).*(?={END})", lambda _: text, readme, flags=re.DOTALL))
