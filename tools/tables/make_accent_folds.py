#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes src/foundation/text/accent_folds.cpp: the letters with accents and their base letters.

    tools/tables/make_accent_folds.py > src/foundation/text/accent_folds.cpp

The letters are those of the Latin, Greek and Cyrillic blocks below U+2000. A base letter is the
first character of the canonical decomposition; a letter without one that Unicode names "... LETTER
X WITH ..." (stroke, hook, descender and the like) has LETTER X as its base.
"""

import re
import sys
import unicodedata

FIRST, END = 0xC0, 0x2000
SCRIPTS = re.compile("LATIN|GREEK|CYRILLIC")
# Not "D WITH SMALL LETTER Z": that is two letters, neither of which is the other's mark.
MARKED = re.compile(r"(.* LETTER .*?) WITH (?!SMALL LETTER)")


def base_of(letter):
    """The letter with its last mark taken off, or itself."""
    decomposition = unicodedata.decomposition(letter)
    if decomposition and not decomposition.startswith("<"):
        return chr(int(decomposition.split()[0], 16))
    marked = MARKED.match(unicodedata.name(letter, ""))
    try:
        return unicodedata.lookup(marked[1]) if marked else letter
    except KeyError:
        return letter


def bare(letter):
    base = base_of(letter)
    return letter if base == letter else bare(base)


def folds():
    for letter in map(chr, range(FIRST, END)):
        is_letter = unicodedata.category(letter).startswith("L")
        if is_letter and SCRIPTS.match(unicodedata.name(letter, "")):
            base = bare(letter)
            if base != letter and ord(base) < 0x10000:
                yield f"{{0x{ord(letter):04x}, 0x{ord(base):04x}}},"


def main():
    pairs = list(folds())
    print("// SPDX-License-Identifier: GPL-3.0-or-later")
    print("// Written by tools/tables/make_accent_folds.py from the Unicode character database.")
    print('#include "foundation/text/accent_folds.h"\n')
    print("// clang-format off")
    print(f"static constexpr AccentFold kFolds[{len(pairs)}] = {{")
    for i in range(0, len(pairs), 5):
        print("    " + " ".join(pairs[i:i + 5]))
    print("};\n// clang-format on\n")
    print("std::span<const AccentFold> AccentFolds() { return kFolds; }")
    print(f"{len(pairs)} pairs, Unicode {unicodedata.unidata_version}", file=sys.stderr)


if __name__ == "__main__":
    main()
