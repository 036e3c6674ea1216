"""The measured part of the README: between two marks, all of it from the results of a benchmark run."""

import re
import textwrap

import figures
import machine

BEGIN, END = "<!-- measured: begin -->\n", "<!-- measured: end -->\n"
ROUTES = ("avx512", "avx2", "sse41", "sse2", "opencv", "plain", "numpy")


def section(timings, sets, large, small, spread):
    def get(route, outputs, size=large, **others):
        return timings.get(route, outputs, size, **others)

    def of_limit(timing, outputs, size=large):
        return f"{timing.fastest_rate / timings.limit(outputs, size).fastest_rate:.2f}"

    def in_words(timing):
        low, high = timing.quartile_rates
        return f"{timing.rate:.0f} ({low:.0f}..{high:.0f})"

    def row(label, timing):
        return f"| {label} | {in_words(timing)} | {timing.fastest_rate:.0f} | {of_limit(timing, 'all')} |"

    def paragraph(text):
        return textwrap.fill(text, 120, break_long_words=False, break_on_hyphens=False) + "\n\n"

    def plugin(route):
        singles = ", ".join(f"{' '.join(sets[outputs].split()).replace('/ ', '/')} {of_limit(get(route, outputs), outputs)}"
                            for outputs in sets if outputs not in ("five", "all"))
        cached = get(route, "all", small)
        text = f"{figures.LABELS[route]}: one output alone reaches of its limit: {singles}. In its own cache " \
               f"({small.replace('x', ' x ')}) it makes {in_words(cached)} Mpixel/s of all six, {cached.fastest_rate:.0f} " \
               "in the fastest round."
        windows = get(route, "all", worker="windows-x86")
        if windows:
            text += f" The Windows x86 build, under Wine, takes {get(route, 'all').fastest_rate / windows.fastest_rate:.2f} " \
                    "of the 64-bit time for all six outputs of the large frame."
        return paragraph(text)

    rows = [row("streaming limit", timings.limit("all", large))]
    rows += [row(figures.LABELS[route], get(route, "all")) for route in ROUTES if get(route, "all")]
    call, question = (1000 * get(route, "all", "2x2").microseconds for route in ("library", "cpu-question"))
    text = paragraph(
        f"{machine.description()[0]}; one thread, {large.replace('x', ' x ')}, 12-bit samples rescaled to 65535, all six "
        f"outputs. Medians of {timings.rounds} rounds with their quartiles, and the fastest round, from one interleaved "
        "run; ratios are those of fastest rounds, because what else goes on in a machine only takes time away.")
    text += "\n".join(["| | Mpixel/s | fastest | of the streaming limit |", "|---|---|---|---|", *rows]) + "\n\n"
    text += paragraph(f"The noise: the interquartile range is {spread}.")
    text += "".join(plugin(route) for route in ROUTES[:2] if get(route, "all"))
    return text + paragraph(f"A call costs {call:.0f} ns for a frame of 2 x 2, of which one CPUID instruction takes "
                            f"{question:.0f}.")[:-1]


def update(path, text):
    """Replaces what stands between the marks."""
    readme = path.read_text()
    path.write_text(re.sub(f"(?<={BEGIN}).*(?={END})", lambda _: text, readme, flags=re.DOTALL))
