// SPDX-License-Identifier: GPL-3.0-or-later
#include "automation_lane.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "errors.h"
#include "number_text.h"
#include "parameter_value.h"

namespace {

bool StartsPoint(const std::string& text) {
    return ParseNumber(text.substr(0, text.find(':'))).has_value() &&
           text.find(':') != std::string::npos;
}

// At the commas that a point stands behind.
std::vector<std::string> SplitPoints(const std::string& text) {
    std::vector<std::string> points = {""};
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == ',' && StartsPoint(text.substr(i + 1))) {
            points.emplace_back();
        } else {
            points.back() += text[i];
        }
    }
    return points;
}

}  // namespace

AutomationLane::AutomationLane(ParameterMainBase& described, std::vector<std::uint32_t> ids,
                               const std::string& text)
    : ids(std::move(ids)), holds(described.record.type != ParameterType::Float) {
    for (const std::string& point : SplitPoints(text)) {
        if (!StartsPoint(point))
            throw UsageError("--automate takes PARAMETER=SECONDS:VALUE,..., not '" + point + "'.");
        const std::size_t colon = point.find(':');
        AddPoint(described, point.substr(0, colon), point.substr(colon + 1));
    }
}

void AutomationLane::AddPoint(ParameterMainBase& described, const std::string& secondsText,
                              const std::string& valueText) {
    const double seconds = *ParseNumber(secondsText);
    if (seconds < (points.empty() ? 0 : points.back().seconds))
        throw UsageError("The times of --automate start at 0 and go on, so '" + secondsText + ":" +
                         valueText + "' can't stand there.");
    points.push_back({seconds, ReadPosition(described, valueText)});
}

double AutomationLane::PositionAt(double seconds) const {
    const auto next = std::upper_bound(
        points.begin(), points.end(), seconds,
        [](double time, const AutomationPoint& point) { return time < point.seconds; });
    if (next == points.begin()) return points.front().position;
    const AutomationPoint& last = *(next - 1);
    if (holds || next == points.end()) return last.position;
    const double share = (seconds - last.seconds) / (next->seconds - last.seconds);
    return std::lerp(last.position, next->position, share);
}

double AutomationLane::PositionFor(double blockStart, double blockEnd) const {
    return PositionAt(holds ? blockStart : blockEnd);
}
