#!/usr/bin/env python3
"""Checks on built files: exported names, and that an instruction set stays in the objects meant for it."""

import argparse
import os
import re
import subprocess
import sys
import tempfile

SSE41_AND_BELOW = re.compile(
    r"^(pshufb|phadd\w*|phsub\w*|pmaddubsw|pmulhrsw|psign[bwd]|palignr|pabs[bwd]|"
    r"blend\w*|pblend\w*|dpp[sd]|extractps|insertps|mpsadbw|packusdw|pcmpeqq|pextr[bdq]|pinsr[bdq]|phminposuw|"
    r"pmax(sb|sd|ud|uw)|pmin(sb|sd|ud|uw)|pmovsx\w*|pmovzx\w*|pmuldq|pmulld|ptest|round[ps][sd]|movntdqa|"
    r"addsub\w*|hadd\w*|hsub\w*|lddqu|movddup|movs[hl]dup|pcmpgtq|popcnt|crc32\w*)$")
AVX = re.compile(r"^v[a-z0-9]+$")
# The compiler keeps its pointers to these, which every C++ library has, in data that stay writable.
STAYS_WRITABLE = ("__gxx_personality_v0", "_ZTI")


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def instructions(path):
    for line in run("objdump", "-d", "--no-show-raw-insn", path).splitlines():
        match = re.match(r"\s+[0-9a-f]+:\s+(?:(?:lock|rep\w*|data16|cs|ds|es|notrack|bnd)\s+)*(\S+)(.*)", line)
        if match:
            yield match.group(1), match.group(2)


def windows_exports(library):
    names = run("objdump", "-p", library).split("[Ordinal/Name Pointer] Table")[-1].split("\n\n")[0]
    return set(re.findall(r"\[ *\d+\]\s+(?:\+base\[ *\d+\]\s+[0-9a-f]+\s+)?(\S+)", names))


def elf_exports(library):
    found = set()
    for line in run("nm", "-D", "--defined-only", library).splitlines():
        kind, name = line.split()[-2:]
        if kind != "A":  # the version's own name
            found.add(name.split("@")[0])
    return found


def check_exports(arguments):
    found = (windows_exports if arguments.library.endswith(".dll") else elf_exports)(arguments.library)
    expected = set(arguments.names)
    return [f"exports {name}, which is not part of the interface" for name in sorted(found - expected)] + [
        f"does not export {name}" for name in sorted(expected - found)]


def check_baseline(arguments):
    faults = []
    for path in arguments.objects:
        if path.endswith((".res", "version_note.c.o")):  # what states the version holds no code
            continue
        seen = 0
        for mnemonic, operands in instructions(path):
            seen += 1
            if AVX.match(mnemonic) or SSE41_AND_BELOW.match(mnemonic):
                faults.append(f"{path}: {mnemonic} needs more than SSE2")
            if arguments.no_sse and (re.search(r"%[xyz]mm", operands) or mnemonic.startswith("cmov")):
                faults.append(f"{path}: {mnemonic}{operands} does not run on every 32-bit processor")
        if seen == 0:
            faults.append(f"{path}: no instruction found")
    return faults


def check_unshared(arguments):
    return [f"{path}: {name} could be shared with code for older processors" for path in arguments.objects
            for kind, name in symbols(path) if kind in "WwVvu"]


def symbols(path):
    """Kinds and names, but for what every 32-bit position-independent object has: two integer instructions."""
    found = (line.split()[-2:] for line in run("nm", path).splitlines())
    return [(kind, name) for kind, name in found if not name.startswith("__x86.get_pc_thunk.")]


def check_isolated(arguments):
    faults = check_unshared(arguments)
    for path in arguments.objects:
        mnemonics = {mnemonic for mnemonic, _ in instructions(path)}
        if not mnemonics & set(arguments.uses):
            faults.append(f"{path}: none of {', '.join(arguments.uses)}: built without its instruction set?")
        if not arguments.avx and any(AVX.match(mnemonic) for mnemonic in mnemonics):
            faults.append(f"{path}: holds AVX instructions")
        for kind, name in symbols(path):
            # The second is the compiler's own on Windows, for frames of more than a page.
            if kind == "U" and name not in ("_GLOBAL_OFFSET_TABLE_", "___chkstk_ms"):
                faults.append(f"{path}: calls {name} elsewhere")
        sections = run("objdump", "-h", path)
        if re.search(r"\.(init_array|ctors|fini_array)", sections):
            faults.append(f"{path}: runs code when the library is loaded, on any processor")
    return faults


def check_windows(arguments):
    """Nothing but system DLLs and named ones beside it, addresses and data protected, a version, no time of its making."""
    headers = run("objdump", "-p", arguments.library)
    faults = [f"{arguments.library}: needs {name}" for name in re.findall(r"DLL Name: (\S+)", headers)
              if name.lower() not in ("kernel32.dll", "msvcrt.dll", *arguments.needs)]
    wanted = ["DYNAMIC_BASE", "NX_COMPAT"] + (["HIGH_ENTROPY_VA"] if "pei-x86-64" in headers else [])
    faults += [f"{arguments.library}: lacks {flag}" for flag in wanted if flag not in headers]
    with open(arguments.library, "rb") as library:
        text = library.read()
    if any(word.encode("utf-16-le") not in text for word in ("ProductVersion", "FileDescription", arguments.version)):
        faults.append(f"{arguments.library}: says no version {arguments.version}")
    if not re.search(r"Time/Date\s+Thu Jan\s+1 00:00:00 1970", headers):
        faults.append(f"{arguments.library}: holds the time of its making")
    return faults


def check_hardened(arguments):
    """Nothing writable and executable, no pointer to code that stays writable, stacks watched over, a version."""
    library = arguments.library
    with open(library, "rb") as file:
        content = file.read()
    pattern = r"\s+(\w+)\s+0x(\w+) 0x(\w+) 0x\w+ 0x(\w+) 0x\w+ ([R ][W ][E ])"
    segments = [(kind, int(offset, 16), int(start, 16), int(start, 16) + int(size, 16), flags)
                for kind, offset, start, size, flags in re.findall(pattern, run("readelf", "-lW", library))]
    faults = [f"{library}: a {kind} segment is writable and executable" for kind, *_, flags in segments
              if "W" in flags and "E" in flags]
    if not any(kind == "GNU_STACK" and "E" not in flags for kind, *_, flags in segments):
        faults.append(f"{library}: wants an executable stack")
    dynamic = run("readelf", "-dW", library)
    if "BIND_NOW" not in dynamic and not re.search(r"FLAGS_1.*NOW", dynamic):
        faults.append(f"{library}: binds functions late")
    if not re.search(r"Type:\s+DYN", run("readelf", "-hW", library)):
        faults.append(f"{library}: lies at a fixed address")
    if arguments.version and f"\1\0\0\0NerovaZel\0\0\0{arguments.version}\0".encode() not in content:
        faults.append(f"{library}: has no note of version {arguments.version}")
    if "TEXTREL" in dynamic:
        faults.append(f"{library}: code is relocated")

    def at(address, size):
        return next((content[offset + address - start:][:size] for kind, offset, start, end, _ in segments
                     if kind == "LOAD" and start <= address < end), b"")

    relocations = run("readelf", "-rW", library)
    pointers = 0
    unmarked = []
    for place, kind, rest in re.findall(r"^([0-9a-f]+)\s+[0-9a-f]+\s+(R_\S+) *(.*)$", relocations, re.MULTILINE):
        address = int(place, 16)
        kept = any(kind == "GNU_RELRO" and start <= address < end for kind, _, start, end, _ in segments)
        if not kind.endswith("_RELATIVE"):
            if not kept and not rest.split()[1].startswith(STAYS_WRITABLE):
                faults.append(f"{library}: the pointer to {rest.split()[1]} stays writable")
            continue
        # 32-bit files keep the value where it belongs.
        target = int(rest, 16) if rest else int.from_bytes(at(address, 4), "little")
        if any(kind == "LOAD" and "E" in flags and start <= target < end for kind, _, start, end, flags in segments):
            pointers += 1
            if not kept:
                faults.append(f"{library}: the pointer to code at {place} stays writable")
            if at(target, 4) != b"\xf3\x0f\x1e\xfa":
                unmarked.append(f"{target:#x}")
    if arguments.landing and unmarked:
        faults.append(f"{library}: called by pointers without ENDBR64: {len(unmarked)}, {' '.join(unmarked[:5])}")
    if pointers == 0:
        faults.append(f"{library}: no pointer to code was found")
    return faults + [f"{library}: does not call {name}" for name in arguments.calls if f" {name}@" not in relocations]


def check_size(arguments):
    with tempfile.NamedTemporaryFile() as stripped:
        run("strip", "-o", stripped.name, arguments.library)
        size = os.path.getsize(stripped.name)
    print(f"{arguments.library}: {size} bytes stripped")
    return [] if size < arguments.below else [f"{arguments.library}: {size} bytes, not below {arguments.below}"]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    checks = parser.add_subparsers(required=True)
    exports = checks.add_parser("exports", help="a library exports exactly these names")
    exports.add_argument("library")
    exports.add_argument("names", nargs="+")
    exports.set_defaults(check=check_exports)
    baseline = checks.add_parser("baseline", help="objects run on a processor with SSE2 alone")
    baseline.add_argument("--no-sse", action="store_true", help="and on one without SSE or CMOV")
    baseline.add_argument("objects", nargs="+")
    baseline.set_defaults(check=check_baseline)
    isolated = checks.add_parser("isolated", help="objects built for an instruction set share nothing")
    isolated.add_argument("--uses", action="append", required=True, help="an instruction that shows the set is used")
    isolated.add_argument("--avx", action="store_true", help="the set is AVX or above")
    isolated.add_argument("objects", nargs="+")
    isolated.set_defaults(check=check_isolated)

    unshared = checks.add_parser("unshared", help="objects define nothing that the linker could share")
    unshared.add_argument("objects", nargs="+")
    unshared.set_defaults(check=check_unshared)
    size = checks.add_parser("size", help="a library stays small")
    size.add_argument("library")
    size.add_argument("--below", type=int, required=True, help="bytes, stripped")
    size.set_defaults(check=check_size)

    hardened = checks.add_parser("hardened", help=check_hardened.__doc__)
    hardened.add_argument("library")
    hardened.add_argument("--version", help="that it states")
    hardened.add_argument("--landing", action="store_true", help="indirect calls land on ENDBR64")
    hardened.add_argument("--calls", action="append", default=[], help="a guard that the code must call")
    hardened.set_defaults(check=check_hardened)

    windows = checks.add_parser("windows", help=check_windows.__doc__)
    windows.add_argument("library")
    windows.add_argument("--version", required=True)
    windows.add_argument("--needs", action="append", default=[], help="a DLL of ours that it is linked with")
    windows.set_defaults(check=check_windows)

    arguments = parser.parse_args()
    faults = arguments.check(arguments)
    for fault in sorted(set(faults)):
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
