#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Fails where the shared library would not get on with a stranger's process: entries other than
those of the version script, libraries that may be missing, a too new C library, an executable
stack, or anything that happens at its mere loading.

    tools/check_library.py LIBRARY VERSION_SCRIPT
"""

import re
import subprocess
import sys

# Part of every system with the GNU C library; all else is linked statically.
SYSTEM_LIBRARIES = {
    "libc.so.6",
    "libm.so.6",
    "libdl.so.2",
    "libpthread.so.0",
    "librt.so.1",
    "ld-linux-x86-64.so.2",
}
NEWEST_GLIBC = (2, 34)

# Loads the library as a host does and tells what is left of it in the process.
LOAD = """
import ctypes, os, sys
def state():
    return len(os.listdir("/proc/self/task")), len(os.listdir("/proc/self/fd"))
before = state()
try:
    ctypes.CDLL(os.path.abspath(sys.argv[1]), mode=os.RTLD_NOW | os.RTLD_LOCAL)
except OSError as error:
    sys.exit(str(error))
if state() != before:
    sys.exit("it leaves a thread or a file behind")
"""


def readelf(library, *options):
    command = ["readelf", "--wide", *options, library]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def listed_entries(version_script):
    with open(version_script, encoding="utf-8") as file:
        text = re.sub(r"/\*.*?\*/|#[^\n]*", "", file.read(), flags=re.DOTALL)
    return set(re.findall(r"\w+", re.search(r"global:(.*?)local:", text, re.DOTALL).group(1)))


def exported_entries(library):
    """Number, value, size, type, binding, visibility, section index, name."""
    rows = [line.split() for line in readelf(library, "--dyn-syms").splitlines()]
    symbols = [row for row in rows if len(row) >= 8 and row[0].rstrip(":").isdigit()]
    return {row[7].split("@")[0] for row in symbols if row[6] not in ("UND", "ABS")}


def newer_than_allowed(library):
    names = set(re.findall(r"(\w+)@GLIBC_([0-9.]+)", readelf(library, "--dyn-syms")))
    return {
        f"{name} of glibc {version}"
        for name, version in names
        if tuple(int(part) for part in version.split(".")) > NEWEST_GLIBC
    }


def load_problem(library):
    run = subprocess.run([sys.executable, "-c", LOAD, library], capture_output=True, text=True)
    if run.returncode != 0:
        return f"it cannot be loaded: {run.stderr.strip() or run.returncode}"
    if run.stdout or run.stderr:
        return f"loading it writes: {(run.stdout + run.stderr).strip()}"
    return None


def find_problems(library, version_script):
    listed, exported = listed_entries(version_script), exported_entries(library)
    needed = set(re.findall(r"\(NEEDED\).*\[(.*)\]", readelf(library, "--dynamic")))
    flags = readelf(library, "--dynamic")
    stack = re.search(r"GNU_STACK.*", readelf(library, "--program-headers"))
    yield from (f"entry {name} is missing" for name in sorted(listed - exported))
    yield from (f"{name} is exported without being listed" for name in sorted(exported - listed))
    yield from (f"needs {name}" for name in sorted(needed - SYSTEM_LIBRARIES))
    yield from (f"needs {name}" for name in sorted(newer_than_allowed(library)))
    if stack is None or "E" in "".join(stack.group().split()[6:-1]):  # its flags, as in "R E"
        yield "its stack is executable"
    for flag in ("NODELETE", "NOW"):
        if not re.search(rf"FLAGS.*\b{flag}\b", flags):
            yield f"it is not linked with -z {flag.lower()}"
    if re.search(r"TEXTREL|RPATH|RUNPATH", flags):
        yield "it has relocations in its code or a search path of its own"
    if problem := load_problem(library):
        yield problem


def main():
    library, version_script = sys.argv[1:]
    problems = list(find_problems(library, version_script))
    print("\n".join(f"{library}: {problem}" for problem in problems) or f"{library} is in order")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
