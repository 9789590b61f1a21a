// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "effect/chorus_entry.h"
#include "foundation/xml/store_visitor.h"
#include "foundation/xml/xml_document.h"
#include "plugin/frame/editor_double.h"
#include "plugin/frame/frame_plugin.h"
#include "plugin/multi_band_adapter.h"
#include "support/allocation_trap.h"
#include "support/byte_string.h"

// An effect of two parameters: a gain, and a number that only a state knows. It delays and counts
// its blocks.
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
    std::intptr_t Prepare(int newChannels, int newSampleRate) override {
        Clear();
        return MAudioEffectPlugin::Prepare(channels = newChannels, newSampleRate);
    }
    void Clear() override {
        ++clears;
        for (auto& line : history) std::fill(line, line + kDelay, 0.0f);
    }
    void Update() override { ++updates; }
    void RandomizeSpecial() override { ++specials; }
    int GetTailLength() override { return tail; }
    void Process(const TransportInfo&, const float* const* inputs, float* const* outputs,
                 int count) override {
        ++blocks;
        const auto level = static_cast<float>(records[0].EffectiveInRange());
        for (int c = 0; c < channels; ++c)
            for (int i = 0; i < count; ++i) {
                const float late = history[c][0];
                std::copy(history[c] + 1, history[c] + kDelay, history[c]);
                history[c][kDelay - 1] = inputs[c][i];
                outputs[c][i] = level * late;
            }
    }

    ParameterRecord records[2];
    float history[8][kDelay] = {};
    int blocks = 0, clears = 0, updates = 0, specials = 0, tail = 100;
};

// A plug-in of bands around these effects, or around others.
struct BandsPlugin : MAudioEffectPluginToAudioPluginMultiBandAdapter {
    using Base = MAudioEffectPluginToAudioPluginMultiBandAdapter;
    using Base::effects;
    using Base::maxBlockSize;

    explicit BandsPlugin(int count = 1, PluginEntry entry = BandEffect::Entry,
                         MAttribute* configuration = nullptr) {
        around.plugin = this;
        around.SetPlugin(hostAdapter);
        noInPlace = true;
        Initialize("Test", "Test", entry, {.configuration = configuration});
        if (configuration == nullptr) SetDefaultBands(count);
        AnnounceBlockSize(4096);
        SetHostSampleRate(48000);
        InitProcessing();
    }
    BandEffect& Effect(int band) { return static_cast<BandEffect&>(*effects[band]); }
    void SetLimits(const std::vector<double>& hertz) {
        for (std::size_t i = 0; i < hertz.size(); ++i) bandLimit[i].Set(std::log10(hertz[i]));
        OnGlobalChange(false);
    }
    void Set(const char* identifier, double position) {
        const int index = FindParameter(identifier);
        ASSERT_GE(index, 0) << identifier;
        SetParameter(index, position, false);
    }
    bool Load(const std::string& text) {
        ByteString bytes(text);
        MXMLDocument document;
        document.Load(bytes);
        return Store({false, document.Root()});
    }
    std::string Stored() {
        ByteString bytes;
        MXMLDocument document;
        document.Root().SetName("settings");
        EXPECT_TRUE(Store({true, document.Root()}));
        document.Save(bytes, true, "utf-8");
        std::erase(bytes.bytes, '\n');
        return bytes.bytes.substr(bytes.bytes.find("<settings"));
    }
    // All positions, by index.
    std::vector<double> Positions() {
        std::vector<double> positions;
        for (int p = 0; p < GetParameterCount(); ++p) positions.push_back(GetParameter(p));
        return positions;
    }

    // Writes down which parameters it is told of.
    struct Host : HostDouble {
        void SetPlugin(MAudioPluginAdapter*& adapter) { adapter = this; }
        void SendAutomation(int index, double) override { told.push_back(index); }
        std::vector<int> told;
    } around;
};
