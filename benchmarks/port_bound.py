#!/usr/bin/python3
"""Port bounds of the plugins' loops: processor cycles for 100 pixels, were execution ports and decoding the only limit.

Usage: port_bound.py OBJECTS [PROCESSOR...]
       port_bound.py OBJECTS --worker WORKER PROCESSOR    beside the cycles that this computer takes for 640 x 64

OBJECTS is the folder with the objects of the plugins, such as build/linux-x86-64/vector_plugins/CMakeFiles. Takes the
loop of each row out of the machine code and asks the newest llvm-mca that is installed; Debian 12's llvm-19 knows all
processors of the list. WORKER is nerova_frame_worker; PROCESSOR should then be the model of this computer.
"""

import pathlib
import re
import shutil
import subprocess
import sys

PROCESSORS = ("cascadelake", "icelake-server", "sapphirerapids", "znver4")
# In the order of the bits of an output set.
OUTPUT_SETS = {"total power": 2, "horizontal/vertical": 4, "diagonal": 8, "azimuth": 16, "degree of polarization": 32,
               "azimuth with degree": 48, "normalized Stokes": 1, "the five 16-bit ones": 62, "all six": 63}
STOKES_BYTES, RESULT_BYTES = 8, 2
OBJECT_OF = {"default": "{}_default_rows_0", "custom": "{}_ordinary_rows"}
INSTRUCTION = re.compile(r"^ *([0-9a-f]+):\t([^#<]*)")


def newest_llvm_mca():
    for name in [f"llvm-mca-{version}" for version in range(40, 13, -1)] + ["llvm-mca"]:
        if shutil.which(name):
            return name
    sys.exit("llvm-mca is missing; Debian has it in llvm-19")


def run(*command, text=None):
    return subprocess.run(command, input=text, capture_output=True, text=True, check=True).stdout


def functions(object_file):
    """Instructions by demangled name: (address, text)."""
    found, current = {}, None
    for line in run("objdump", "-dC", "--no-show-raw-insn", "-w", str(object_file)).splitlines():
        head = re.match(r"^[0-9a-f]+ <(.*)>:$", line)
        if head:
            current = found.setdefault(head.group(1), [])
        elif current is not None and (match := INSTRUCTION.match(line)):
            current.append((int(match.group(1), 16), match.group(2).strip()))
    return found


def loop_of(instructions):
    """The longest loop: from the target of a jump backwards to that jump, without what a jump within skips."""
    places = {address: place for place, (address, _) in enumerate(instructions)}

    def target(place):
        jump = re.match(r"j[a-z]+ +([0-9a-f]+)", instructions[place][1])
        return places.get(int(jump.group(1), 16)) if jump else None

    loops = []
    for end in range(len(instructions)):
        start = target(end)
        if start is None or start > end:
            continue
        loop, place = [], start
        while place < end:
            skip_to = target(place)
            if skip_to is None:
                loop.append(instructions[place][1])
                place += 1
            else:
                place = skip_to if place < skip_to <= end else place + 1
        loops.append(loop)
    return max(loops, key=len)


def pixels_of(loop, outputs):
    """Of one turn, from the bytes that it stores to the images."""
    stores = [re.search(r"%([xyz])mm\d+,-?(?:0x[0-9a-f]+)?\((?!%[er](?:sp|bp)\))[^)]*\)$", text) for text in loop
              if re.match(r"v?(mov(nt|u|a|dq)|mov)", text)]
    stored = sum({"x": 16, "y": 32, "z": 64}[match.group(1)] for match in stores if match)
    per_pixel = STOKES_BYTES * (outputs & 1) + RESULT_BYTES * bin(outputs >> 1).count("1")
    return stored / per_pixel


def bound(mca, processor, loop):
    """Cycles of one turn: the busiest port, or what decoding allows."""
    report = run(mca, f"-mcpu={processor}", "-iterations=100", "-instruction-info=false", text="\n".join(loop) + "\n")
    ports = re.search(r"Resource pressure per iteration:\n.*\n(.*)", report).group(1)
    decoding = re.search(r"Block RThroughput: +([\d.]+)", report).group(1)
    return max(float(cycles) for cycles in [*re.findall(r"[\d.]+", ports), decoding])


class Measured:
    """Cycles for 100 pixels of a frame that stays in the caches, row ends included."""
    WIDTH, HEIGHT = 640, 64

    def __init__(self, worker):
        self.worker = subprocess.Popen([worker], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, bufsize=1)

    def cycles(self, plugin, calibration, outputs):
        custom = int(calibration == "custom")
        self.worker.stdin.write(f"cycles {plugin} {self.WIDTH} {self.HEIGHT} 0 {outputs} 0 {custom} 1\n")
        return 100 * float(self.worker.stdout.readline()) / (self.WIDTH * self.HEIGHT)


def main():
    objects = pathlib.Path(sys.argv[1])
    arguments = sys.argv[2:]
    measured = None
    if arguments[:1] == ["--worker"]:
        measured = Measured(arguments[1])
        arguments = arguments[2:3]
    processors = arguments or PROCESSORS
    mca = newest_llvm_mca()
    routes = [(plugin, calibration) for plugin in ("avx512", "avx2") for calibration in OBJECT_OF]
    heads = [f"{plugin}, {calibration}" for plugin, calibration in routes]
    if not measured:
        heads = [f"{head}, {processor}" for head in heads for processor in processors]
    print("| cycles for 100 pixels | " + " | ".join(heads) + " |")
    print("| --- |" + " ---: |" * len(heads))
    code = {}
    for plugin, calibration in routes:
        folder = objects / (OBJECT_OF[calibration].format(plugin) + ".dir")
        code[plugin, calibration] = functions(next(folder.glob("*.o")))
    for label, outputs in OUTPUT_SETS.items():
        cells = []
        for route in routes:
            pattern = re.compile(rf"_row<false, {outputs}u, false>\(")
            loop = loop_of(next(text for name, text in code[route].items() if pattern.search(name)))
            pixels = pixels_of(loop, outputs)
            bounds = [100 * bound(mca, processor, loop) / pixels for processor in processors]
            if measured:
                cycles = measured.cycles(*route, outputs)
                cells.append(f"{bounds[0]:.1f} of {cycles:.1f}: {bounds[0] / cycles:.2f}")
            else:
                cells += [f"{cycles:.1f}" for cycles in bounds]
        print(f"| {label} | " + " | ".join(cells) + " |", flush=True)


if __name__ == "__main__":
    main()
