#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Has hosts that others wrote play the built plug-in, and compares with what our renderer makes.

    tools/foreign_hosts/run.py BUILD_FOLDER

Prints a line for each check. Nothing of the user's is read or written: every host has a home of its
own, which is gone at the end."""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

import sound
from ardour import TEMPO, Ardour
from audacity import Audacity

FRAMES = 2 * sound.RATE
MOST_DECIBELS = -80


class Checks:
    def __init__(self):
        self.failures = 0

    def check(self, name, passed, figure):
        print(f"{'pass' if passed else 'FAIL'}  {name}: {figure}", flush=True)
        self.failures += not passed

    def attempt(self, name, body):
        """A host that does not do its part is a failure, and the others still get their turn."""
        try:
            body()
        except (RuntimeError, OSError, StopIteration, subprocess.SubprocessError) as error:
            self.check(name, False, " ".join(str(error).split())[-400:])


class Renderer:
    def __init__(self, build, folder):
        self.program = build / "tools/render/quillorea-render"
        self.folder = folder

    def run(self, *arguments):
        command = [str(self.program), *map(str, arguments)]
        return subprocess.run(command, check=True, capture_output=True, text=True).stdout

    def render(self, source, kind, state, more):
        output = self.folder / "own.wav"
        if state is not None:
            (self.folder / "state").write_bytes(state)
            more = [*more, f"--state-in={self.folder / 'state'}"]
        interface = ["--vst2"] if kind != "VST3" else []
        self.run(source, output, "--tail=0.5", *interface, *more)
        return sound.read(output)

    def latency(self):
        return int(re.search(r"Latency: +(\d+)", self.run("--info")).group(1))

    def index_of(self, identifier):
        """The index of the parameter, or of its first band's."""
        row = rf"^(\d+)  .*  (?:Band 1 )?{identifier}  "
        return re.search(row, self.run("--list"), re.MULTILINE).group(1)

    def label_of(self, index):
        """As the VST 3 interface tells it."""
        row = rf"^{index} +\d+ +(.*?)  "
        return re.search(row, self.run("--list-params"), re.MULTILINE).group(1)


def check_ardour(checks, home, build, renderer, source, channels):
    ardour = Ardour(home, build / "Quillorea.vst3", build / "Quillorea.so")
    for interface, said in zip(("VST 3", "VST 2"), ardour.scan()):
        found = re.search("Found Plugin: (.*)", said)
        checks.check(f"Ardour scans {interface}", found is not None,
                     found.group(1) if found else " ".join(said.split()))
    dry, sync = renderer.index_of("Depth"), renderer.index_of("sync")
    for kind, name in (("VST3", "VST 3"), ("LXVST", "VST 2")):
        key = renderer.label_of if kind == "VST3" else str

        def compare_dry():
            exported, state = ardour.render(kind, channels, {key(dry): 0})
            ulps = sound.largest_ulps(renderer.render(source, kind, state, []), exported)
            checks.check(f"Ardour plays the dry sound through {name}", ulps <= 1,
                         f"{ulps} ulp apart, peak {sound.peak_decibels(exported):.1f} dBFS")

        def compare_synchronized():
            exported, state = ardour.render(kind, channels, {key(sync): 1})
            # A track plays ahead by what its plug-ins are late, and they are told the place of
            # what is heard. A bar is as good as the start, and no place is in front of that.
            place = 4 - renderer.latency() * TEMPO / 60 / sound.RATE
            song = [f"--tempo={TEMPO}", f"--position={place:.12f}"]
            own = renderer.render(source, kind, state, song)
            apart = sound.difference_decibels(own, exported)
            checks.check(f"Ardour plays the synchronized chorus through {name}",
                         apart < MOST_DECIBELS, f"{apart:.1f} dBFS apart")

        checks.attempt(f"Ardour plays the dry sound through {name}", compare_dry)
        checks.attempt(f"Ardour plays the synchronized chorus through {name}", compare_synchronized)


def check_audacity(checks, home, build, renderer, source):
    with Audacity(home, build / "Quillorea.so") as audacity:
        checks.check("Audacity scans VST 2", audacity.registered(), "registered as an effect")
        command = audacity.command()
        checks.check("Audacity offers it to scripts", command is not None, command)
        if command is None:
            return
        output = home / "out.wav"
        audacity.render(source, output)
    exported = sound.read(output)
    own = renderer.render(source, "VST2", None, [])
    apart = sound.difference_decibels(own, exported)
    checks.check("Audacity plays it through VST 2", apart < MOST_DECIBELS,
                 f"{apart:.1f} dBFS apart, in 16 bits")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    build = Path(sys.argv[1]).resolve()
    checks = Checks()
    with tempfile.TemporaryDirectory(prefix="quillorea-hosts-") as name:
        folder = Path(name)
        renderer = Renderer(build, folder)
        channels = sound.noise(FRAMES, seed=1)
        source = folder / "in.wav"
        sound.write(source, channels)
        checks.attempt("Ardour", lambda: check_ardour(
            checks, folder / "ardour", build, renderer, source, channels))
        checks.attempt("Audacity plays it through VST 2", lambda: check_audacity(
            checks, folder / "audacity", build, renderer, source))
    return 1 if checks.failures else 0


if __name__ == "__main__":
    sys.exit(main())
