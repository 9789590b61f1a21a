// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin_description.h"

#include <algorithm>

#include "effect/chorus_entry.h"
#include "hosts/adapter/interface_text.h"

namespace {

constexpr int kBriefLength = 7;  // letters in VST 2

}  // namespace

PluginDescription::PluginDescription() {
    plugin.Initialize("chorus", "Chorus", ChorusEntry);
    parameters.resize(static_cast<std::size_t>(plugin.GetHostParameterCount()));
    for (const auto& adapter : plugin.Table().Adapters())
        parameters[static_cast<std::size_t>(adapter->baseIndex)] =
            dynamic_cast<ParameterMainBase*>(adapter.get());
}

std::string PluginDescription::Title(std::size_t index) {
    return plugin.GetParameterNameWithoutSection(static_cast<int>(index)).ToUtf8();
}

bool PluginDescription::Describes(std::span<const HostedParameter> hosted) {
    std::size_t i = 0;
    for (const HostedParameter& each : hosted) {
        if (each.isBypass || each.isHidden) continue;
        if (i == parameters.size()) return false;
        // VST 2 has room for a few letters only.
        const MString brief =
            Abbreviated(plugin.GetParameterShortName(static_cast<int>(i)), kBriefLength);
        if (each.name != Title(i) && each.name != brief.ToUtf8()) return false;
        ++i;
    }
    return i == parameters.size();
}

std::vector<ParameterMainBase*> PluginDescription::Randomize(double amount) {
    const bool hasBands = std::any_of(parameters.begin(), parameters.end(), [](auto* parameter) {
        return parameter != nullptr && parameter->bandLocal;
    });
    std::vector<ParameterMainBase*> drawn;
    for (ParameterMainBase* const parameter : parameters) {
        if (parameter == nullptr || parameter->bandLocal != hasBands) continue;
        if (parameter->GetRandomizable() == 0) continue;
        parameter->Randomize(amount);
        drawn.push_back(parameter);
    }
    return drawn;
}

int BandOf(ParameterMainBase& parameter) {
    constexpr std::size_t kDigitPlace = 5;
    const std::string prefix = parameter.namePrefix.ToUtf8();
    return prefix.starts_with("Band ") && prefix.size() > kDigitPlace ? prefix[kDigitPlace] - '0'
                                                                      : 0;
}
