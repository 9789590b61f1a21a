// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/text/mstring.h"

// Texts for buffers of a fixed size in a host's memory.
//
// Units    size counts bytes or UTF-16 units, the terminator included; at least 1
// Threads  any
// Memory   the UTF-16 form takes none
// Errors   std::bad_alloc
// Method   whole characters only: one that does not fit is left out, with all behind it. A null
//          destination is left alone

void CopyText(const MString& text, char* destination, int size);
void CopyText(const MString& text, char16_t* destination, int size);

// The text, or where that has more than length UTF-16 units, its words cut to about the same share
// each: "1 - Rate variability" in 7 is "1RatVar". A cut at the end would leave the same of many.
MString Abbreviated(const MString& text, int length);
