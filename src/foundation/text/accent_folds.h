// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>

// Letters of the Latin, Greek and Cyrillic blocks that carry an accent or another mark, and the
// letter without it: U+00C9 to E, U+0439 to U+0438. Made by tools/tables/make_accent_folds.py.

struct AccentFold {
    char16_t letter;
    char16_t base;  // never itself a letter of the table
};

// Sorted by letter.
std::span<const AccentFold> AccentFolds();
