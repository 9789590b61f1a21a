// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Folding of code units for comparisons and hashes that ignore case.
//
// Threads  any
// Errors   none

// A to Z become a to z, every other unit stays as it is.
constexpr char16_t LowerAscii(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit - u'A' + u'a') : unit;
}

// An accented Latin, Greek or Cyrillic letter becomes its base letter in the same case, every other
// unit stays as it is.
char16_t WithoutAccent(char16_t unit);

// The form under which units are equal to MString::CompareNoCase.
inline char16_t FoldCharacter(char16_t unit) {
    return LowerAscii(unit < 0xc0 ? unit : WithoutAccent(unit));
}
