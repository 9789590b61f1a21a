// SPDX-License-Identifier: GPL-3.0-or-later

// What songs, presets and the user's configuration keep of a plug-in of several bands.

#include <charconv>

#include "foundation/text/number_reader.h"
#include "plugin/multi_band_adapter.h"
#include "plugin/stored_words.h"

namespace {

constexpr const char* kFirstBand = "band0";

// Twelve decimals; a negative zero is a zero.
MString StoredNumber(double value) {
    constexpr int kDecimals = 12;
    char text[32];  // of values below 1e6
    const auto result =
        std::to_chars(text, text + sizeof text, value + 0.0, std::chars_format::fixed, kDecimals);
    const MString number = MString::FromUtf8({text, static_cast<std::size_t>(result.ptr - text)});
    return number == "-0.000000000000" ? MString("0.000000000000") : number;
}

// Unwritten at its default, which is what an absent one, and one without a number, reads as.
void StoreParameter(const MStoreVisitor& visitor, const MString& key, ParameterRecord& record) {
    MString text = StoredNumber(record.EffectiveInRange());
    visitor.Text(key, text, StoredNumber(record.defaultValue));
    if (visitor.storing) return;
    const bool isDefault = text == StoredNumber(record.defaultValue);
    const auto number = isDefault ? std::nullopt : ReadNumber(text);
    record.SetEffective(record.InRange(number.value_or(record.defaultValue)));
}

// Always written; an absent one, and one without a number, leaves the parameter.
void KeepParameter(const MStoreVisitor& visitor, const MString& key, ParameterRecord& record) {
    MString text = StoredNumber(record.EffectiveInRange());
    visitor.Text(key, text, MString());
    if (visitor.storing) return;
    if (const auto number = ReadNumber(text)) record.SetEffective(record.InRange(*number));
}

MString Numbered(const char* key, std::size_t index) {
    return MString(key).Append(MString::FromInt(static_cast<std::int64_t>(index)));
}

using Switches = std::array<std::atomic<bool>, BandSplitter::kMaxBands>;

// A digit for each band in use; nothing where none is on.
MString BitsOf(const Switches& switches, int bandCount) {
    MString bits;
    bool isAnyOn = false;
    for (int b = 0; b < bandCount; ++b) {
        const bool on = switches[static_cast<std::size_t>(b)].load(std::memory_order_relaxed);
        isAnyOn |= on;
        bits.Append(on ? u'1' : u'0');
    }
    return isAnyOn ? bits : MString();
}

// Bands that are not told are off.
void SetBits(Switches& switches, const MString& bits) {
    for (int b = 0; b < BandSplitter::kMaxBands; ++b)
        switches[static_cast<std::size_t>(b)] = b < bits.Length() && bits[b] == u'1';
}

void StoreBits(const MStoreVisitor& visitor, const char* key, Switches& switches, int bandCount) {
    MString bits = BitsOf(switches, bandCount);
    visitor.Text(key, bits, MString());
    if (!visitor.storing) SetBits(switches, bits);
}

}  // namespace

void MAudioEffectPluginToAudioPluginMultiBandAdapter::StoreSettings(const MStoreVisitor& visitor) {
    MLocker state(stateLock);
    StoreBandSwitches(visitor);
    StoreBandParameters(visitor);
    StoreBandEffects(visitor);
    StoreStandardSettings(visitor);
    if (visitor.storing) return;
    RequestEditorUpdate();
    OnGlobalChange(true);
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::StoreBandSwitches(
    const MStoreVisitor& visitor) {
    StoreCrossoverMode(visitor);
    KeepWord(visitor, "LinearPhaseCrossover", linearPhaseRequested);
    KeepWord(visitor, "LinearPhaseCrossoverFixedQ", linearPhaseFixedQ);
    KeepWord(visitor, "DryWetAffectsInputGain", dryWetAffectsInputGain);
    StoreWord(visitor, "DryWetAffectsInputPan", dryWetAffectsInputPan, 1);
    StoreBandCount(visitor);
    StoreBits(visitor, "Mute", bandMute, GetBandCount());
    StoreBandBypass(visitor);
    KeepWord(visitor, "Link", linkBands);
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::StoreCrossoverMode(
    const MStoreVisitor& visitor) {
    int mode = GetCrossoverMode();
    visitor.Number("CrossoverMode", mode, kDefaultCrossoverMode);
    crossoverMode = HeldMode(mode);
}

// Old states of a single band tell no count, nor any item of a band.
void MAudioEffectPluginToAudioPluginMultiBandAdapter::StoreBandCount(const MStoreVisitor& visitor) {
    int count = GetBandCount();
    visitor.KeptNumber("BandCount", count);
    if (!visitor.storing && !visitor.node.HasSubItem(kFirstBand)) count = 1;
    bandCount = HeldCount(count);
}

// The plug-in's own bypass has the key that the bands' list had in old states, whose list of one
// band can't be told from it.
void MAudioEffectPluginToAudioPluginMultiBandAdapter::StoreBandBypass(
    const MStoreVisitor& visitor) {
    StoreBits(visitor, "BandBypass", bandBypass, GetBandCount());
    if (visitor.storing || visitor.node.HasAttribute("BandBypass")) return;
    const MString old = visitor.node.GetAttribute("Bypass", MString());
    if (old.Length() > 1) SetBits(bandBypass, old);
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::StoreBandParameters(
    const MStoreVisitor& visitor) {
    for (std::size_t i = 0; i < bandLimit.size(); ++i)
        KeepParameter(visitor, Numbered("Limit", i), bandLimit[i]);
    for (std::size_t b = 0; b < bandGain.size(); ++b)
        StoreParameter(visitor, Numbered("Gain", b), bandGain[b]);
    for (std::size_t b = 0; b < bandPanorama.size(); ++b)
        StoreParameter(visitor, Numbered("Pan", b), bandPanorama[b]);
    StoreWord(visitor, "EditBandPanorama", editBandPanorama);
    StoreParameter(visitor, "DryWet", dryWet);
    StoreWord(visitor, "DryWet0", dryWetZero);
    StoreWord(visitor, "DryWet100", dryWetFull);
    StoreParameter(visitor, "InputGain", inputGain);
    StoreParameter(visitor, "OutputGain", outputGain);
}

// Without an item of the first band the tree comes from a plug-in of a single band, which kept its
// effect in the root. An effect that is not told gets its defaults.
void MAudioEffectPluginToAudioPluginMultiBandAdapter::StoreBandEffects(
    const MStoreVisitor& visitor) {
    const bool isSingle = !visitor.storing && !visitor.node.HasSubItem(kFirstBand);
    for (int b = 0; b < kMaxBands; ++b) {
        const auto store = [&](const MStoreVisitor& inner) { StoreBandEffect(inner, b); };
        MAttribute none;
        if (isSingle) {
            store({false, b == 0 ? visitor.node : none});
        } else if (!visitor.SubItem(Numbered("band", Index(b)), store)) {
            store({false, none});
        }
    }
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::StoreBandEffect(const MStoreVisitor& visitor,
                                                                      int band) {
    MAudioEffectPluginHost* const host = effectHosts[Index(band)].get();
    if (host == nullptr) return;
    MLocker process(processLock);  // for one band at a time: audio may be waiting
    PluginArguments tree(&visitor.node);
    host->Command(visitor.storing ? PluginCommand::kStore : PluginCommand::kLoad, tree);
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::StoreDefaultSettings(
    const MStoreVisitor& visitor) {
    MAudioEffectPluginToAudioPluginAdapter::StoreDefaultSettings(visitor);
    int count = defaultBandCount.load(kRelaxed);
    visitor.Number("DefaultBandCount", count, 1);
    defaultBandCount = HeldCount(count);
    StoreCrossoverMode(visitor);
    StoreWord(visitor, "DryWetAffectsInputGain", dryWetAffectsInputGain, 1);
    StoreWord(visitor, "DryWetAffectsInputPan", dryWetAffectsInputPan, 1);
}
