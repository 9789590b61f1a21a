// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>

// Numbers as people type and read them, whatever the locale.

// The whole text as a finite decimal number; nothing for any other text, "nan" and "inf" included.
std::optional<double> ParseNumber(std::string_view text);

// A whole number in full, any other with six significant digits at most.
std::string FormatNumber(double number);
// With exactly so many digits behind the point.
std::string FormatDigits(double number, int digits);
