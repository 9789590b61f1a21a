// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>
#include <string>
#include <vector>

#include "hosting/hosted_plugin.h"
#include "parameters/parameter_adapter.h"
#include "plugin/multi_band_adapter.h"

// What this program knows of the plug-in by itself: identifiers, units, ranges and choices of its
// parameters, which the host interfaces do not carry. It makes no sound.
//
// Errors   MException where the effect can't be made

class PluginDescription {
public:
    PluginDescription();

    // By the host's index; null where one is no plain parameter.
    const std::vector<ParameterMainBase*>& Parameters() const { return parameters; }

    // What a host of VST 3 calls the one at an index: "Band 1 - Rate".
    std::string Title(std::size_t index);

    // Whether a plug-in with these parameters is this one, as far as the interface tells: those of
    // the interface's own are none of its.
    bool Describes(std::span<const HostedParameter> hosted);

    // Draws the effect's parameters, of every band; answers which those are.
    std::vector<ParameterMainBase*> Randomize(double amount);

private:
    class Plugin : public MAudioEffectPluginToAudioPluginMultiBandAdapter {
    public:
        const AutomationTable& Table() const { return automation; }
    };

    Plugin plugin;
    std::vector<ParameterMainBase*> parameters;
};

// The number in front of an identifier that is one band's, "Band 2 Rate"; 0 for the others.
int BandOf(ParameterMainBase& parameter);
