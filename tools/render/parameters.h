// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>
#include <string>
#include <vector>

#include "plugin/contract/plugin.h"

// The effect's parameters by name, and their values from text.
//
// Units    a value is in its record's own unit
// Errors   UsageError for a text that is no setting at all; RenderError for an unknown parameter,
//          which names the nearest, and a value that the parameter does not take, which names
//          what it takes

inline constexpr char kUnitsNote[] =
    "Values are in the parameter's own unit: Rate, MinFreq and MaxFreq are decimal logarithms of\n"
    "hertz (Rate=-1 is 0.1 Hz, MinFreq=2 is 100 Hz), Range and Delay are seconds, phases are "
    "turns,\n"
    "everything else is a plain number or a share. A choice is given by its text or, where no "
    "text\n"
    "is the same, its index from 0; a switch by on or off.";

struct ParameterSetting {
    int index;
    double value;
};

// Reads "PARAMETER=VALUE" texts: identifier or name, without regard to case, and a number, an
// option's text or index, or on and off. Identifiers win over names, option texts over indices.
// A number past the end of the range by no more than printing it rounds means the end.
std::vector<ParameterSetting> ReadSettings(const PluginDescriptor& descriptor,
                                           std::span<const std::string> texts);

// A table for people: index, name, identifier, range, default; then the choices and the units.
std::string ListParameters(const PluginDescriptor& descriptor);
