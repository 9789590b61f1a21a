#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes src/foundation/text/charset_tables.cpp: the upper halves of the 8-bit charsets.

    tools/tables/make_charset_tables.py > src/foundation/text/charset_tables.cpp

The tables are those of Python's codecs, which follow the files that Unicode publishes. A byte
without a character becomes U+FFFD.
"""

# Names of a charset, the canonical one first, and the codec of its table. KOI8-RU is served as
# KOI8-U and ISO-8859-1 as windows-1252, as is usual for text that declares them.
CHARSETS = [
    (["KOI8-R"], "koi8-r"),
    (["KOI8-U", "KOI8-RU"], "koi8-u"),
    (["ISO-8859-2", "latin2", "iso-ir-101"], "iso8859-2"),
    (["ISO-8859-3", "latin3", "iso-ir-109"], "iso8859-3"),
    (["ISO-8859-4", "latin4", "iso-ir-110"], "iso8859-4"),
    (["ISO-8859-5", "cyrillic", "iso-ir-144"], "iso8859-5"),
    (["ISO-8859-6", "ISO-8859-6-I", "ECMA-114", "ASMO-708", "arabic", "iso-ir-127"], "iso8859-6"),
    (["ISO-8859-7", "ECMA-118", "greek", "iso-ir-126"], "iso8859-7"),
    (["ISO-8859-8", "ISO 8859-8-I", "iso-ir-138", "hebrew"], "iso8859-8"),
    (["ISO-8859-9", "iso-ir-148", "latin5"], "iso8859-9"),
    (["ISO-8859-10", "iso-ir-157", "latin6", "ISO-8859-10:1992"], "iso8859-10"),
    (["ISO-8859-13"], "iso8859-13"),
    (["ISO-8859-14", "iso-ir-199", "latin8", "iso-celtic"], "iso8859-14"),
    (["ISO-8859-16", "iso-ir-226", "latin10"], "iso8859-16"),
    (["IBM850", "CP850"], "cp850"),
    (["IBM874", "CP874"], "cp874"),
    (["IBM866", "CP866"], "cp866"),
    (["windows-1250", "CP1250"], "cp1250"),
    (["windows-1251", "CP1251"], "cp1251"),
    (["windows-1252", "CP1252", "ISO-8859-1"], "cp1252"),
    (["windows-1253", "CP1253"], "cp1253"),
    (["windows-1254", "CP1254"], "cp1254"),
    (["windows-1255", "CP1255"], "cp1255"),
    (["windows-1256", "CP1256"], "cp1256"),
    (["windows-1257", "CP1257"], "cp1257"),
    (["windows-1258", "CP1258"], "cp1258"),
    (["Apple Roman"], "mac-roman"),
    (["roman8", "hp-roman8"], "hp-roman8"),
]


def main():
    print("// SPDX-License-Identifier: GPL-3.0-or-later")
    print("// Written by tools/tables/make_charset_tables.py.")
    print('#include "foundation/text/charset_tables.h"\n')
    print("// clang-format off")
    print(f"static constexpr CharsetRecord kCharsets[{len(CHARSETS)}] = {{")
    for names, codec in CHARSETS:
        upper = bytes(range(0x80, 0x100)).decode(codec, "replace")
        print("    {{" + ", ".join(f'"{name}"' for name in names) + "},")
        for row in range(0, 128, 8):
            units = ", ".join(f"0x{ord(character):04x}" for character in upper[row:row + 8])
            print(("     {" if row == 0 else "      ") + units + ("}}," if row == 120 else ","))
    print("};\n// clang-format on\n")
    print("std::span<const CharsetRecord> CharsetTables() { return kCharsets; }")


if __name__ == "__main__":
    main()
