// SPDX-License-Identifier: GPL-3.0-or-later
#include "effect/fennir_audio_effect_plugin.h"

#include <algorithm>
#include <cmath>

#include "dsp/vectors.h"
#include "foundation/objects/lock.h"
#include "plugin/contract/plugin_host.h"

namespace {

using P = ChorusParameter;

constexpr int kAnyBlockSize = 0x7fffffff;
constexpr int kMaxSampleRate = 16000000;  // well above 16 times any host's; lines stay in bounds
constexpr double kMinFrequencyHz = 20;
constexpr double kMaxFrequencyHz = 20000;
constexpr double kFilterQ = 0.7;
// Of the sample rate: closer to half of it a filter's design breaks down. Only rates below 41 kHz
// meet this.
constexpr double kMaxFrequencyShare = 0.49;
// 10^(log10 20) is not exactly 20: the ends of the range are met within this share of themselves.
constexpr double kEndTolerance = 1e-9;
constexpr int kDryDelaySinc = 18;  // the window's half, which the voices wait for
constexpr int kDryDelayCubic = 1;
constexpr int kTailMargin = 2048;
constexpr float kSilence = 1e-20f;
constexpr double kVoiceDecibels = -0.6;  // a voice, so that more of them do not get louder

bool IsZero(double amount) { return std::abs(amount) < kSameParameter; }

bool IsZero(const LinearRamp& ramp) { return IsZero(ramp.Start()) && IsZero(ramp.Step()); }

}  // namespace

FennirAudioEffectPlugin::FennirAudioEffectPlugin(const VoiceReads& reads) : loop(state, reads) {
    shapeRecord.name = "Shape";
    shapeRecord.object = &state.shape;
    shapeRecord.changeCount = &shapeChangeCount;
    descriptor.flags[0] = PluginDescriptor::kUsesHostTime;
    descriptor.parameters = parameters.Data();
    descriptor.parameterCount = ChorusParameters::kCount;
    descriptor.specials = &shapeRecord;
    descriptor.specialCount = 1;
    maxBlockSize = kAnyBlockSize;
}

FennirAudioEffectPlugin::~FennirAudioEffectPlugin() = default;

std::intptr_t FennirAudioEffectPlugin::Prepare(int newChannels, int newSampleRate) {
    channels = 0;  // until all lines have their size
    sampleRate = std::clamp(newSampleRate, 1, kMaxSampleRate);
    ClearFilters();
    state.voices.Prepare(sampleRate);
    state.saturator.SetUp();

    const bool sinc = IsHighQuality();
    const int wanted = std::clamp(newChannels, 0, ChorusState::kMaxChannels);
    for (int c = 0; c < wanted; ++c) {
        auto& line = state.vibrato[c];
        // From one silent cell every line starts at the same place, so that two channels can share
        // their positions.
        line.Resize(1);
        line.Clear();
        line.Configure(state.voices.LineSamples(), sinc);
        state.dryDelay[c].Resize(sinc ? kDryDelaySinc : kDryDelayCubic);
        state.dryDelay[c].Clear();
    }
    for (auto& pair : state.haasDelay) {
        for (auto& line : pair) {
            line.Reserve(std::max(state.voices.MaxHaasSamples(), 1));
            line.Clear();
        }
    }
    channels = wanted;
    return 0;
}

void FennirAudioEffectPlugin::Update() {
    bool rateEnabledChanged = false;
    {
        MLocker lock(descriptor.lock);
        if (sampleRate > 0) {
            UpdateFilters();
            state.voices.Update(parameters, channels);
        }
        if (channels == 2) ResizeHaasLines();
        hostSync.Refresh();
        rateEnabledChanged = UpdateRateEnabled();
    }
    if (rateEnabledChanged)
        CallHost(static_cast<int>(MAudioEffectPluginHost::Callback::OnStateChanged));
}

void FennirAudioEffectPlugin::UpdateFilters() {
    using MAudioFilters::FilterType;
    const double limitHz = kMaxFrequencyShare * sampleRate;
    const double minHz = std::min(std::pow(10.0, parameters.Effective(P::MinFrequency)), limitHz);
    SetFilter(state.minFrequencyFilter, minHz > kMinFrequencyHz * (1 + kEndTolerance),
              FilterType::HighPass, minHz);
    const double maxHz = std::pow(10.0, parameters.Effective(P::MaxFrequency));
    const double endHz = std::min(kMaxFrequencyHz * (1 - kEndTolerance), limitHz);
    SetFilter(state.maxFrequencyFilter, maxHz < endHz, FilterType::LowPass, maxHz);
}

void FennirAudioEffectPlugin::SetFilter(SwitchedFilter& filter, bool enabled,
                                        MAudioFilters::FilterType type, double frequency) {
    filter.enabled = enabled;
    if (enabled) filter.filter.Set(type, frequency, sampleRate, kFilterQ, 0);
}

void FennirAudioEffectPlugin::ResizeHaasLines() {
    for (int v = 0; v < state.voices.voiceCount; ++v)
        for (int side = 0; side < 2; ++side)
            state.haasDelay[v][side].Resize(state.voices.haasSamples[v][side]);
}

// Under the tempo lock the rate is the song's.
bool FennirAudioEffectPlugin::UpdateRateEnabled() {
    ParameterRecord& rate = parameters[P::Rate];
    const bool enable = !hostSync.IsEnabled();
    if (enable == rate.Has(ParameterFlag::kEnabled)) return false;
    enable ? rate.Raise(ParameterFlag::kEnabled) : rate.Clear(ParameterFlag::kEnabled);
    return true;
}

void FennirAudioEffectPlugin::Reset(MObject*) {
    MLocker lock(descriptor.lock);
    shapeChangeCount.store(0, std::memory_order_relaxed);
}

void FennirAudioEffectPlugin::Load(MAttribute* tree) {
    bool syncChanged = false;
    {
        MLocker lock(descriptor.lock);
        const bool wasEnabled = hostSync.IsEnabled();
        MPlugin::Load(tree);
        const bool rateChanged = hostSync.Refresh();
        syncChanged = rateChanged || hostSync.IsEnabled() != wasEnabled;
    }
    if (syncChanged) Update();
}

void FennirAudioEffectPlugin::Process(const TransportInfo& transport, const float* const* inputs,
                                      float* const* outputs, int sampleCount) {
    MLocker lock(descriptor.lock);
    if (sampleCount < 1) return;
    if (hostSync.IsEnabled())
        state.voices.FollowHost(hostSync, transport.tempo, transport.position);
    const ChorusBlock block = {inputs,
                               outputs,
                               channels,
                               sampleCount,
                               RampOf(P::DryWet, sampleCount),
                               RampOf(P::Tremolo, sampleCount),
                               RampOf(P::VoiceTremolo, sampleCount),
                               RampOf(P::TremoloPhase, sampleCount)};
    state.saturator.SetWet(parameters.Effective(P::Saturation));
    loop.Run(KindOf(block), block);
    RampLoudness(block);
}

LinearRamp FennirAudioEffectPlugin::RampOf(ChorusParameter parameter, int sampleCount) {
    ParameterRecord& record = parameters[parameter];
    const double target = record.EffectiveInRange();
    const double last = record.InRange(record.stored.load(ParameterRecord::kRelaxed));
    record.stored.store(target, ParameterRecord::kRelaxed);
    return {last, target, sampleCount};
}

ChorusLoopKind FennirAudioEffectPlugin::KindOf(const ChorusBlock& block) const {
    return {.sinc = channels > 0 && state.vibrato[0].IsHighQuality(),
            .saturated = !IsZero(state.saturator.wet),
            .ramped = block.dryWet.IsMoving(),
            .voiceTremolo = !IsZero(block.voiceTremolo),
            .stereo = channels == 2};
}

// More voices are turned down, as far as the wet signal is heard.
void FennirAudioEffectPlugin::RampLoudness(const ChorusBlock& block) const {
    const double full = std::pow(10.0, kVoiceDecibels * state.voices.voiceCount * 0.05);
    const auto gainAt = [&](double dryWet) {
        const double wet = std::min(1.0, dryWet);
        return full * wet + (1 - wet);
    };
    const double start = gainAt(block.dryWet.Start());
    const double end = gainAt(block.dryWet.At(block.sampleCount));
    const double step = (end - start) / block.sampleCount;
    for (int c = 0; c < channels; ++c)
        VecRamp(static_cast<float>(start), static_cast<float>(step), block.outputs[c],
                block.sampleCount);
}

bool FennirAudioEffectPlugin::IsSilent() {
    for (int c = 0; c < channels; ++c) {
        float peak = 0;
        SseAbsMax(state.vibrato[c].Cells(), state.vibrato[c].Length(), &peak);
        if (!(peak < kSilence)) return false;
    }
    return true;
}

int FennirAudioEffectPlugin::GetLatency() { return IsHighQuality() ? kDryDelaySinc : 0; }

int FennirAudioEffectPlugin::GetTailLength() {
    return state.dryDelay[0].Length() + state.vibrato[0].Length() + kTailMargin;
}

void FennirAudioEffectPlugin::Clear() {
    MLocker lock(descriptor.lock);
    ClearFilters();
    for (int c = 0; c < channels; ++c) {
        state.vibrato[c].Clear();
        state.dryDelay[c].Clear();
    }
    for (auto& pair : state.haasDelay)
        for (auto& line : pair) line.Clear();
}

void FennirAudioEffectPlugin::ClearFilters() {
    state.maxFrequencyFilter.filterState = {};
    state.minFrequencyFilter.filterState = {};
}
