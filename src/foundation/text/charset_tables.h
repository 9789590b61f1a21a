// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>

// The 8-bit charsets whose lower half is ASCII. Made by tools/tables/make_charset_tables.py.

struct CharsetRecord {
    static constexpr char16_t kUndefined = 0xfffd;  // stands for a byte without a character

    const char* names[6];  // the canonical one first; null ends a shorter list
    char16_t upper[128];   // the characters of the bytes from 128 on
};

std::span<const CharsetRecord> CharsetTables();
