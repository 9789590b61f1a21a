#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Fails where an include points to a higher layer or to an equal one, where the included file does
not exist, and where a third-party or platform header stands outside the files that wrap it.

    tools/check_layers.py [ROOT]

Everything below src/ obeys the layers. tests, tools, bench and fuzz may include any of it; a test
sees third-party headers too, since an independent second opinion is a good one.
"""

import re
import sys
from pathlib import Path

FOUNDATION = [
    "foundation/text",
    "foundation/objects",
    "foundation/streams",
    "foundation/xml",
    "foundation/module",
]


def build_layers():
    """Folder of src/ -> the other folders it may include."""
    layers = {folder: set(FOUNDATION[:i]) for i, folder in enumerate(FOUNDATION)}

    def layer(folder, *below):
        layers[folder] = set(below).union(*(layers[name] for name in below))

    layer("dsp", *FOUNDATION)
    layer("parameters/values", "dsp")
    layer("plugin/contract", *FOUNDATION)
    layer("effect", "plugin/contract", "parameters/values")
    layer("plugin/frame", "plugin/contract", "dsp")
    layer("ui", "parameters/values")
    layer("parameters", "plugin/frame", "parameters/values")
    layer("plugin", "parameters")  # not the effect: it is created through its entry
    layer("state", "plugin")
    layer("editors", "state", "ui")
    layer("hosts/adapter", "state")
    layer("hosts/startup", "hosts/adapter", "editors", "effect")
    layer("hosts/vst2", "hosts/adapter")
    layer("hosts/vst3", "hosts/adapter")
    layer("hosts", *layers)
    return layers


LAYERS = build_layers()

# Start of a header's name -> where in the tree it may be included. A library has one place that
# wraps it, so that it can be replaced there.
WRAPPED = {
    "hwy/": ["src/dsp", "src/ui"],
    "emmintrin.h": ["src/dsp", "src/ui", "src/plugin/frame"],
    "immintrin.h": ["src/dsp", "src/ui", "src/plugin/frame"],
    "xmmintrin.h": ["src/dsp", "src/ui", "src/plugin/frame"],
    "fftw3.h": ["src/dsp"],
    "FLAC/": ["src/dsp"],
    "mpg123.h": ["src/dsp"],
    "zlib.h": ["src/foundation/streams"],
    "nettle/": ["src/foundation/streams"],
    "png.h": ["src/ui"],
    "jpeglib.h": ["src/ui"],
    "tiffio.h": ["src/ui"],
    "ft2build.h": ["src/ui"],
    "freetype/": ["src/ui"],
    "fontconfig/": ["src/ui/x11"],
    "xcb/": ["src/ui/x11"],
    "xkbcommon/": ["src/ui/x11"],
    "pluginterfaces/fst/": ["src/hosts/vst2", "tools/hosting"],
    "pluginterfaces/": ["src/hosts/vst3", "tools/hosting"],
    "base/": ["src/hosts/vst3", "tools/hosting"],
    "public.sdk/": ["src/hosts/vst3", "tools/hosting"],
    "sndfile.h": ["tools"],
    "CLI/": ["tools"],
}

# Where the headers of the operating system may be included.
PLATFORM_FILE = re.compile(r"_(posix|linux)\.cpp$|^src/ui/x11/")

# A trusted side of the tree: what stands here is never part of the plug-in.
OUTER = ["tests", "tools", "bench", "fuzz"]

INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')


def layer_of(path):
    """The folder of LAYERS that holds a path below src/; the longest match counts."""
    parents = [str(parent) for parent in Path(path).parents]
    return next((parent for parent in parents if parent in LAYERS), None)


def wrapper_of(header):
    return next((places for start, places in WRAPPED.items() if header.startswith(start)), None)


def is_below(path, folders):
    return any(path.startswith(folder + "/") for folder in folders)


def check_outside_header(file, header):
    """A header that is not ours, included by a file of src/ or tools/."""
    places = wrapper_of(header)
    if places is not None:
        if not is_below(file, places):
            return f"{header} belongs into {' or '.join(places)}"
    elif header.endswith(".h") and not PLATFORM_FILE.search(file):
        return f"{header} is a header of the platform, which belongs into a _posix.cpp file"
    elif "/" in header and not header.endswith(".h"):
        return f"{header} is of no library that tools/check_layers.py knows"
    return None


def check_own_header(root, file, header):
    """A header in quotes, included by a file of src/."""
    if not (root / "src" / header).is_file():
        return f'"{header}" is not a file below src/'
    source = layer_of(file.removeprefix("src/"))
    target = layer_of(header)
    if target is None:
        return f'"{header}" stands in a folder that has no layer'
    if target != source and target not in LAYERS[source]:
        return f"{source} may not include {target} (\"{header}\")"
    return None


def check_include(root, file, quote, header):
    if quote == "<" or wrapper_of(header) is not None:
        return check_outside_header(file, header) if is_below(file, ["src", "tools"]) else None
    if is_below(file, ["src"]):
        return check_own_header(root, file, header)
    folders = [root / "src", root / "tests", root / "tools", (root / file).parent]
    if not any((folder / header).is_file() for folder in folders):
        return f'"{header}" is not a file'
    return None


def check_file(root, file):
    problems = []
    if is_below(file, ["src"]) and layer_of(file.removeprefix("src/")) is None:
        problems.append(f"{file}: stands in a folder that has no layer")
        return problems
    for number, line in enumerate((root / file).read_text("utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        problem = check_include(root, file, *match.groups()) if match else None
        if problem:
            problems.append(f"{file}:{number}: {problem}")
    return problems


def find_sources(root):
    for folder in ["src", *OUTER]:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path.relative_to(root).as_posix()


def main():
    root = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).parent.parent).resolve()
    files = list(find_sources(root))
    problems = [problem for file in files for problem in check_file(root, file)]
    print("\n".join(problems) if problems else f"{len(files)} files keep to the layers")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
