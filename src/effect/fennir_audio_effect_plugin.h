// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>

#include "effect/chorus_loop.h"
#include "effect/chorus_parameters.h"
#include "effect/chorus_state.h"
#include "effect/host_sync.h"
#include "plugin/contract/audio_effect_plugin.h"

// One chorus: up to ten voices that read one delay line a channel at moving distances, swept by a
// shared low-frequency shape.
//
// The line carries the filtered and saturated input. In stereo each voice is panned by a 2 x 2
// matrix and delayed by a pair of fixed Haas lines. The dry signal is added, a tremolo of the whole
// and a loudness ramp end the path.
//
// Units    parameters as in chorus_parameters.h; samples at full scale 1
// Ranges   up to 8 channels (a larger count is taken as 8), blocks of any length, rates of 1 Hz to
//          16 MHz (others are taken as the nearest)
// Threads  Process and Clear on the audio thread; Update on any, Reset and Load on the thread that
//          changes parameters. These take descriptor.lock; Prepare, IsSilent and GetTailLength do
//          not and stay apart from a running Process and from each other
// Memory   construction and Prepare allocate, nothing else does: a change of the spread mode finds
//          its room ready
// Errors   "Could not acquire mutex." out of Update, Process, Clear, Reset and Load
class FennirAudioEffectPlugin final : public MAudioEffectPlugin {
public:
    explicit FennirAudioEffectPlugin(const VoiceReads& reads = GetVoiceReads());
    ~FennirAudioEffectPlugin() override;

    void Update() override;
    void Reset(MObject* panel) override;
    // Also updates at once where the tempo lock is another one than before.
    void Load(MAttribute* tree) override;
    std::intptr_t Prepare(int newChannels, int newSampleRate) override;
    void Process(const TransportInfo& transport, const float* const* inputs, float* const* outputs,
                 int sampleCount) override;
    bool IsSilent() override;
    int GetLatency() override;
    int GetTailLength() override;
    void Clear() override;

private:
    void ClearFilters();
    void UpdateFilters();
    void SetFilter(SwitchedFilter& filter, bool enabled, MAudioFilters::FilterType type,
                   double frequency);
    void ReserveHaasLines();
    void ResizeHaasLines();
    bool UpdateRateEnabled();

    LinearRamp RampOf(ChorusParameter parameter, int sampleCount);
    ChorusLoopKind KindOf(const ChorusBlock& block) const;
    void RampLoudness(const ChorusBlock& block) const;

    MAudioPluginHostSync hostSync;
    ChorusParameters parameters{hostSync};
    SpecialParameterRecord shapeRecord;
    std::atomic<std::int32_t> shapeChangeCount = 0;
    ChorusState state;
    ChorusLoop loop;
};
