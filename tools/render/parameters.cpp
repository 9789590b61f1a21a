// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameters.h"

#include <algorithm>
#include <array>
#include <utility>

#include "errors.h"
#include "nearest_text.h"
#include "number_text.h"
#include "parameter_value.h"

namespace {

// What stands in front of a text's first '=' and behind it.
std::pair<std::string, std::string> SplitAssignment(const std::string& text, const char* option,
                                                    const char* form) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0)
        throw UsageError(std::string(option) + " takes " + form + ", not '" + text + "'.");
    return {text.substr(0, equals), text.substr(equals + 1)};
}

std::array<std::string, 2> NamesOf(ParameterMainBase& parameter) {
    return {parameter.GetParameterID(0).ToUtf8(),
            parameter.GetParameterNameWithoutSection(0).ToUtf8()};
}

using TableRow = std::array<std::string, 5>;

std::string AlignedTable(std::span<const TableRow> rows) {
    constexpr std::size_t kGap = 2;
    std::array<std::size_t, std::tuple_size_v<TableRow>> widths{};
    for (const TableRow& row : rows)
        for (std::size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], row[c].size());
    std::string text;
    for (const TableRow& row : rows) {
        for (std::size_t c = 0; c < row.size(); ++c)
            text += row[c] + std::string(widths[c] - row[c].size() + kGap, ' ');
        text.erase(text.find_last_not_of(' ') + 1);
        text += '\n';
    }
    return text;
}

}  // namespace

std::vector<ParameterSetting> ParameterList::ReadSettings(
    std::span<const std::string> texts) const {
    std::vector<ParameterSetting> settings;
    for (const std::string& text : texts) {
        const auto [name, value] = SplitAssignment(text, "--set", "PARAMETER=VALUE");
        ParameterMainBase& parameter = Find(name);
        settings.push_back({&parameter, ReadValue(parameter, value)});
    }
    return settings;
}

std::vector<AutomationLane> ParameterList::ReadLanes(std::span<const std::string> texts) const {
    std::vector<AutomationLane> lanes;
    for (const std::string& text : texts) {
        const auto [name, points] =
            SplitAssignment(text, "--automate", "PARAMETER=SECONDS:VALUE,...");
        ParameterMainBase& parameter = Find(name);
        for (const AutomationLane& lane : lanes)
            if (&lane.Parameter() == &parameter)
                throw UsageError("--automate names '" + name + "' a second time.");
        lanes.emplace_back(parameter, points);
    }
    return lanes;
}

ParameterMainBase& ParameterList::Find(const std::string& wanted) const {
    const std::string folded = Folded(wanted);
    for (const std::size_t kind : {0, 1}) {
        for (ParameterMainBase* const parameter : parameters) {
            const std::string name = Folded(NamesOf(*parameter)[kind]);
            if (IsSettable(*parameter) && name == folded) return *parameter;
        }
    }
    for (ParameterMainBase* const parameter : parameters)
        if (IsSettable(*parameter) && std::to_string(parameter->baseIndex) == wanted)
            return *parameter;
    throw RenderError("There is no parameter '" + wanted + "'; the nearest is '" +
                      NearestTo(wanted) + "' (--list shows them all).");
}

std::string ParameterList::NearestTo(const std::string& wanted) const {
    std::vector<std::string> names;
    for (ParameterMainBase* const parameter : parameters)
        if (IsSettable(*parameter))
            for (const std::string& name : NamesOf(*parameter)) names.push_back(name);
    return NearestText(wanted, names);
}

std::string ParameterList::Table() const {
    std::vector<TableRow> rows = {{"Index", "Name", "Identifier", "Range", "Default"}};
    std::string choices;
    for (ParameterMainBase* const parameter : parameters) {
        const ParameterRecord& record = parameter->record;
        const auto [identifier, name] = NamesOf(*parameter);
        const bool chosen = record.type == ParameterType::Enumeration;
        rows.push_back({std::to_string(parameter->baseIndex), name,
                        IsSettable(*parameter) ? identifier : "",
                        chosen ? "see below" : DescribeRange(record), DescribeDefault(*parameter)});
        if (chosen) choices += name + ": " + DescribeRange(record) + "\n";
    }
    return AlignedTable(rows) + '\n' + choices + '\n' + kUnitsNote + '\n';
}
