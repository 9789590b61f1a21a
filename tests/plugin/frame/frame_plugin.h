// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <vector>

#include "foundation/objects/tolerances.h"
#include "plugin/frame/audio_plugin.h"
#include "support/signals.h"

// One smoothed number 0..1 as a parameter.
class NumberAdapter : public AutomationAdapter {
public:
    using AutomationAdapter::AutomationAdapter;

    void SetParameter(int, double position, bool) override {
        (smoothing ? target : value) = position;
    }
    double GetParameter(int) override { return value; }
    double Effective() const { return smoothing ? target : value; }
    bool IsSmoothed(int) override { return true; }
    void SetSmoothing(int, bool on) override {
        target = value.load();
        smoothing = on;
    }

    MString GetParameterName(int) override { throw 1; }  // an adapter that fails
    MString GetParameterSection(int) override { return {}; }
    MString GetParameterNameWithoutSection(int) override { return "Number"; }
    MString GetParameterID(int) override { return "Number"; }
    MString GetParameterValueName(int) override { return {}; }
    MString GetParameterValueNameFrom01(int, double) override { return {}; }
    bool ParseParameterValueName(int, const MString&) override { return false; }
    bool ParsePositionFromText(int, const MString&, double&) override { return false; }
    MString GetParameterUnitsName(int) override { return {}; }
    ParameterType GetParameterType(int) override { return ParameterType::Float; }
    double GetParameterDefaultValue(int) override { return 0; }
    int GetRandomizable() override { return 0; }
    void Randomize(double) override {}
    void UpdateEditor() override { ++editorUpdates; }

    std::atomic<double> value = 0;
    std::atomic<double> target = 0;
    std::atomic<bool> smoothing = false;
    std::atomic<int> editorUpdates = 0;
};

// A plug-in around an effect that delays by `latency`, scales by `gain` and tells how it was
// called.
class FramePlugin : public MAudioPlugin {
public:
    struct Call {
        int sampleCount;
        double position;
        double value;  // of the parameter
    };

    explicit FramePlugin(int inputPins = 2, int outputPins = 2) {
        inputChannelNames.resize(static_cast<std::size_t>(inputPins), "In");
        outputChannelNames.resize(static_cast<std::size_t>(outputPins), "Out");
        auto made = std::make_unique<NumberAdapter>(AutomationContext{this, {}, {}, false});
        number = made.get();
        automation.Add(std::move(made));
        RebuildAutomationTable();
        calls.reserve(100000);
    }

    // With what was requested, for blocks of up to a size.
    void Prepare(int blockSize = 1024) {
        AnnounceBlockSize(blockSize);
        InitProcessing();
    }
    void Cut(int block, int automationBlock = kNoLimit) {
        blockLimit = block;
        interpolationLimit = automationBlock;
    }

    // The audio in blocks of one size through every channel of all buses; inPlace: in the input's
    // own memory. Null pointers stand for empty channels.
    Audio Run(Audio input, int outputChannels, int blockSize, bool inPlace = false);

    void ParametersChanged() override { ++updates; }
    void UpdateEditor() override {}
    void ProcessUpdate() override {}
    void BuildEditor() override {}
    void EditorDestroyed() override {}
    int GetLatency() override { return latency; }
    std::unique_ptr<MUpsampler> CreateUpsampler() override {
        return makeUpsampler ? makeUpsampler() : MAudioPlugin::CreateUpsampler();
    }

    using MAudioPlugin::processingOutputs;

    NumberAdapter* number;
    float gain = 1;
    int latency = 0;
    int failingCall = -1;  // its output is not a number
    bool throwing = false;
    std::vector<Call> calls;
    std::atomic<int> updates = 0;
    int clearCalls = 0;
    int prepared = 0;
    int finished = 0;
    std::function<std::unique_ptr<MUpsampler>()> makeUpsampler;

protected:
    void Process(float** inputs, float** outputs, int sampleCount) override {
        if (throwing) throw MException("broken");
        const bool fails = static_cast<int>(calls.size()) == failingCall;
        if (calls.size() < calls.capacity())
            calls.push_back({sampleCount, position, number->Effective()});
        for (int b = 0; b < GetOutputBusCount(); ++b)
            for (int c = 0; c < processingOutputs; ++c)
                ProcessChannel(inputs, outputs, b * kChannelStride + c, sampleCount, fails);
    }
    void ProcessChannel(float** inputs, float** outputs, int slot, int sampleCount, bool fails) {
        MArrayQueue<float>& line = lines[static_cast<std::size_t>(slot)];
        line.PushCopies(0, latency - line.Length());
        for (int i = 0; i < sampleCount; ++i) {
            line.Push(inputs[slot] != nullptr ? inputs[slot][i] : 0);
            const float wet = line.Pull() * gain;
            outputs[slot][i] = accumulatesOutput ? outputs[slot][i] + wet : wet;
        }
        if (fails) outputs[slot][sampleCount / 2] = std::numeric_limits<float>::quiet_NaN();
    }
    void ProcessBypassed(float*, int, int) override {}
    void PrepareBlock(float**, float**, int, bool) override { ++prepared; }
    void FinishBlock(float**, float**, int, bool) override { ++finished; }
    void PrepareForProcessingOnce(float**, float**) override {}
    void ClearEffect() override { ++clearCalls; }

    std::array<MArrayQueue<float>, kChannelSlots> lines;
};

// What a host keeps in its memory for one call.
struct HostBuffers {
    HostBuffers(int inputs, int outputs, int sampleCount, float level = 0.5f)
        : in(Noise(inputs, sampleCount, level)), out(Constant(outputs, sampleCount, 0.25f)) {
        inPointers.fill(nullptr);
        outPointers.fill(nullptr);
        for (int c = 0; c < inputs; ++c) Input(c) = in[static_cast<std::size_t>(c)].data();
        for (int c = 0; c < outputs; ++c) Output(c) = out[static_cast<std::size_t>(c)].data();
    }
    // Channels of stereo buses in a row.
    float*& Input(int c) { return inPointers[static_cast<std::size_t>(c / 2 * 8 + c % 2)]; }
    float*& Output(int c) { return outPointers[static_cast<std::size_t>(c / 2 * 8 + c % 2)]; }
    void Process(MAudioPlugin& plugin, bool replacing = true) {
        plugin.ProcessAudio(inPointers.data(), outPointers.data(), static_cast<int>(out[0].size()),
                            replacing);
    }

    Audio in;
    Audio out;
    ChannelPointers inPointers;
    ChannelPointers outPointers;
};

inline Audio FramePlugin::Run(Audio input, int outputChannels, int blockSize, bool inPlace) {
    const int length = static_cast<int>(input[0].size());
    Audio output = Silence(outputChannels, length);
    Audio& target = inPlace ? input : output;
    for (int from = 0; from < length; from += blockSize) {
        ChannelPointers in{};
        ChannelPointers out{};
        for (std::size_t c = 0; c < input.size(); ++c) in[c] = input[c].data() + from;
        for (std::size_t c = 0; c < target.size(); ++c) out[c] = target[c].data() + from;
        ProcessAudio(in.data(), out.data(), std::min(blockSize, length - from), true);
    }
    return target;
}

// What comes in as the frame hands it on.
inline float Guarded1(float sample) { return sample + kDenormalGuard; }
