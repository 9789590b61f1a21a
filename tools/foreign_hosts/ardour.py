# SPDX-License-Identifier: GPL-3.0-or-later
"""Ardour 7 without its window: scans a plug-in, plays sound through it in a session and exports."""

import base64
import os
import re
import shutil
import struct
import subprocess
import time
import xml.etree.ElementTree as Tree
from pathlib import Path

import sound

PROGRAMS = Path("/usr/lib/ardour7")
SUPERCLOCKS = 282240000  # a second in its files
# Beats a minute. Ardour tells places in ticks, 1920 a beat: eight frames are one at this tempo, and
# its blocks begin on whole ones.
TEMPO = 187.5
TAIL_FRAMES = sound.RATE // 2

# Linux VST 2 is off unless it is asked for.
CONFIGURATION = """<?xml version="1.0" encoding="UTF-8"?>
<Ardour><Config>
  <Option name="use-lxvst" value="1"/>
  <Option name="plugin-path-lxvst" value="{0}"/>
</Config></Ardour>
"""


class Ardour:
    """With a home of its own."""

    def __init__(self, home, bundle, library):
        self.home = home
        self.bundle = home / ".vst3" / bundle.name
        self.library = home / ".lxvst" / library.name
        for folder in (".vst3", ".lxvst", ".cache/ardour7/vst", ".config/ardour7"):
            (home / folder).mkdir(parents=True)
        shutil.copytree(bundle, self.bundle)
        shutil.copy(library, self.library)
        (home / ".config/ardour7/config").write_text(CONFIGURATION.format(home / ".lxvst"))

    def run(self, *command, **variables):
        environment = {k: v for k, v in os.environ.items() if not k.startswith("XDG_")}
        environment |= {"HOME": str(self.home), "LD_LIBRARY_PATH": str(PROGRAMS)} | variables
        return subprocess.run(
            [str(word) for word in command],
            env=environment,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            timeout=120,
            check=False,
        )

    def scan(self):
        """What the two scanners say. A record as old as the library would not count later."""
        time.sleep(1.1)
        return [
            self.run(PROGRAMS / "ardour-vst3-scanner", "-f", self.bundle).stdout,
            self.run(PROGRAMS / "ardour-vst-scanner", "-f", self.library).stdout,
        ]

    def render(self, kind, channels, settings):
        """Exports the sound; answers it, and the state of the plug-in."""
        session = self.home / f"session-{kind}"
        shutil.rmtree(session, ignore_errors=True)
        made = self.run(
            "ardour7-lua",
            Path(__file__).with_name("ardour_session.lua"),
            SESSION=str(session),
            PLUGIN_TYPE=kind,
            FRAMES=str(len(channels[0])),
            SETTINGS=";".join(f"{name}={value}" for name, value in settings.items()),
        )
        if not (session / "render.ardour").exists() or "Error" in made.stdout:
            raise RuntimeError(f"Ardour made no session: {made.stdout}")
        self.fill(session, channels)
        state = self.extend(session / "render.ardour", len(channels[0]) + TAIL_FRAMES)
        output = session / "out.wav"
        done = self.run("ardour7-export", "-b", "float", "-o", output, session, "render")
        if not output.exists():
            raise RuntimeError(f"Ardour exported nothing: {done.stdout}")
        return sound.read(output), state

    @staticmethod
    def fill(session, channels):
        """Puts the sound where the silent region has its files, one for each channel."""
        for side, samples in zip("LR", channels):
            path = next(session.glob(f"interchange/*/audiofiles/*%{side}.wav"))
            content = path.read_bytes()
            data = struct.pack(f"<{len(samples)}f", *samples)
            path.write_bytes(content[: -len(data)] + data)

    @staticmethod
    def extend(path, frames):
        """Tells the session its end and its tempo; answers the state that it keeps of the plug-in."""
        tree = Tree.parse(path)
        root = tree.getroot()
        end = SUPERCLOCKS // sound.RATE * frames
        location = {"id": "9020", "name": "session", "start": "a0", "end": f"a{end}"}
        location |= {"flags": "IsSessionRange", "locked": "0", "timestamp": "0", "cue": "0"}
        Tree.SubElement(root.find("Locations"), "Location", location)
        root.set("id-counter", "9100")
        for tempo in root.iter("Tempo"):
            tempo.set("npm", str(TEMPO))
            tempo.set("enpm", str(TEMPO))
        tree.write(path, encoding="UTF-8", xml_declaration=True)
        # Of VST 3 the text stands between what belongs to a preset file, and may come twice.
        stored = base64.b64decode(next(root.iter("chunk")).text)
        return re.search(rb"<\?xml.*?(?=<\?xml|List|\0|$)", stored, re.DOTALL).group(0)
