// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "effect/chorus_entry.h"
#include "plugin/frame/editor_double.h"
#include "plugin/frame/frame_plugin.h"
#include "plugin/multi_band_adapter.h"
#include "plugin/state_text.h"
#include "support/allocation_trap.h"
#include "support/rows.h"

inline void ForEachBandCase(const std::string& section, auto check) {
    ForEachRow(QUILLOREA_BAND_CASES, [&](const Row& row) {
        if (row.section == section) check(row);
    });
}

// An effect that delays, with a level and a number of no meaning. It counts how it is called.
struct BandEffect final : MAudioEffectPlugin {
    static constexpr int kDelay = 5;

    BandEffect() {
        records[0].SetFloat("Level", "Level", 0, 1, 1);
        records[1].SetInteger("Steps", "Steps", 0, 100, 10);
        descriptor.parameters = records;
        descriptor.parameterCount = 2;
        maxBlockSize = 1 << 20;
    }
    static std::intptr_t Entry(MPlugin* object, int code, PluginArguments& arguments) {
        if (object == nullptr) return reinterpret_cast<std::intptr_t>(new BandEffect);
        return object->Dispatch(code, arguments);
    }
    std::intptr_t Prepare(int newChannels, int) override {
        Clear();
        return channels = newChannels;
    }
    void Clear() override {
        ++clears;
        for (auto& line : lines) {
            line.Clear();
            line.PushCopies(0, kDelay);
        }
    }
    void RandomizeSpecial() override { ++specials; }
    int GetTailLength() override { return tail; }
    void Process(const TransportInfo&, const float* const* inputs, float* const* outputs,
                 int count) override {
        ++blocks;
        const auto level = static_cast<float>(records[0].EffectiveInRange());
        for (int c = 0; c < channels; ++c)
            for (int i = 0; i < count; ++i) {
                lines[c].Push(inputs[c][i]);
                outputs[c][i] = level * lines[c].Pull();
            }
    }

    ParameterRecord records[2];
    MArrayQueue<float> lines[8];
    int blocks = 0, clears = 0, specials = 0, tail = 100;
};

// A plug-in of bands, and a host that writes down what it is told.
struct BandsPlugin : MAudioEffectPluginToAudioPluginMultiBandAdapter {
    struct Host : HostDouble {
        void SendAutomation(int index, double) override { told.push_back(index); }
        void StateChanged() override { ++changes; }
        std::vector<int> told;
        int changes = 0;
    };
    using MAudioEffectPluginToAudioPluginMultiBandAdapter::maxBlockSize;

    explicit BandsPlugin(int count = 1, PluginEntry entry = BandEffect::Entry,
                         MAttribute* configuration = nullptr) {
        host.plugin = this;
        Initialize("Test", "Test", entry, {.configuration = configuration});
        if (configuration == nullptr) SetDefaultBands(count);
        AnnounceBlockSize(4096);
        SetHostSampleRate(48000);
        InitProcessing();
        hostAdapter = &host;
    }

    BandEffect& Effect(int band) { return static_cast<BandEffect&>(*effects[band]); }
    void Set(const char* identifier, double position) {
        SetParameter(FindParameter(identifier), position, false);
    }
    void SetLimits(const std::vector<double>& hertz) {
        for (std::size_t i = 0; i < hertz.size(); ++i) bandLimit[i].Set(std::log10(hertz[i]));
        OnGlobalChange(false);
    }
    // In hertz, rounded.
    std::vector<int> Limits() const {
        std::vector<int> hertz;
        for (const auto& limit : bandLimit) hertz.push_back(int(std::pow(10, limit.Get()) + 0.5));
        return hertz;
    }

    Host host;
};
