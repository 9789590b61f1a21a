// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/text/mstring.h"

// How the parts of a parameter's name and of its identifier are put together. Empty parts leave no
// separator behind.

inline MString Joined(const MString& front, const char* separator, const MString& back) {
    if (front.IsEmpty()) return back;
    if (back.IsEmpty()) return front;
    return MString(front).Append(separator).Append(back);
}

inline constexpr const char* kBetweenNames = " - ";
inline constexpr const char* kBetweenIdentifiers = " ";
