// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

#include "plugin/contract/parameter_record.h"

// What the renderer shows and compares of a parameter's texts.

// Letters in lower case and no blanks: "Haas (2 ms)" is "haas(2ms)".
std::string Folded(std::string_view text);

// Whether a value can be set: neither a heading without a switch nor a record that takes no part.
bool IsSettable(const ParameterRecord& record);

// "0 to 2", "a whole number from 1 to 10", "on or off", or the options in quotes.
std::string DescribeRange(const ParameterRecord& record);

std::string DescribeDefault(const ParameterRecord& record);
