"""The machine of a benchmark run, from what Linux says of it."""

import os
import pathlib
import platform
import re
import subprocess


def caches():
    """Bytes of the data caches by name, as the first processor sees them."""
    sizes = {}
    for index in sorted(pathlib.Path("/sys/devices/system/cpu/cpu0/cache").glob("index*")):
        kind, level, size = ((index / name).read_text().strip() for name in ("type", "level", "size"))
        if kind != "Instruction":
            number, unit = re.fullmatch(r"(\d+)([KM])", size).groups()
            sizes[f"L{level}"] = int(number) * {"K": 2**10, "M": 2**20}[unit]
    return sizes


def size_in_words(size):
    return f"{size / 2**20:g} MiB" if size >= 2**20 else f"{size / 2**10:g} KiB"


def description():
    cpuinfo = pathlib.Path("/proc/cpuinfo").read_text()

    def field(name):
        return re.search(rf"^{name}\s*: (.*)$", cpuinfo, re.M).group(1)

    memory = int(re.search(r"MemTotal:\s+(\d+)", pathlib.Path("/proc/meminfo").read_text()).group(1)) / 2**20
    virtual = ", a virtual machine" if " hypervisor" in field("flags") else ""
    compiler = subprocess.run(["c++", "--version"], capture_output=True, text=True, check=True).stdout.splitlines()[0]
    pages = pathlib.Path("/sys/kernel/mm/transparent_hugepage/enabled")
    huge = re.search(r"\[(\w+)\]", pages.read_text()).group(1) if pages.exists() else "never"
    return [
        f"{field('model name')} (family {field('cpu family')}, model {field('model')}), {os.cpu_count()} processors"
        + virtual,
        "caches: " + ", ".join(f"{name} {size_in_words(size)}" for name, size in caches().items())
        + f"; {memory:.0f} GiB of memory; transparent huge pages: {huge}",
        f"Linux {platform.release().split('-')[0]}, {compiler}",
    ]
