# SPDX-License-Identifier: GPL-3.0-or-later
"""Audacity 3.2 on a screen of its own, driven through its script pipe."""

import os
import re
import shutil
import subprocess
import threading
import time
from pathlib import Path

MODULE = Path("/usr/lib/audacity/modules/mod-script-pipe.so")
PATIENCE = 60  # seconds
SETTLING = 4  # seconds; what comes before its window is up gets lost
PIPE = "/tmp/audacity_script_pipe.{0}." + str(os.getuid())

# The module counts as known, and is loaded without a question, when its time is right.
CONFIGURATION = """PrefsVersion=1.1.1r1
NewPrefsInitialized=1
[Locale]
Language=en
[GUI]
ShowSplashScreen=0
[Module]
mod-script-pipe=1
[ModulePath]
mod-script-pipe={module}
[ModuleDateTime]
mod-script-pipe={time}
[Directories]
TempDir={temporary}
[SamplingRate]
DefaultProjectSampleRate=48000
[Quality]
HQDitherAlgorithmChoice=None
DitherAlgorithmChoice=None
[Version]
Major=3
Minor=2
Micro=4
[Update]
UpdateNoticeShown=1
"""


class Audacity:
    """With a home of its own, from the entry of a with statement to its end."""

    def __init__(self, home, library):
        (home / ".vst").mkdir(parents=True)
        (home / "tmp").mkdir()
        data = home / ".audacity-data"
        data.mkdir()
        shutil.copy(library, home / ".vst")
        changed = time.localtime(MODULE.stat().st_mtime)
        (data / "audacity.cfg").write_text(
            CONFIGURATION.format(
                module=MODULE,
                time=time.strftime("%Y-%m-%dT%H:%M:%S", changed),
                temporary=home / "tmp",
            )
        )
        self.home = home
        self.processes = []
        self.guard = None

    def __enter__(self):
        screen = self.start_screen()
        environment = os.environ | {
            "HOME": str(self.home),
            "DISPLAY": screen,
            "VST_PATH": str(self.home / ".vst"),
        }
        try:
            # A scan runs in a second process, which takes the pipes away: it gets a start of its
            # own.
            self.start(["audacity"], env=environment)
            self.wait_for(self.registered)
            time.sleep(SETTLING)
            self.end(self.processes.pop())
            for way in ("to", "from"):
                Path(PIPE.format(way)).unlink(missing_ok=True)
            self.start(["audacity"], env=environment)
            self.wait_for(lambda: all(Path(PIPE.format(way)).exists() for way in ("to", "from")))
            time.sleep(SETTLING)
            self.watch()
            self.pipe_to = open(PIPE.format("to"), "w", encoding="utf-8")
            self.pipe_from = open(PIPE.format("from"), encoding="utf-8")
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        if self.guard:
            self.guard.cancel()
        for process in reversed(self.processes):
            self.end(process)

    @staticmethod
    def end(process):
        process.terminate()
        try:
            process.wait(10)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()

    def watch(self):
        """Ends what waits for an answer, by the end of who should give it."""
        self.guard = threading.Timer(PATIENCE, self.processes[-1].kill)
        self.guard.daemon = True
        self.guard.start()

    def start(self, command, **options):
        silent = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        self.processes.append(subprocess.Popen(command, **(silent | options)))

    def start_screen(self):
        """Xvfb chooses a number that is free, and tells it."""
        reading, writing = os.pipe()
        self.start(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x1024x24"],
            pass_fds=[writing],
        )
        os.close(writing)
        with os.fdopen(reading) as told:
            return ":" + told.readline().strip()

    def wait_for(self, is_there):
        end = time.monotonic() + PATIENCE
        while not is_there():
            if time.monotonic() > end or self.processes[-1].poll() is not None:
                raise RuntimeError("Audacity does not start")
            time.sleep(0.2)

    def do(self, command):
        """Answers what it says; a line without text ends it."""
        self.pipe_to.write(command + "\n")
        self.pipe_to.flush()
        answer = ""
        while True:
            line = self.pipe_from.readline()
            if not line:
                raise RuntimeError(f"Audacity does not answer {command}")
            if line == "\n" and answer:
                return answer
            answer += line

    def registered(self):
        """Whether the plug-in was found and took the test of a scan."""
        path = self.home / ".audacity-data/pluginregistry.cfg"
        registry = path.read_text(errors="replace") if path.exists() else ""
        entry = re.search(r"Symbol=Quillorea\n.*?Valid=(\d)", registry, re.DOTALL)
        return entry is not None and entry.group(1) == "1"

    def command(self):
        """The name that scripts call the plug-in by; None where it has none."""
        commands = self.do("GetInfo: Type=Commands Format=LISP")
        found = re.search(r'\(id "([^"]*)"\) \(name "Quillorea"\)', commands)
        return found.group(1) if found else None

    def render(self, source, target):
        steps = [
            f'Import2: Filename="{source}"',
            "SelectAll:",
            f"{self.command()}:",
            f'Export2: Filename="{target}" NumChannels=2',
        ]
        for step in steps:
            answer = self.do(step)
            if "finished: OK" not in answer:
                raise RuntimeError(f"Audacity refuses {step}: {answer}")
