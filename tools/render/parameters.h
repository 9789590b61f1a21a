// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>
#include <string>
#include <vector>

#include "automation_lane.h"
#include "parameters/parameter_adapter.h"

// The plug-in's parameters by name, and what the command line does with them.
//
// Errors   UsageError for a text that is no setting or no automation at all; RenderError for an
//          unknown parameter, which names the nearest, and a value that the parameter does not
//          take, which names what it takes

inline constexpr char kUnitsNote[] =
    "Values are in the parameter's own unit: Rate, MinFreq and MaxFreq are decimal logarithms of\n"
    "hertz (Rate=-1 is 0.1 Hz, MinFreq=2 is 100 Hz), Range and Delay are seconds, phases are "
    "turns,\n"
    "everything else is a plain number or a share; or they are texts with a unit, as the plug-in\n"
    "shows them ('Rate=0.5 Hz', 'Delay=20 ms', 'Spread=40%'). A choice is given by its text or, "
    "where\n"
    "no text is the same, its index from 0; a switch by on or off.";

struct ParameterSetting {
    ParameterMainBase* parameter;
    double value;  // in the record's own unit
};

class ParameterList {
public:
    // They outlive the list, in the order of the host's indices.
    explicit ParameterList(std::vector<ParameterMainBase*> parameters)
        : parameters(std::move(parameters)) {}

    // Reads "PARAMETER=VALUE" texts. A parameter is told by identifier, name or index, without
    // regard to case; what comes first in this order wins.
    std::vector<ParameterSetting> ReadSettings(std::span<const std::string> texts) const;
    // Reads "PARAMETER=SECONDS:VALUE,..." texts, one for each parameter.
    std::vector<AutomationLane> ReadLanes(std::span<const std::string> texts) const;

    // A table for people: index, name, identifier, range, default; then the choices and the units.
    std::string Table() const;

private:
    ParameterMainBase& Find(const std::string& wanted) const;
    std::string NearestTo(const std::string& wanted) const;

    std::vector<ParameterMainBase*> parameters;
};
