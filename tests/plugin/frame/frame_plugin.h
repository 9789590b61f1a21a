// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <xmmintrin.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <vector>

#include "foundation/objects/tolerances.h"
#include "foundation/text/exception.h"
#include "parameters/parameter_types.h"
#include "plugin/frame/audio_plugin.h"
#include "support/signals.h"

// A host that writes down what it is told.
struct HostDouble : MAudioPluginAdapter {
    void SendAutomation(int, double) override {}
    void GenerateMIDIEvent(int, const std::uint8_t* bytes) override {
        sent.assign(bytes, bytes + 3);
    }
    bool ChangeEditorSize(EditorSize) override { return true; }
    void UpdateLatency() override { latencies.push_back(plugin->GetReportedLatency()); }

    MAudioPlugin* plugin = nullptr;
    std::vector<std::uint8_t> sent;
    std::vector<int> latencies;
};

// All of the audio in blocks of one size; in place or not, with as many channels as come in.
inline Audio RunPlugin(MAudioPlugin& plugin, Audio input, int blockSize, bool inPlace = false) {
    const int length = static_cast<int>(input[0].size());
    Audio output = input;
    Audio& target = inPlace ? input : output;
    for (int from = 0; from < length; from += blockSize) {
        ChannelPointers in{}, out{};
        std::ranges::copy(WritePointers(input, from), in.begin());
        std::ranges::copy(WritePointers(target, from), out.begin());
        plugin.ProcessAudio(in.data(), out.data(), std::min(blockSize, length - from), true);
    }
    return target;
}

// A plug-in with one smoothed parameter around an effect that delays by `latency`, scales by `gain`
// and writes down how it was called.
struct FramePlugin : MAudioPlugin {
    struct Call {
        int sampleCount;
        double position;
        double value;    // of the parameter
        double setting;  // what it was set to
    };
    using Parameter = ParameterFloatT<ParameterBaseCustom>;

    explicit FramePlugin(std::size_t inputPins = 2, std::size_t outputPins = 2) {
        inputChannelNames.resize(inputPins, "In");
        outputChannelNames.resize(outputPins, "Out");
        number.SetFloat("Number", "Number", 0, 1, 0);
        number.Raise(ParameterFlag::kSmoothed);
        automation.Add(
            std::make_unique<Parameter>(AutomationContext{this, {}, {}, false}, number, 0));
        RebuildAutomationTable();
        calls.reserve(10000);
    }

    Parameter& Number() { return static_cast<Parameter&>(*automation.Find(0).adapter); }
    void Prepare(int blockSize = 1024) {
        AnnounceBlockSize(blockSize);
        InitProcessing();
    }
    void Cut(int block, int automationBlock = kNoLimit) {
        blockLimit = block;
        interpolationLimit = automationBlock;
    }
    Audio Run(Audio input, int blockSize, bool inPlace = false) {
        return RunPlugin(*this, std::move(input), blockSize, inPlace);
    }

    void ParametersChanged() override { ++updates; }
    void UpdateEditor() override {}
    void ProcessUpdate() override {}
    void BuildEditor() override {}
    void EditorDestroyed() override {}
    int GetLatency() override { return latency; }
    double GetOutputClipLevel() override { return clipLevel; }
    std::unique_ptr<MUpsampler> CreateUpsampler() override {
        return makeUpsampler ? makeUpsampler() : MAudioPlugin::CreateUpsampler();
    }
    void PrepareBlock(float**, float**, int, bool) override { controlWord = _mm_getcsr(); }
    void FinishBlock(float**, float**, int, bool) override {}
    void PrepareForProcessingOnce(float**, float**) override {}
    void ProcessBypassed(float*, int, int) override {}
    void ClearEffect() override { ++clearCalls; }
    void Process(float** inputs, float** outputs, int sampleCount) override {
        if (throwing) throw MException("broken");
        if (calls.size() < calls.capacity())
            calls.push_back({sampleCount, position, number.Effective(), number.Get()});
        for (int b = 0; b < GetOutputBusCount(); ++b)
            for (int slot = b * 8; slot < b * 8 + processingOutputs; ++slot)
                ProcessChannel(lines[static_cast<std::size_t>(slot)], inputs[slot], outputs[slot],
                               sampleCount);
        if (static_cast<int>(calls.size()) == failingCall)
            outputs[0][sampleCount / 2] = std::numeric_limits<float>::quiet_NaN();
    }
    void ProcessChannel(MArrayQueue<float>& line, const float* in, float* out, int sampleCount) {
        line.PushCopies(0, latency - line.Length());
        for (int i = 0; i < sampleCount; ++i) {
            line.Push(in != nullptr ? in[i] : 0);
            out[i] = line.Pull() * gain + (accumulatesOutput ? out[i] : 0);
        }
    }

    ParameterRecord number;
    float gain = 1;
    int latency = 0;
    double clipLevel = -1;
    int failingCall = -1;  // the call, from 1, whose output is not a number
    bool throwing = false;
    unsigned controlWord = 0;  // of the processor while it is prepared
    std::vector<Call> calls;
    std::atomic<int> updates = 0;
    int clearCalls = 0;
    std::function<std::unique_ptr<MUpsampler>()> makeUpsampler;
    std::array<MArrayQueue<float>, kChannelSlots> lines;
};

// What a host with stereo buses keeps in its memory for one call.
struct HostBuffers {
    HostBuffers(int inputs, int outputs, int sampleCount, float level = 0.5f)
        : in(Noise(inputs, sampleCount, level)), out(Constant(outputs, sampleCount, 0.25f)) {
        for (int c = 0; c < inputs; ++c) Input(c) = in[static_cast<std::size_t>(c)].data();
        for (int c = 0; c < outputs; ++c) Output(c) = out[static_cast<std::size_t>(c)].data();
    }
    float*& Input(int c) { return inPointers[SlotOf(c / 2, c % 2)]; }
    float*& Output(int c) { return outPointers[SlotOf(c / 2, c % 2)]; }
    void Process(MAudioPlugin& plugin, bool replacing = true) {
        plugin.ProcessAudio(inPointers.data(), outPointers.data(), static_cast<int>(out[0].size()),
                            replacing);
    }

    Audio in, out;
    ChannelPointers inPointers{}, outPointers{};
};

// What comes in, as the frame hands it on.
inline float WithGuard(float sample) { return sample + kDenormalGuard; }
