# SPDX-License-Identifier: GPL-3.0-or-later
"""Plants single includes in a small tree and runs the layer check on it."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECK = Path(__file__).parents[2] / "tools" / "check_layers.py"
FILES = """foundation/text/mstring.h foundation/objects/object.h dsp/delay.h effect/chorus.h
    plugin/contract/plugin.h plugin/frame/audio_plugin.h plugin/product.h ui/bitmap.h
    hosts/vst3/factory.h ../tests/support/signals.h""".split()

# Includer and included file.
ALLOWED = """
    src/foundation/objects/lock.h foundation/text/mstring.h
    src/dsp/filter.h dsp/delay.h
    src/plugin/adapter.cpp plugin/frame/audio_plugin.h
    src/ui/x11/window.cpp ui/bitmap.h
    src/hosts/entries.cpp effect/chorus.h
    src/hosts/entries.cpp hosts/vst3/factory.h
    src/dsp/reads.cpp <hwy/highway.h>
    tools/render/audio_file.cpp <sndfile.h>
    src/foundation/streams/file_posix.cpp <sys/stat.h>
    tests/dsp/delay_test.cpp hosts/vst3/factory.h
    tests/dsp/delay_test.cpp support/signals.h
    bench/reads_bench.cpp <benchmark/benchmark.h>"""
REFUSED = """
    src/foundation/text/mstring.cpp foundation/objects/object.h
    src/dsp/delay.cpp effect/chorus.h
    src/plugin/contract/plugin.cpp plugin/product.h
    src/plugin/frame/audio_plugin.cpp plugin/product.h
    src/effect/chorus.cpp plugin/frame/audio_plugin.h
    src/ui/bitmap.cpp effect/chorus.h
    src/plugin/product.cpp effect/chorus.h
    src/dsp/delay.cpp dsp/gone.h
    src/dsp/delay.cpp delay.h
    src/dsp/delay.cpp ../tests/support/signals.h
    tests/dsp/delay_test.cpp dsp/gone.h
    src/attic/old.cpp dsp/delay.h
    src/effect/chorus.cpp hwy/highway.h
    src/dsp/reads.cpp <sndfile.h>
    src/dsp/reads.cpp <boost/any.hpp>
    src/foundation/streams/file.h <sys/stat.h>"""


def check(includer, include):
    """Exit code and output for a tree in which one file has one include."""
    with tempfile.TemporaryDirectory() as folder:
        content = f"#pragma once\n  #  include {include}\n"
        for name, text in [(f"src/{file}", "") for file in FILES] + [(includer, content)]:
            path = Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, "utf-8")
        run = subprocess.run([sys.executable, CHECK, folder], capture_output=True, text=True)
        return run.returncode, run.stdout + run.stderr


class Layers(unittest.TestCase):
    def test_includes(self):
        for table, expected in [(ALLOWED, 0), (REFUSED, 1)]:
            for includer, include in map(str.split, table.strip().splitlines()):
                with self.subTest(f"{includer} includes {include}"):
                    code, output = check(includer, include if "<" in include else f'"{include}"')
                    self.assertEqual(expected, code)
                    self.assertEqual(expected, output.count(f"{includer}:"))


if __name__ == "__main__":
    unittest.main()
