// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "parameters/parameter_adapter.h"

// How a host moves one parameter, or the same one of several bands: points in time, straight lines
// of positions between them. Switches, choices and whole numbers hold until the next point instead.
// Before the first point its position holds, behind the last the last one's. Two points at one time
// are a jump.
//
// Units    seconds from the start of the input; positions 0..1
// Errors   UsageError for a text that is no list of points, or whose times go back; RenderError for
//          a value that the parameter does not take

struct AutomationPoint {
    double seconds;
    double position;
};

class AutomationLane {
public:
    // Reads "SECONDS:VALUE,SECONDS:VALUE,...". A comma that no time follows belongs to the value.
    // described tells the values, ids are those of the parameters that move.
    AutomationLane(ParameterMainBase& described, std::vector<std::uint32_t> ids,
                   const std::string& points);

    double PositionAt(double seconds) const;

    // What a host sends ahead of a block: the position at its end, where the plug-in arrives with
    // the block, or of what does not move the position at its start.
    double PositionFor(double blockStart, double blockEnd) const;

    const std::vector<std::uint32_t>& Ids() const { return ids; }

private:
    void AddPoint(ParameterMainBase& described, const std::string& seconds,
                  const std::string& value);

    std::vector<std::uint32_t> ids;
    bool holds;
    std::vector<AutomationPoint> points;  // at least one, by time
};
