// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

#include "parameters/parameter_adapter.h"

// One parameter's values as people type them.
//
// Units    a value is in its record's own unit, a position is 0..1
// Errors   RenderError where a parameter does not take what is typed, which names what it takes

// Whether a value can be set: a heading without a switch has none.
bool IsSettable(const ParameterMainBase& parameter);

// Reads a number in the parameter's own unit, an option's text or index, on and off, or what the
// plug-in itself would show and read back, as "20.0 ms". An option's text comes before an index. A
// number past the end of the range by no more than printing it rounds means the end.
double ReadValue(ParameterMainBase& parameter, const std::string& text);

// Reads a position, or anything else as ReadValue does, but for a number of a parameter that is not
// counted in whole steps: that would be taken for a position.
double ReadPosition(ParameterMainBase& parameter, const std::string& text);

// "0 to 2", "a whole number from 1 to 10", "on or off", or the options in quotes.
std::string DescribeRange(const ParameterRecord& record);

// The number, where there is one, and the plug-in's text: "0.005 = 5.0 ms", "Off".
std::string DescribeDefault(ParameterMainBase& parameter);
