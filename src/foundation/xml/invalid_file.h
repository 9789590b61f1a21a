// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/text/exception.h"

// MException with code 256: "Invalid file contents. " and the text, which is a literal.
//
// Threads  any
[[noreturn]] inline void RaiseInvalidFile(const char* text) {
    throw MException(MString("Invalid file contents. ").Append(text), 256);
}
