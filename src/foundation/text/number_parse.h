// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "foundation/text/mstring.h"

struct ParsedInteger {
    std::int64_t value = 0;
    std::int32_t consumed = 0;  // units, with the minus
};

// An optional minus and digits of the text from start on, of at most maximum units, see
// MString::ToInt.
ParsedInteger ParseInteger(const MString& text, std::int32_t start, std::int32_t maximum,
                           int radix);
