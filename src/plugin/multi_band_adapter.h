// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

#include "foundation/xml/attribute.h"
#include "plugin/band_math.h"
#include "plugin/band_splitter.h"
#include "plugin/effect_adapter.h"

// A plug-in of one to six bands with an effect each. A crossover splits the input; each band has a
// gain and a panorama in front of its effect and mixes dry and wet behind it; the sum of the bands
// gets the output gain.
//
//     MAudioEffectPluginToAudioPluginMultiBandAdapter plugin;
//     plugin.Initialize("Chorus", "Chorus", ChorusEntry, {.configuration = &configuration});
//     plugin.SetDefaultBands(3);
//
// Hosts see the parameters of the whole, then those of all six effects as "Band 1" to "Band 6",
// whatever the number of bands in use.
//
// Units    decibels, decimal logarithms of hertz, -1 left .. 1 right; samples at the processing
//          rate
// Ranges   1 .. 6 bands; one band is not filtered
// Threads  as MAudioEffectPluginToAudioPluginAdapter's. A band's gain, panorama or limit that
//          changes takes effect at once, on the thread that changes it, the audio thread included;
//          switches that are words are heard from the next sub-block on. What changes the structure
//          keeps the audio path silent meanwhile and belongs to any thread but the audio thread
// Memory   changes of structure and InitProcessing allocate; moving a limit does not
// Errors   MException "Error creating plugin." out of Initialize; "Invalid number of bands." out of
//          PasteBandSettings, which then changes nothing
class MAudioEffectPluginToAudioPluginMultiBandAdapter
    : public MAudioEffectPluginToAudioPluginAdapter {
public:
    static constexpr int kMaxBands = BandSplitter::kMaxBands;
    static constexpr int kMaxLimits = BandSplitter::kMaxLimits;

    MAudioEffectPluginToAudioPluginMultiBandAdapter();
    ~MAudioEffectPluginToAudioPluginMultiBandAdapter() override;

    // What a band is made of at first: limits that suit the number of bands, nothing muted, effects
    // as they are when they are new. count is held to 1 .. 6.
    void SetDefaultBands(int count);
    // Where so many bands are split at first, in hertz: limit 0 .. count - 2.
    static double GetDefaultLimit(int count, int limit);
    int GetBandCount() const { return bandCount.load(kRelaxed); }

    // Brings the audio path in line with the bands. updateSolo where mutes may have changed.
    void OnGlobalChange(bool updateSolo);

    // Mutes all the others, or none. There is no other solo.
    void SoloBand(int band, bool on);
    bool IsBandSolo(int band) const { return bandSolo[Index(band)].load(kRelaxed); }

    enum class CrossoverKind { Analog, Linear, Hybrid };
    void SetCrossoverKind(CrossoverKind kind);
    CrossoverKind GetCrossoverKind() const;
    // The slope of the analog kind: 0 for 12 dB/oct, 1 .. 5 for 24, 48, 72, 96, 120.
    void SetCrossoverMode(int mode);
    int GetCrossoverMode() const { return crossoverMode.load(kRelaxed); }

    // How many bands new plug-ins have, for SetDefaultSettingsToCurrent.
    void SetDefaultBandCount(int count);

    // "Copy bands" and "Paste bands": the count of bands, their limits, mutes and bypasses as an
    // item "SoverandBandSettings". What a block does not tell stays. Threads: the user interface's.
    void CopyBandSettings(MAttribute& block);
    void PasteBandSettings(MAttribute& block);

    // For each band in use either new parameters or a new special object.
    void GenerateRandomSettingsSmart();

    // By band; null where there is none. As SetMeters.
    using BandMeters = std::array<MMeterSink*, kMaxBands>;
    void SetBandMeters(const BandMeters& newMeters);

    int GetLatency() override;
    int GetTailLength() override;
    bool IsParameterAvailable(int index) override;
    // Without its section, and of "Band 1" the number alone: "1 - Rate".
    MString GetParameterShortName(int index) override;
    // Where bands are linked, gives the same parameter of the others the same value.
    void ParameterChanged(int index) override;

    void BuildEditor() override;
    void EditorDestroyed() override;

    // Switches. OnGlobalChange(true) behind a change of a mute.
    std::array<std::atomic<bool>, kMaxBands> bandMute{};
    std::array<std::atomic<bool>, kMaxBands> bandBypass{};
    std::atomic<bool> dryWetZero = false;  // these two hold over the knob, the second over the
    std::atomic<bool> dryWetFull = false;  // first
    std::atomic<bool> dryWetAffectsInputGain = true;
    std::atomic<bool> dryWetAffectsInputPan = true;
    std::atomic<bool> linkBands = false;
    // Of the editor: its handles show the panorama, and the band that is selected.
    std::atomic<bool> editBandPanorama = false;
    std::atomic<std::int32_t> selectedBand = 0;
    // The band whose effect alone is heard, with the whole input; -1: none.
    std::atomic<std::int32_t> previewBand = -1;

    // Parameters of the whole and of the bands.
    ParameterRecord dryWet;     // 0..1
    ParameterRecord inputGain;  // decibels, like the other gains
    ParameterRecord outputGain;
    std::array<ParameterRecord, kMaxBands> bandGain;
    std::array<ParameterRecord, kMaxLimits> bandLimit;
    std::array<ParameterRecord, kMaxBands> bandPanorama;

protected:
    void CreateEffects(const MString& effectName, PluginEntry entry) override;
    void InitParameters() override;
    void DiscardEffects() override;
    std::span<MAudioEffectPlugin* const> AllEffects() const override;
    std::span<MAudioEffectPlugin* const> UsedEffects() const override;

    void InitProcessing_LockedPart() override;
    void InitProcessingGUI() override;

    void ProcessBlock(float** inputs, float** outputs, int sampleCount) override;
    void ProcessBypassed(float* buffer, int sampleCount, int channel) override;
    void FinishBlock(float** inputs, float** outputs, int sampleCount, bool replacing) override;
    void ClearEffect() override;

    void StoreSettings(const MStoreVisitor& visitor) override;
    void StoreDefaultSettings(const MStoreVisitor& visitor) override;

    void Randomize(double amount) override;

    std::array<std::unique_ptr<MAudioEffectPluginHost>, kMaxBands> effectHosts;
    std::array<MAudioEffectPlugin*, kMaxBands> effects{};  // effectHosts'; all or none are there

    // Factors that come on top of the two gains. Under processLock.
    double inputGainScale = 1;
    double outputGainScale = 1;

private:
    class BandBlock;
    struct MasterRamps;

    static constexpr int kDefaultCrossoverMode = 1;
    static constexpr int kSteepestCrossoverMode = 5;
    static constexpr int HeldMode(int mode) { return std::clamp(mode, 0, kSteepestCrossoverMode); }
    static constexpr int HeldCount(int count) { return std::clamp(count, 1, kMaxBands); }
    static constexpr std::size_t Index(int band) { return static_cast<std::size_t>(band); }

    void DescribeParameters();
    void AddBandParameter(ParameterRecord& record);
    void AddBandEffect(int band);
    void DiscardOwnEffects();
    void OnBandParameterChanged(const MOnParameterChangedParams& params);

    // Of OnGlobalChange, under processLock.
    void UpdateSolo();
    void ApplyBands();
    void BuildCrossover();
    void UpdateTargets();
    void FollowBandCount();
    void SetBands(int count);

    void ArriveAtTargets();
    void PrepareRoom();
    void ReserveBuffers(int sampleCount);
    int BusCount() { return std::max(GetInputBusCount(), GetOutputBusCount()); }
    // Runs a change of structure under the locks, and prepares anew where the latency has changed.
    void ChangeStructure(const std::function<void()>& change);

    MasterRamps TakeRamps(int sampleCount);

    void StoreBandSwitches(const MStoreVisitor& visitor);
    void StoreCrossoverMode(const MStoreVisitor& visitor);
    void StoreBandCount(const MStoreVisitor& visitor);
    void StoreBandBypass(const MStoreVisitor& visitor);
    void StoreBandParameters(const MStoreVisitor& visitor);
    void StoreBandEffects(const MStoreVisitor& visitor);
    void StoreBandEffect(const MStoreVisitor& visitor, int band);

    bool AreBandsLinked() const;

    std::atomic<std::int32_t> bandCount = 1;
    std::array<std::atomic<bool>, kMaxBands> bandSolo{};
    std::atomic<bool> isEditorOpen = false;

    // What is asked for, changed under processLock, and what the audio path does.
    std::atomic<bool> linearPhaseRequested = false;
    std::atomic<bool> linearPhaseFixedQ = false;
    std::atomic<std::int32_t> crossoverMode = kDefaultCrossoverMode;
    std::atomic<bool> linearPhaseActive = false;

    std::atomic<std::int32_t> defaultBandCount = 1;  // the user's
    MAttribute defaultParameters;                    // of a new effect; fixed by CreateEffects
    std::array<ParameterAdapterMap, kMaxBands> bandParameters;

    // Under processLock, from here on.
    BandSplitter splitter;
    std::array<double, kMaxBands> bandGainTarget{};  // factors
    std::array<double, kMaxBands> bandGainCurrent{};
    std::array<double, kMaxBands> bandPanTarget{};
    std::array<double, kMaxBands> bandPanCurrent{};
    double dryWetPrevious = 1;
    double inputGainPrevious = 0;
    double outputGainPrevious = 0;
    DecibelFactor inputGainFactor;
    DecibelFactor outputGainFactor;
    int activeBandCount = 1;   // what the audio path runs, in line with the splitter
    int preparedLatency = -1;  // of the last InitProcessing; -1 before
    int largestBlock = 0;      // ever seen
    BandMeters bandMeters{};

    // Samples of a block, by band, bus and channel.
    GrowingBuffer<float> bandInputs;
    GrowingBuffer<float> bandOutputs;  // without a band: each is added before the next one runs
    GrowingBuffer<float> sumBuffers;
};
