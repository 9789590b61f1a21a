# SPDX-License-Identifier: GPL-3.0-or-later
"""Plants single includes in small trees and runs the layer check on them."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECK = Path(__file__).parents[2] / "tools" / "check_layers.py"
FILES = [
    "src/foundation/text/mstring.h",
    "src/foundation/objects/object.h",
    "src/dsp/delay.h",
    "src/effect/chorus.h",
    "src/plugin/contract/plugin.h",
    "src/plugin/frame/audio_plugin.h",
    "src/plugin/product.h",
    "src/ui/bitmap.h",
    "src/hosts/vst3/factory.h",
    "src/attic/old.h",
    "tests/support/signals.h",
]


def check(includer, include):
    """Exit code and output for a tree in which one file has one include."""
    with tempfile.TemporaryDirectory() as folder:
        for name in [file for file in FILES if "attic" not in file or file in (includer, include)]:
            path = Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.touch()
        path = Path(folder, includer)
        path.parent.mkdir(parents=True, exist_ok=True)
        quoted = include if include.startswith("<") else f'"{include}"'
        path.write_text(f"#pragma once\n  #  include {quoted}\n", "utf-8")
        run = subprocess.run([sys.executable, CHECK, folder], capture_output=True, text=True)
        return run.returncode, run.stdout + run.stderr


class Layers(unittest.TestCase):
    def assert_allowed(self, includer, include):
        self.assertEqual(0, check(includer, include)[0], f"{includer} includes {include}")

    def assert_refused(self, includer, include):
        code, output = check(includer, include)
        self.assertEqual(1, code, f"{includer} includes {include}")
        self.assertIn(f"{includer}:2: ", output)

    def test_own_folder_and_below_are_allowed(self):
        self.assert_allowed("src/foundation/objects/lock.h", "foundation/text/mstring.h")
        self.assert_allowed("src/dsp/filter.h", "dsp/delay.h")
        self.assert_allowed("src/plugin/adapter.cpp", "plugin/frame/audio_plugin.h")
        self.assert_allowed("src/ui/x11/window.cpp", "ui/bitmap.h")
        self.assert_allowed("src/hosts/entries.cpp", "effect/chorus.h")
        self.assert_allowed("src/hosts/entries.cpp", "hosts/vst3/factory.h")

    def test_above_is_refused(self):
        self.assert_refused("src/foundation/text/mstring.cpp", "foundation/objects/object.h")
        self.assert_refused("src/dsp/delay.cpp", "effect/chorus.h")
        self.assert_refused("src/plugin/contract/plugin.cpp", "plugin/product.h")
        self.assert_refused("src/plugin/frame/audio_plugin.cpp", "plugin/product.h")

    def test_equal_rank_is_refused(self):
        self.assert_refused("src/effect/chorus.cpp", "plugin/frame/audio_plugin.h")
        self.assert_refused("src/ui/bitmap.cpp", "effect/chorus.h")
        self.assert_refused("src/plugin/product.cpp", "effect/chorus.h")

    def test_what_is_not_there_is_refused(self):
        self.assert_refused("src/dsp/delay.cpp", "dsp/gone.h")
        self.assert_refused("src/dsp/delay.cpp", "delay.h")
        self.assert_refused("src/dsp/delay.cpp", "../tests/support/signals.h")
        self.assert_refused("tests/dsp/delay_test.cpp", "dsp/gone.h")

    def test_a_folder_without_a_layer_is_refused(self):
        self.assert_refused("src/hosts/entries.cpp", "attic/old.h")
        self.assertEqual(1, check("src/attic/old.h", "<vector>")[0])

    def test_outside_headers_stay_in_their_wrappers(self):
        self.assert_allowed("src/dsp/reads.cpp", "<hwy/highway.h>")
        self.assert_refused("src/effect/chorus.cpp", "hwy/highway.h")
        self.assert_allowed("tools/render/audio_file.cpp", "<sndfile.h>")
        self.assert_refused("src/dsp/reads.cpp", "<sndfile.h>")
        self.assert_refused("src/dsp/reads.cpp", "<boost/any.hpp>")
        self.assert_allowed("src/foundation/streams/file_posix.cpp", "<sys/stat.h>")
        self.assert_refused("src/foundation/streams/file.h", "<sys/stat.h>")

    def test_tests_may_include_anything_that_exists(self):
        self.assert_allowed("tests/dsp/delay_test.cpp", "hosts/vst3/factory.h")
        self.assert_allowed("tests/dsp/delay_test.cpp", "support/signals.h")
        self.assert_allowed("bench/reads_bench.cpp", "<benchmark/benchmark.h>")


if __name__ == "__main__":
    unittest.main()
