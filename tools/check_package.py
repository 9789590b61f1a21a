#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Makes the Debian package of a build folder and fails where it holds other files than it should,
or needs other libraries than a system may be asked for.

    tools/check_package.py BUILD_FOLDER"""

import subprocess
import sys
import tempfile
from pathlib import Path

FILES = {
    "usr/bin/quillorea-render",
    "usr/lib/vst/Quillorea.so",
    "usr/lib/vst3/Quillorea.vst3/Contents/Resources/moduleinfo.json",
    "usr/lib/vst3/Quillorea.vst3/Contents/x86_64-linux/Quillorea.so",
    "usr/share/doc/quillorea/CHANGELOG.md",
    "usr/share/doc/quillorea/README.md",
    "usr/share/doc/quillorea/copyright",
}
# Of the renderer; the plug-in brings its own.
NEEDED = {"libc6", "libgcc-s1", "libsndfile1", "libstdc++6"}


def output_of(*command):
    done = subprocess.run(command, capture_output=True, text=True)
    if done.returncode:
        sys.exit(f"{command[0]} failed:\n{done.stdout}{done.stderr}")
    return done.stdout


def main():
    build = Path(sys.argv[1]).resolve()
    problems = []
    with tempfile.TemporaryDirectory() as folder:
        output_of("cpack", "--config", build / "CPackConfig.cmake", "-G", "DEB", "-B", folder)
        package = next(Path(folder).glob("*.deb"))
        lines = [line.split() for line in output_of("dpkg-deb", "-c", package).splitlines()]
        files = {line[5].removeprefix("./") for line in lines if not line[0].startswith("d")}
        problems += [f"{name} is missing" for name in sorted(FILES - files)]
        problems += [f"{name} does not belong there" for name in sorted(files - FILES)]
        depends = output_of("dpkg-deb", "-f", package, "Depends")
        needed = {each.split()[0] for each in depends.split(",") if each.strip()}
        problems += [f"{name} should not be needed" for name in sorted(needed - NEEDED)]
        print("\n".join(problems) or f"{package.name}: {len(files)} files, needs {depends.strip()}")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
