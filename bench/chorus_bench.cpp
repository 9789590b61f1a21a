// SPDX-License-Identifier: GPL-3.0-or-later

// The whole engine, driven through its commands as a frame does. Times are for one voice and one
// sample of all channels together.

#include <benchmark/benchmark.h>

#include <atomic>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "dsp/voice_reads.h"
#include "effect/chorus_loop.h"
#include "effect/chorus_parameters.h"
#include "effect/fennir_audio_effect_plugin.h"

namespace {

constexpr int kSampleRate = 44100;
constexpr int kBlock = 512;

struct Setting {
    bool sinc;
    int channels;
    int voices;
    bool saturated;
    ProcessorVariant variant;
    bool moving = false;

    std::string Name() const {
        return std::string("Chorus/") + (sinc ? "sinc" : "cubic") + "/" +
               (channels == 2 ? "stereo" : "mono") + "/" + std::to_string(voices) + " voices/" +
               (saturated ? "saturated" : "clean") + (moving ? "/moving" : "") + "/" +
               GetVoiceReads(variant).name;
    }
};

struct Signal {
    explicit Signal(int channels) {
        for (int c = 0; c < channels; ++c) {
            auto& channel = samples[c];
            channel.resize(kBlock);
            for (int i = 0; i < kBlock; ++i)
                channel[static_cast<std::size_t>(i)] =
                    static_cast<float>(0.4 * std::sin(0.05 * i + c));
            output[c].resize(kBlock);
            inputs[c] = channel.data();
            outputs[c] = output[c].data();
        }
    }
    std::vector<float> samples[2];
    std::vector<float> output[2];
    const float* inputs[2] = {};
    float* outputs[2] = {};
};

void Run(benchmark::State& bench, Setting setting) {
    std::atomic<std::uint8_t> quality = setting.sinc ? 1 : 0;
    FennirAudioEffectPlugin effect(GetVoiceReads(setting.variant));
    effect.hqFlag = &quality;
    auto* records = effect.descriptor.parameters;
    records[static_cast<int>(ChorusParameter::Voices)].Set(setting.voices);
    records[static_cast<int>(ChorusParameter::Saturation)].Set(setting.saturated ? 0.1 : 0);
    effect.Prepare(setting.channels, kSampleRate);
    effect.Update();
    effect.ResetParameters();

    Signal signal(setting.channels);
    const TransportInfo transport;
    double dryWet = 1;
    for (auto _ : bench) {
        if (setting.moving) {
            dryWet = 2 - dryWet + (dryWet == 1 ? 0.5 : 0);
            records[static_cast<int>(ChorusParameter::DryWet)].Set(dryWet);
        }
        effect.Process(transport, signal.inputs, signal.outputs, kBlock);
        benchmark::ClobberMemory();
    }
    bench.counters["ns/voice/sample"] =
        benchmark::Counter(static_cast<double>(bench.iterations()) * kBlock * setting.voices / 1e9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Register(const Setting& setting) {
    benchmark::RegisterBenchmark(setting.Name().c_str(), Run, setting);
}

const int registered = [] {
    for (const auto variant :
         {ProcessorVariant::Baseline, ProcessorVariant::Avx2, ProcessorVariant::Avx512}) {
        if (!HasProcessorVariant(variant)) continue;
        for (const bool sinc : {true, false}) {
            for (const int channels : {2, 1})
                for (const int voices : {1, 2, 4, 10})
                    for (const bool saturated : {true, false})
                        Register({sinc, channels, voices, saturated, variant});
            Register({sinc, 2, 10, true, variant, true});
        }
    }
    return 0;
}();

}  // namespace
