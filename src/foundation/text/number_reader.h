// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>

#include "foundation/text/mstring.h"

// Numbers that people have typed and files have kept.
//
// Threads  any
// Errors   std::bad_alloc

// The number at the start of a text, behind blanks and with either sign; nothing where none stands
// there or a double cannot hold it. The point is a point under every locale.
std::optional<double> ReadNumber(const MString& text);
// The same for a whole number, which ends at its first other character; one that is too large for
// 64 bits is taken as the nearest that is not.
std::optional<std::int64_t> ReadInteger(const MString& text, int radix = 10);
