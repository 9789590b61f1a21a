// SPDX-License-Identifier: GPL-3.0-or-later

// Settings drawn by chance.

#include <algorithm>
#include <vector>

#include "foundation/objects/guarded.h"
#include "foundation/objects/random.h"
#include "plugin/multi_band_adapter.h"

namespace {

int CountRandomizable(const MAudioEffectPlugin& effect) {
    const ParameterRecord* const records = effect.descriptor.parameters;
    return static_cast<int>(
        std::count_if(records, records + effect.descriptor.parameterCount,
                      [](const auto& record) { return record.Has(ParameterFlag::kRandomizes); }));
}

}  // namespace

// Limits drawn in any order are put in order; gains and panoramas would only be in the way.
void MAudioEffectPluginToAudioPluginMultiBandAdapter::Randomize(double amount) {
    MAudioEffectPluginToAudioPluginAdapter::Randomize(amount);
    const auto used = Index(GetBandCount() - 1);
    std::vector<double> limits;
    for (std::size_t i = 0; i < used; ++i) limits.push_back(bandLimit[i].EffectiveInRange());
    std::sort(limits.begin(), limits.end());
    for (std::size_t i = 0; i < used; ++i) bandLimit[i].SetEffective(limits[i]);
    for (ParameterRecord& gain : bandGain) gain.SetEffective(0);
    for (ParameterRecord& panorama : bandPanorama) panorama.SetEffective(0);
    OnGlobalChange(false);
}

// The more parameters an effect has, the more often its special object is drawn in their place.
void MAudioEffectPluginToAudioPluginMultiBandAdapter::GenerateRandomSettingsSmart() {
    Guarded("MAudioEffectPluginToAudioPluginMultiBandAdapter::GenerateRandomSettingsSmart", [&] {
        ChangeStructure([&] {
            for (MAudioEffectPlugin* const used : UsedEffects()) {
                const int count = CountRandomizable(*used);
                if (count < 2 || NextRandom() % count == 0) {
                    used->Randomize(1);
                } else {
                    used->RandomizeSpecial();
                    used->RequestUpdate();
                }
            }
        });
    });
}
