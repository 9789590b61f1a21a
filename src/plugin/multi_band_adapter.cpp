// SPDX-License-Identifier: GPL-3.0-or-later

// Life of a plug-in of several bands.

#include "plugin/multi_band_adapter.h"

#include <algorithm>

#include "foundation/objects/guarded.h"
#include "plugin/frame/meter_sink.h"

namespace {

// The MIDI channels beyond those of the bands reach every band.
constexpr unsigned kCommonMIDIChannels = 0xffff << BandSplitter::kMaxBands & 0xffff;

// What the analog crossover rings on, in samples. The linear kinds have a little more.
constexpr int kAnalogTail = 4096;
constexpr int kLinearTail = 4098;

}  // namespace

MAudioEffectPluginToAudioPluginMultiBandAdapter::MAudioEffectPluginToAudioPluginMultiBandAdapter() {
    DescribeParameters();
    SetBands(1);
    ApplyBands();
}

MAudioEffectPluginToAudioPluginMultiBandAdapter::
    ~MAudioEffectPluginToAudioPluginMultiBandAdapter() {
    Guarded(
        "MAudioEffectPluginToAudioPluginMultiBandAdapter::"
        "~MAudioEffectPluginToAudioPluginMultiBandAdapter",
        [&] {
            processingDisabled.fetch_add(1);
            DestroyEditor();
            DiscardOwnEffects();
        });
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::CreateEffects(const MString& effectName,
                                                                    PluginEntry entry) {
    for (int b = 0; b < kMaxBands; ++b) {
        auto& host = effectHosts[Index(b)];
        host = MPluginSystem::CreateOrRaise(effectName, entry);
        effects[Index(b)] = host->Effect();
        BindEffect(*host, static_cast<std::uint16_t>(1u << b | kCommonMIDIChannels));
    }
    TakeDescriptor(*effects[0]);
    effects[0]->Store(&defaultParameters);
    SetBands(defaultBandCount.load(kRelaxed));
    OnGlobalChange(true);
}

// The order is the hosts'.
void MAudioEffectPluginToAudioPluginMultiBandAdapter::InitParameters() {
    AddOwnParameter(dryWet);
    AddOwnParameter(inputGain);
    AddOwnParameter(outputGain);
    for (ParameterRecord& gain : bandGain) AddBandParameter(gain);
    for (ParameterRecord& limit : bandLimit) AddBandParameter(limit);
    for (int b = 0; b < kMaxBands; ++b) AddBandEffect(b);
    // Modulators come here, then multiparameters.
    AddPresetTriggers();
    for (ParameterRecord& panorama : bandPanorama) AddBandParameter(panorama);
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::AddBandParameter(ParameterRecord& record) {
    using Adapter = MAudioEffectPluginToAudioPluginMultiBandAdapter;
    AddOwnParameter(record).updateDue.Connect<&Adapter::OnBandParameterChanged>(this);
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::AddBandEffect(int band) {
    const MString prefix = MString("Band ").Append(MString::FromInt(band + 1));
    AddEffectParameters({this, prefix, prefix, true}, *effects[Index(band)], automation,
                        bandParameters[Index(band)]);
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::DiscardEffects() { DiscardOwnEffects(); }

void MAudioEffectPluginToAudioPluginMultiBandAdapter::DiscardOwnEffects() {
    ClearAutomationAdapters();
    effect = nullptr;
    for (int b = 0; b < kMaxBands; ++b) {
        bandParameters[Index(b)].Clear();
        if (effects[Index(b)] != nullptr) ReleaseEffect(*effects[Index(b)]);
        effects[Index(b)] = nullptr;
        effectHosts[Index(b)].reset();
    }
}

std::span<MAudioEffectPlugin* const> MAudioEffectPluginToAudioPluginMultiBandAdapter::AllEffects()
    const {
    return {effects.data(), effect != nullptr ? effects.size() : 0};
}

std::span<MAudioEffectPlugin* const> MAudioEffectPluginToAudioPluginMultiBandAdapter::UsedEffects()
    const {
    return AllEffects().first(effect != nullptr ? Index(GetBandCount()) : 0);
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::InitProcessing_LockedPart() {
    MAudioEffectPluginToAudioPluginAdapter::InitProcessing_LockedPart();
    Guarded("MAudioEffectPluginToAudioPluginMultiBandAdapter::InitProcessing_LockedPart", [&] {
        PrepareRoom();
        OnGlobalChange(false);
        ArriveAtTargets();
        splitter.Clear();
        preparedLatency = GetLatency();
    });
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::PrepareRoom() {
    largestBlock = std::max(largestBlock, LargestSubBlock());
    splitter.Prepare({.buses = BusCount(),
                      .channels = std::max<int>(processingOutputs, hostOutputs),
                      .blockSize = largestBlock});
    ReserveBuffers(largestBlock);
}

// The next block ramps nothing.
void MAudioEffectPluginToAudioPluginMultiBandAdapter::ArriveAtTargets() {
    bandGainCurrent = bandGainTarget;
    bandPanCurrent = bandPanTarget;
    dryWetPrevious = dryWet.EffectiveInRange();
    inputGainPrevious = inputGain.EffectiveInRange();
    outputGainPrevious = outputGain.EffectiveInRange();
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::InitProcessingGUI() {
    MAudioEffectPluginToAudioPluginAdapter::InitProcessingGUI();
    const int shown = ShownChannels();
    for (MMeterSink* const meter : bandMeters)
        if (meter != nullptr) meter->Resize(shown);
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::SetBandMeters(const BandMeters& newMeters) {
    MLocker process(processLock);
    bandMeters = newMeters;
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::EditorDestroyed() {
    MAudioEffectPluginToAudioPluginAdapter::EditorDestroyed();
    SetBandMeters({});
    previewBand.store(-1, kRelaxed);
}

// Bands have the same latency; the first one tells it.
int MAudioEffectPluginToAudioPluginMultiBandAdapter::GetLatency() {
    const bool isLate = linearPhaseActive.load(kRelaxed) && GetBandCount() > 1;
    return MAudioEffectPluginToAudioPluginAdapter::GetLatency() +
           (isLate ? kLinearCrossoverLatency : 0);
}

int MAudioEffectPluginToAudioPluginMultiBandAdapter::GetTailLength() {
    const int tail = MAudioEffectPluginToAudioPluginAdapter::GetTailLength();
    if (tail < 0 || GetBandCount() < 2) return tail;
    return tail + (linearPhaseActive.load(kRelaxed) ? kLinearTail : kAnalogTail);
}
