// SPDX-License-Identifier: GPL-3.0-or-later

// The bands of a plug-in: their parameters, their structure, and how both reach the audio path.

#include <algorithm>
#include <cmath>

#include "foundation/objects/guarded.h"
#include "parameters/values/scale_texts.h"
#include "plugin/frame/processing_pause.h"
#include "plugin/multi_band_adapter.h"

namespace {

constexpr int kMaxBands = BandSplitter::kMaxBands;
constexpr int kMaxLimits = BandSplitter::kMaxLimits;

constexpr double kLargestGain = 24;        // decibels
constexpr double kDefaultOutputGain = -6;  // decibels
constexpr double kLowestLimit = 20;        // hertz
constexpr double kHighestLimit = 20000;    // hertz
constexpr double kDefaultLimits[kMaxBands][kMaxLimits] = {
    // hertz, by the number of bands
    {},
    {1000},
    {200, 2000},
    {200, 1000, 5000},
    {100, 500, 2000, 8000},
    {100, 300, 1000, 3000, 8000},
};

MString Numbered(const char* name, std::size_t index) {
    return MString(name).Append(MString::FromInt(static_cast<std::int64_t>(index) + 1));
}

void DescribeGain(ParameterRecord& record, const MString& name, double standard) {
    record.SetFloat(name, name, -kLargestGain, kLargestGain, standard);
    record.format = "{+0.2} dB";
}

// A parameter of the whole, which ProcessBlock reads; nobody wants its level drawn by chance.
void MakeMaster(ParameterRecord& record) {
    record.Clear(ParameterFlag::kUpdates | ParameterFlag::kRandomizes);
}

}  // namespace

void MAudioEffectPluginToAudioPluginMultiBandAdapter::DescribeParameters() {
    dryWet.SetFloat("Dry/wet", "Dry/wet", 0, 1, 1);
    dryWet.text = {PercentText, ReadPercents};
    DescribeGain(inputGain, "Input gain", 0);
    DescribeGain(outputGain, "Output gain", kDefaultOutputGain);
    for (ParameterRecord* const record : {&dryWet, &inputGain, &outputGain}) MakeMaster(*record);
    for (std::size_t b = 0; b < bandGain.size(); ++b) {
        DescribeGain(bandGain[b], Numbered("Band gain ", b), 0);
        const MString name = Numbered("Band panorama ", b);
        bandPanorama[b].SetFloat(name, name, -1, 1, 0);
        bandPanorama[b].text = {PanText, ReadPercents};
    }
    for (std::size_t i = 0; i < bandLimit.size(); ++i) {
        const MString name = Numbered("Band limit ", i);
        bandLimit[i].SetFloat(name, name, std::log10(kLowestLimit), std::log10(kHighestLimit),
                              std::log10(kDefaultLimits[kMaxBands - 1][i]));
        bandLimit[i].text = {LogFrequencyText, ReadLogFrequency};
    }
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::ChangeStructure(
    const std::function<void()>& change) {
    bool isLatencyNew = false;
    {
        const ProcessingPause pause(processingDisabled);
        MLocker state(stateLock);
        MLocker process(processLock);
        change();
        OnGlobalChange(true);
        isLatencyNew = preparedLatency >= 0 && preparedLatency != GetLatency();
    }
    if (isLatencyNew) InitProcessing();
    RequestEditorUpdate();
    StateChanged();
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::SetDefaultBands(int count) {
    Guarded("MAudioEffectPluginToAudioPluginMultiBandAdapter::SetDefaultBands",
            [&] { ChangeStructure([&] { SetBands(count); }); });
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::SetBands(int count) {
    const int wanted = HeldCount(count);
    for (int i = 0; i + 1 < wanted; ++i)
        bandLimit[Index(i)].SetEffective(std::log10(kDefaultLimits[wanted - 1][i]));
    for (std::size_t b = 0; b < bandGain.size(); ++b) {
        bandGain[b].SetEffective(0);
        bandPanorama[b].SetEffective(0);
        bandMute[b] = bandBypass[b] = false;
        if (effects[b] != nullptr) effects[b]->Load(&defaultParameters);
    }
    selectedBand = wanted / 2;
    bandCount = wanted;
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::OnGlobalChange(bool updateSolo) {
    Guarded("MAudioEffectPluginToAudioPluginMultiBandAdapter::OnGlobalChange", [&] {
        MLocker process(processLock);
        if (updateSolo) UpdateSolo();
        ApplyBands();
    });
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::OnBandParameterChanged(
    const MOnParameterChangedParams&) {
    OnGlobalChange(false);
}

// A band is solo where it is the only one that is not muted.
void MAudioEffectPluginToAudioPluginMultiBandAdapter::UpdateSolo() {
    const int used = GetBandCount();
    const auto end = bandMute.begin() + used;
    const bool isOne = used > 1 && std::count(bandMute.begin(), end, false) == 1;
    for (int b = 0; b < kMaxBands; ++b)
        bandSolo[Index(b)] = isOne && b < used && !bandMute[Index(b)];
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::SoloBand(int band, bool on) {
    {
        MLocker process(processLock);
        for (int b = 0; b < kMaxBands; ++b) bandMute[Index(b)] = on && b != band;
    }
    OnGlobalChange(true);
    StateChanged();
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::ApplyBands() {
    BuildCrossover();
    linearPhaseActive.store(linearPhaseRequested.load(kRelaxed), kRelaxed);
    UpdateTargets();
    FollowBandCount();
    ParametersChanged();
}

// Limits are taken as they are, in whatever order they stand.
void MAudioEffectPluginToAudioPluginMultiBandAdapter::BuildCrossover() {
    BandSplitter::Design design;
    design.bands = GetBandCount();
    design.sampleRate = sampleRate;
    design.linear = linearPhaseRequested.load(kRelaxed);
    design.fixedQ = design.linear && linearPhaseFixedQ.load(kRelaxed);
    design.mode = design.linear ? 0 : GetCrossoverMode();
    for (int i = 0; i + 1 < design.bands; ++i)
        design.limits[Index(i)] = std::pow(10, bandLimit[Index(i)].EffectiveInRange());
    splitter.Build(design);
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::UpdateTargets() {
    for (int b = 0; b < kMaxBands; ++b) {
        const bool isUsed = b < GetBandCount();
        const double decibels = isUsed ? bandGain[Index(b)].EffectiveInRange() : 0;
        bandGainTarget[Index(b)] = std::pow(10, decibels * 0.05);
        bandPanTarget[Index(b)] = isUsed ? bandPanorama[Index(b)].EffectiveInRange() : 0;
    }
}

// The bands that stay go on as they are; what another one has heard before is long gone.
void MAudioEffectPluginToAudioPluginMultiBandAdapter::FollowBandCount() {
    const int used = GetBandCount();
    if (used == activeBandCount) return;
    for (int b = activeBandCount; b < used; ++b) {
        if (effects[Index(b)] != nullptr) effects[Index(b)]->Clear();
        bandGainCurrent[Index(b)] = bandGainTarget[Index(b)];
        bandPanCurrent[Index(b)] = bandPanTarget[Index(b)];
    }
    activeBandCount = used;
    selectedBand = std::min<int>(selectedBand, used - 1);
    UpdateMaxBufferSize();
    ReserveBuffers(largestBlock);
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::SetCrossoverKind(CrossoverKind kind) {
    Guarded("MAudioEffectPluginToAudioPluginMultiBandAdapter::SetCrossoverKind", [&] {
        const auto set = [&](std::atomic<bool>& flag, bool on) {
            if (flag.exchange(on) != on) OnGlobalChange(false);
        };
        {
            const ProcessingPause pause(processingDisabled);
            MLocker state(stateLock);
            MLocker process(processLock);
            const bool isLinear = kind != CrossoverKind::Analog;
            if (isLinear) set(linearPhaseFixedQ, kind == CrossoverKind::Hybrid);
            set(linearPhaseRequested, isLinear);
        }
        InitProcessing();
        StateChanged();
    });
}

MAudioEffectPluginToAudioPluginMultiBandAdapter::CrossoverKind
MAudioEffectPluginToAudioPluginMultiBandAdapter::GetCrossoverKind() const {
    if (!linearPhaseRequested.load(kRelaxed)) return CrossoverKind::Analog;
    return linearPhaseFixedQ.load(kRelaxed) ? CrossoverKind::Hybrid : CrossoverKind::Linear;
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::SetCrossoverMode(int mode) {
    Guarded("MAudioEffectPluginToAudioPluginMultiBandAdapter::SetCrossoverMode",
            [&] { ChangeStructure([&] { crossoverMode = HeldMode(mode); }); });
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::SetDefaultBandCount(int count) {
    defaultBandCount = HeldCount(count);
}
