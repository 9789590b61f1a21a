// SPDX-License-Identifier: GPL-3.0-or-later

// Bands that are copied from one plug-in to another.

#include "foundation/text/exception.h"
#include "foundation/text/number_reader.h"
#include "plugin/multi_band_adapter.h"

namespace {

constexpr const char* kBlockName = "SoverandBandSettings";
constexpr int kLimitDecimals = 6;

// Item i has the name without its first i characters. Meant: blocks have always been written so.
MString KeyOf(const char* name, int item) { return MString(name).SubString(item); }

void CopySwitches(MAttribute& block, const char* name, const auto& switches, int count) {
    for (int b = 0; b < count; ++b)
        block.SetAttribute(KeyOf(name, b), switches[static_cast<std::size_t>(b)] ? "1" : "0");
}

void PasteSwitches(MAttribute& block, const char* name, auto& switches, int count) {
    for (int b = 0; b < count; ++b)
        if (block.HasAttribute(KeyOf(name, b)))
            switches[static_cast<std::size_t>(b)] =
                MString::ToInt64(block.GetCachedAttribute()) != 0;
}

}  // namespace

void MAudioEffectPluginToAudioPluginMultiBandAdapter::CopyBandSettings(MAttribute& block) {
    MLocker state(stateLock);
    const int count = GetBandCount();
    block.SetName(kBlockName);
    block.SetAttribute("BandCount", MString::FromInt(count));
    for (int i = 0; i + 1 < count; ++i)
        block.SetAttribute(
            KeyOf("BandLimit", i),
            MString::FromDouble(bandLimit[Index(i)].EffectiveInRange(), kLimitDecimals));
    CopySwitches(block, "BandMute", bandMute, count);
    CopySwitches(block, "BandBypass", bandBypass, count);
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::PasteBandSettings(MAttribute& block) {
    const auto count = ReadInteger(block.GetAttribute("BandCount", MString()));
    if (!count || *count < 1 || *count > kMaxBands) throw MException("Invalid number of bands.");
    ChangeStructure([&] {
        bandCount = static_cast<int>(*count);
        for (int i = 0; i + 1 < *count; ++i) {
            ParameterRecord& limit = bandLimit[Index(i)];
            if (const auto value = ReadNumber(block.GetAttribute(KeyOf("BandLimit", i), MString())))
                limit.SetEffective(limit.InRange(*value));
        }
        PasteSwitches(block, "BandMute", bandMute, GetBandCount());
        PasteSwitches(block, "BandBypass", bandBypass, GetBandCount());
    });
}
