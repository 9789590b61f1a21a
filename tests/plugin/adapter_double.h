// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "plugin/effect_adapter.h"
#include "plugin/frame/frame_plugin.h"
#include "plugin/frame/meter_sink.h"
#include "plugin/frame/preset_services.h"

// What a probe asks for.
struct ProbeWishes {
    int inputBuses = 1;
    std::uint8_t flags[2] = {PluginDescriptor::kUsesHostTime, 0};
    int maxBlockSize = 1 << 30;
    ParameterType type = ParameterType::Float;
};

// An effect of one smoothed parameter that passes its input on and writes down how it is called.
struct ProbeEffect final : MAudioEffectPlugin {
    struct Call {
        int sampleCount;
        TransportInfo transport;
        double value;
        int updates;  // up to the call
    };

    inline static ProbeWishes wishes;  // of the next one

    ProbeEffect() {
        record.SetFloat("Number", "Number", 0, 1, 0.25);
        record.Raise(ParameterFlag::kSmoothed);
        record.type = wishes.type;
        descriptor.parameters = &record;
        descriptor.parameterCount = 1;
        descriptor.inputBusCount = wishes.inputBuses;
        for (std::size_t i = 0; i < 2; ++i) descriptor.flags[i] = wishes.flags[i];
        maxBlockSize = wishes.maxBlockSize;
        calls.reserve(10000);
    }
    static std::intptr_t Entry(MPlugin* object, int code, PluginArguments& arguments) {
        if (object == nullptr) object = new ProbeEffect;
        if (code == PluginCommand::kCreate) return reinterpret_cast<std::intptr_t>(object);
        return object->Dispatch(code, arguments);
    }

    std::intptr_t Prepare(int newChannels, int newSampleRate) override {
        log +=
            "prepare " + std::to_string(newChannels) + " " + std::to_string(newSampleRate) + ", ";
        return MAudioEffectPlugin::Prepare(newChannels, newSampleRate);
    }
    void Update() override { ++updates; }
    void ResetParameters() override { log += std::to_string(updates) + " updates, reset, "; }
    void InitGUI() override { log += "GUI, "; }
    void Process(const TransportInfo& transport, const float* const* inputs, float* const* outputs,
                 int sampleCount) override {
        calls.push_back({sampleCount, transport, record.Effective(), updates});
        for (int c = 0; c < channels; ++c) std::copy_n(inputs[c], sampleCount, outputs[c]);
    }

    ParameterRecord record;
    int updates = 0;
    std::string log;
    std::vector<Call> calls;
};

// A plug-in around a probe.
struct ProbePlugin : MAudioEffectPluginToAudioPluginAdapter {
    explicit ProbePlugin(const ProbeWishes& wishes = {}, Options options = {}) {
        ProbeEffect::wishes = wishes;
        usesHostTime = false;
        Initialize("Probe", "Probe", ProbeEffect::Entry, options);
        SetHostSampleRate(48000);
        AnnounceBlockSize(3000);
        InitProcessing();
    }
    using MAudioEffectPluginToAudioPluginAdapter::effectHost;
    ProbeEffect& Probe() { return static_cast<ProbeEffect&>(*effect); }
};

// Writes down what it is asked for.
struct PresetsDouble : MPresetServices {
    void StepPreset(int number) override { steps.push_back(number); }
    void InitProcessingActivePresets() override { ++inits; }
    void ActualiseActivePresetsAfterLoading() override { ++loads; }
    std::vector<int> steps;
    int inits = 0, loads = 0;
};

struct MeterDouble : MMeterSink {
    void Feed(int channel, float peak) override { peaks.push_back({channel, peak}); }
    void Update() override { ++updates; }
    void Resize(int channelCount) override { channels = channelCount; }
    std::vector<std::pair<int, float>> peaks;
    int updates = 0, channels = 0;
};
