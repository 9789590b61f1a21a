// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "automation_lane.h"
#include "hosting/hosted_plugin.h"
#include "plugin_description.h"

// The plug-in's parameters by name, and what the command line does with them.
//
// A parameter is told by identifier, name, index or the interface's ID, without regard to case and
// blanks. What is each band's may be told without a band, "Rate" for "Band 1 Rate" and the others:
// then it means every band's.
//
// Errors   UsageError for a text that is no setting or no automation at all; RenderError for an
//          unknown parameter, which names the nearest, and a value that the parameter does not
//          take, which names what it takes

inline constexpr char kUnitsNote[] =
    "Values are in the parameter's own unit: Rate, MinFreq, MaxFreq and the band limits are "
    "decimal\n"
    "logarithms of hertz (Rate=-1 is 0.1 Hz, MinFreq=2 is 100 Hz), gains are decibels, Range and\n"
    "Delay are seconds, phases are turns, everything else is a plain number or a share; or they\n"
    "are texts with a unit, as the plug-in shows them ('Rate=0.5 Hz', 'Delay=20 ms', "
    "'Spread=40%').\n"
    "A choice is given by its text or, where no text is the same, its index from 0; a switch by "
    "on\n"
    "or off. A name without a band means every band's, unless it is also one of the whole "
    "plug-in:\n"
    "'Dry/wet' is the whole's, 'Depth' and 'Band 2 Dry/wet' are the bands'.";

struct ParameterSetting {
    std::uint32_t id;
    double position;
};

class ParameterList {
public:
    // Both outlive the list.
    ParameterList(HostedPlugin& plugin, PluginDescription& description);

    // Reads "PARAMETER=VALUE" texts, the values in the parameter's own unit.
    std::vector<ParameterSetting> ReadSettings(std::span<const std::string> texts) const;
    // The same with positions from 0 to 1, and texts that the plug-in itself reads. Also for
    // plug-ins that this program does not know.
    std::vector<ParameterSetting> ReadPositions(std::span<const std::string> texts) const;
    // Reads "PARAMETER=SECONDS:VALUE,..." texts, one for each parameter.
    std::vector<AutomationLane> ReadLanes(std::span<const std::string> texts) const;
    // Draws the effect's parameters: 1 from nothing, less around their defaults.
    std::vector<ParameterSetting> Draw(double amount) const;

    // Tables for people. With what this program knows: index, name, identifier, range, default;
    // then the choices and the units. With what the interface tells: index, ID, name, section,
    // steps, default.
    // The bands are alike, and the first stands for all. Of a plug-in that this program does not
    // know the first table is the second.
    std::string Table() const;
    std::string InterfaceTable() const;

private:
    struct Entry {
        std::size_t index;
        HostedParameter hosted;
        std::string title;             // whole also where the interface cuts it
        ParameterMainBase* described;  // null where this program does not know it
    };
    using Found = std::vector<const Entry*>;

    // By what this program knows, and by what the interface tells: name, index, ID.
    Found FindKnown(const std::string& wanted) const;
    Found FindPlain(const std::string& wanted) const;
    // At least one, whose unit is known.
    Found FindDescribed(const std::string& wanted) const;
    [[noreturn]] void Refuse(const std::string& wanted) const;
    std::string NearestTo(const std::string& wanted) const;
    double ReadPlainPosition(const Entry& entry, const std::string& text) const;
    std::string MoreBands() const;

    HostedPlugin& plugin;
    PluginDescription& description;
    std::vector<Entry> entries;
};
