// SPDX-License-Identifier: GPL-3.0-or-later

// One block of a plug-in around an effect.

#include <algorithm>
#include <cmath>

#include "dsp/vectors.h"
#include "foundation/objects/guarded.h"
#include "plugin/effect_adapter.h"
#include "plugin/frame/meter_sink.h"
#include "plugin/frame/preset_services.h"

namespace {

constexpr double kTriggerThreshold = 2.0 / 3;

// The largest absolute sample; of what is no finite number 0. A few samples are not worth the
// vectors, and the first of them counts as it is. Meant: meters have always shown it so.
float LevelOf(const float* samples, int count) {
    constexpr int kFewSamples = 4;
    float level = samples[0];
    if (count < kFewSamples) {
        for (int i = 1; i < count; ++i) level = std::max(level, std::abs(samples[i]));
    } else {
        SseAbsMax(samples, count, &level);
    }
    return std::isfinite(level) ? level : 0;
}

}  // namespace

void MAudioEffectPluginToAudioPluginAdapter::PrepareBlock(float**, float**, int, bool) {
    subBlocking = false;  // modulators and multiparameters at work raise it
    const int limit = GetProtection();
    blockLimit = std::min(maxBlockSize, subBlocking ? limit : kNoLimit);
    interpolationLimit = limit;
}

void MAudioEffectPluginToAudioPluginAdapter::PrepareForProcessingOnce(float**, float**) {
    Guarded("MAudioEffectPluginToAudioPluginAdapter::PrepareForProcessingOnce", [&] {
        if (presetTriggerPrevious.HasRisen()) StepPreset(-1);
        if (presetTriggerNext.HasRisen()) StepPreset(1);
    });
}

// One that is held up steps once.
bool MAudioEffectPluginToAudioPluginAdapter::PresetTrigger::HasRisen() {
    const double position = record.Get();
    const bool risen = lastPosition < kTriggerThreshold && position >= kTriggerThreshold;
    lastPosition = position;
    return risen;
}

void MAudioEffectPluginToAudioPluginAdapter::StepPreset(int steps) {
    pendingPresetStep.fetch_add(steps, kRelaxed);
    presetStepCall.Request(editorFactory);
}

void MAudioEffectPluginToAudioPluginAdapter::ServePresetStep() {
    if (presets == nullptr) return;
    if (const int steps = pendingPresetStep.exchange(0, kRelaxed)) presets->StepPreset(steps);
}

void MAudioEffectPluginToAudioPluginAdapter::Process(float** inputs, float** outputs,
                                                     int sampleCount) {
    Guarded("MAudioEffectPluginToAudioPluginAdapter::Process", [&] {
        if (effect == nullptr) {
            for (int c = 0; c < processingOutputs; ++c) VecZero(outputs[c], sampleCount);
            return;
        }
        PrepareForProcessing(inputs, sampleCount);
        ProcessBlock(inputs, outputs, sampleCount);
        PrepareForProcessing(inputs, outputs, sampleCount);
    });
}

void MAudioEffectPluginToAudioPluginAdapter::ProcessBlock(float** inputs, float** outputs,
                                                          int sampleCount) {
    effect->UpdateIfNeeded();
    effect->Process(transport, inputs, outputs, sampleCount);
}

void MAudioEffectPluginToAudioPluginAdapter::PrepareForProcessing(const float* const* inputs,
                                                                  int sampleCount) {
    Guarded("MAudioEffectPluginToAudioPluginAdapter::PrepareForProcessing", [&] {
        if (transportDirty) TakeTransport();
        // Modulators run here, then multiparameters: the effect's update follows what they set.
        FeedMeter(meters.input, inputs, processingInputs, sampleCount);
    });
}

void MAudioEffectPluginToAudioPluginAdapter::PrepareForProcessing(const float* const* inputs,
                                                                  const float* const* outputs,
                                                                  int sampleCount) {
    Guarded("MAudioEffectPluginToAudioPluginAdapter::PrepareForProcessing", [&] {
        FeedMeter(meters.output, outputs, processingOutputs, sampleCount);
        if (sideChainMetering && GetInputBusCount() > 1)
            FeedMeter(meters.sideChain, inputs + kChannelStride, processingInputs, sampleCount);
    });
}

// While the song stands still nobody knows where it is; its tempo stays.
void MAudioEffectPluginToAudioPluginAdapter::TakeTransport() {
    const double lastTempo = transport.tempo;
    transport = {};
    transport.tempo = lastTempo;
    if (!playing) return;
    transport = {tempo, position, barStart, timeSigNumerator, timeSigDenominator};
}

void MAudioEffectPluginToAudioPluginAdapter::FeedMeter(MMeterSink* meter, const float* const* bus,
                                                       int channels, int sampleCount) const {
    if (meter == nullptr) return;
    const int end = std::min(channels, channelOffset + channelCount);
    for (int c = channelOffset; c < end; ++c)
        meter->Feed(c - channelOffset, bus != nullptr ? LevelOf(bus[c], sampleCount) : 0);
}

void MAudioEffectPluginToAudioPluginAdapter::FinishBlock(float**, float**, int, bool) {
    meters.ForEach([](MMeterSink& meter) { meter.Update(); });
}

// There are no filters around a single effect.
void MAudioEffectPluginToAudioPluginAdapter::ProcessBypassed(float*, int, int) {}

void MAudioEffectPluginToAudioPluginAdapter::ClearEffect() {
    for (MAudioEffectPlugin* const cleared : AllEffects()) cleared->Clear();
}
