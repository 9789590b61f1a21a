// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameters.h"

#include <algorithm>
#include <array>
#include <utility>

#include "errors.h"
#include "nearest_text.h"
#include "number_text.h"
#include "parameter_value.h"
#include "text_table.h"

namespace {

// What stands in front of a text's first '=' and behind it.
std::pair<std::string, std::string> SplitAssignment(const std::string& text, const char* option,
                                                    const char* form) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0)
        throw UsageError(std::string(option) + " takes " + form + ", not '" + text + "'.");
    return {text.substr(0, equals), text.substr(equals + 1)};
}

struct Names {
    std::string identifier;
    std::string name;            // with the band
    std::string bandIdentifier;  // without the band, empty outside of any
    std::string bandName;
};

Names NamesOf(ParameterMainBase& parameter) {
    const std::string identifier = parameter.GetParameterID(0).ToUtf8();
    const std::string plain = parameter.name.ToUtf8();
    if (BandOf(parameter) == 0) return {identifier, plain, "", ""};
    return {identifier, parameter.namePrefix.ToUtf8() + " " + plain, parameter.identifier.ToUtf8(),
            plain};
}

// In this order; a band's own name comes first, so that what one effect's was called it still is.
constexpr std::string Names::*kKinds[] = {&Names::identifier, &Names::bandIdentifier,
                                          &Names::bandName, &Names::name};

}  // namespace

ParameterList::ParameterList(HostedPlugin& plugin, PluginDescription& description)
    : plugin(plugin), description(description) {
    const std::vector<HostedParameter> parameters = plugin.Parameters();
    const auto& described = description.Parameters();
    const std::size_t known = description.Describes(parameters) ? described.size() : 0;
    for (std::size_t i = 0; i < parameters.size(); ++i)
        entries.push_back({i, parameters[i], i < known ? description.Title(i) : parameters[i].name,
                           i < known ? described[i] : nullptr});
}

std::vector<ParameterSetting> ParameterList::ReadSettings(
    std::span<const std::string> texts) const {
    std::vector<ParameterSetting> settings;
    for (const std::string& text : texts) {
        const auto [name, value] = SplitAssignment(text, "--set", "PARAMETER=VALUE");
        const Found found = FindDescribed(name);
        ParameterMainBase& described = *found.front()->described;
        const double position = described.record.PositionOf(ReadValue(described, value));
        for (const Entry* const entry : found) settings.push_back({entry->hosted.id, position});
    }
    return settings;
}

std::vector<ParameterSetting> ParameterList::ReadPositions(
    std::span<const std::string> texts) const {
    std::vector<ParameterSetting> settings;
    for (const std::string& text : texts) {
        const auto [name, value] = SplitAssignment(text, "--param", "PARAMETER=VALUE");
        Found found = FindPlain(name);
        if (found.empty()) found = FindKnown(name);
        if (found.empty()) Refuse(name);
        for (const Entry* const entry : found)
            settings.push_back({entry->hosted.id, ReadPlainPosition(*entry, value)});
    }
    return settings;
}

double ParameterList::ReadPlainPosition(const Entry& entry, const std::string& text) const {
    const std::optional<double> number = ParseNumber(text);
    if (number && *number >= 0 && *number <= 1) return *number;
    if (const auto position = plugin.PositionOf(entry.hosted.id, text)) return *position;
    const HostedParameter& parameter = entry.hosted;
    throw RenderError("'" + entry.title + "' takes positions from 0 to 1 or a text such as '" +
                      plugin.TextAt(parameter.id, parameter.defaultPosition) + "', not '" + text +
                      "'.");
}

std::vector<AutomationLane> ParameterList::ReadLanes(std::span<const std::string> texts) const {
    std::vector<AutomationLane> lanes;
    for (const std::string& text : texts) {
        const auto [name, points] =
            SplitAssignment(text, "--automate", "PARAMETER=SECONDS:VALUE,...");
        const Found found = FindDescribed(name);
        std::vector<std::uint32_t> ids;
        for (const Entry* const entry : found) ids.push_back(entry->hosted.id);
        for (const AutomationLane& lane : lanes)
            if (std::ranges::find_first_of(lane.Ids(), ids) != lane.Ids().end())
                throw UsageError("--automate names '" + name + "' a second time.");
        lanes.emplace_back(*found.front()->described, std::move(ids), points);
    }
    return lanes;
}

std::vector<ParameterSetting> ParameterList::Draw(double amount) const {
    std::vector<ParameterSetting> settings;
    for (ParameterMainBase* const drawn : description.Randomize(amount))
        for (const Entry& entry : entries)
            if (entry.described == drawn)
                settings.push_back({entry.hosted.id, drawn->GetParameter(0)});
    return settings;
}

ParameterList::Found ParameterList::FindKnown(const std::string& wanted) const {
    const std::string folded = Folded(wanted);
    for (const auto kind : kKinds) {
        Found found;
        for (const Entry& entry : entries) {
            if (entry.described == nullptr || !IsSettable(*entry.described)) continue;
            const std::string name = NamesOf(*entry.described).*kind;
            if (!name.empty() && Folded(name) == folded) found.push_back(&entry);
        }
        if (!found.empty()) return found;
    }
    return {};
}

ParameterList::Found ParameterList::FindPlain(const std::string& wanted) const {
    const std::string folded = Folded(wanted);
    const auto first = [&](auto matches) -> Found {
        for (const Entry& entry : entries)
            if (!entry.hosted.isHidden && matches(entry)) return {&entry};
        return {};
    };
    Found found = first([&](const Entry& entry) {
        return Folded(entry.title) == folded || Folded(entry.hosted.name) == folded;
    });
    if (found.empty())
        found = first([&](const Entry& entry) { return std::to_string(entry.index) == wanted; });
    if (found.empty())
        found =
            first([&](const Entry& entry) { return std::to_string(entry.hosted.id) == wanted; });
    return found;
}

void ParameterList::Refuse(const std::string& wanted) const {
    throw RenderError("There is no parameter '" + wanted + "'; the nearest is '" +
                      NearestTo(wanted) + "' (--list shows them all).");
}

ParameterList::Found ParameterList::FindDescribed(const std::string& wanted) const {
    Found found = FindKnown(wanted);
    if (found.empty()) found = FindPlain(wanted);
    if (found.empty()) Refuse(wanted);
    ParameterMainBase* const described = found.front()->described;
    if (described != nullptr && !IsSettable(*described)) Refuse(wanted);
    if (described != nullptr) return found;
    throw RenderError("The unit of '" + wanted + "' is not known here; --param takes it as a " +
                      "position from 0 to 1.");
}

std::string ParameterList::NearestTo(const std::string& wanted) const {
    std::vector<std::string> names;
    for (const Entry& entry : entries) {
        if (!entry.hosted.isAutomatable) continue;
        names.push_back(entry.title);
        if (entry.described == nullptr || !IsSettable(*entry.described)) continue;
        const Names known = NamesOf(*entry.described);
        for (const auto kind : kKinds)
            if (!(known.*kind).empty()) names.push_back(known.*kind);
    }
    return NearestText(wanted, names);
}

std::string ParameterList::Table() const {
    if (std::ranges::none_of(entries, [](const Entry& entry) { return entry.described; }))
        return InterfaceTable();
    std::vector<std::vector<std::string>> rows = {
        {"Index", "Name", "Identifier", "Range", "Default"}};
    std::vector<std::string> choices;
    for (const Entry& entry : entries) {
        if (entry.described == nullptr || BandOf(*entry.described) > 1) continue;
        ParameterMainBase& parameter = *entry.described;
        if (!IsSettable(parameter)) {
            rows.push_back({std::to_string(entry.index), NamesOf(parameter).name, "", "a heading"});
            continue;
        }
        const ParameterRecord& record = parameter.record;
        const Names names = NamesOf(parameter);
        const bool chosen = record.type == ParameterType::Enumeration;
        rows.push_back({std::to_string(entry.index), names.name, names.identifier,
                        chosen ? "see below" : DescribeRange(record), DescribeDefault(parameter)});
        const std::string choice = parameter.name.ToUtf8() + ": " + DescribeRange(record) + "\n";
        if (chosen && std::ranges::find(choices, choice) == choices.end())
            choices.push_back(choice);
    }
    std::string text = AlignedTable(rows) + MoreBands() + '\n';
    for (const std::string& choice : choices) text += choice;
    return text + '\n' + kUnitsNote + '\n';
}

std::string ParameterList::MoreBands() const {
    std::string text;
    int last = 1;
    for (const Entry& entry : entries) {
        const int band = entry.described != nullptr ? BandOf(*entry.described) : 0;
        if (band <= last) continue;
        last = band;
        text += (text.empty() ? "Band " : ", Band ") + std::to_string(band) + " from " +
                std::to_string(entry.index);
    }
    return text.empty() ? "" : "The same again, by index: " + text + ".\n";
}

std::string ParameterList::InterfaceTable() const {
    std::vector<std::vector<std::string>> rows = {
        {"Index", "ID", "Name", "Section", "Steps", "Default", ""}};
    for (const Entry& entry : entries) {
        const HostedParameter& each = entry.hosted;
        if (each.isHidden) continue;
        const std::string text = plugin.TextAt(each.id, each.defaultPosition);
        rows.push_back({std::to_string(entry.index), std::to_string(each.id), each.name,
                        each.section, std::to_string(each.stepCount),
                        FormatNumber(each.defaultPosition) + (text.empty() ? "" : " = ") + text,
                        each.isAutomatable ? "" : "not automatable"});
    }
    return AlignedTable(rows);
}
