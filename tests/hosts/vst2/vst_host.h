// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <functional>
#include <set>

#include "foundation/xml/store_visitor.h"
#include "hosts/adapter/midi_queue.h"
#include "hosts/adapter/product_info.h"
#include "hosts/vst2/vst2_interface.h"
#include "hosts/vst2/vst_entry.h"
#include "plugin/frame/frame_plugin.h"

// A plug-in with one parameter, that writes down its MIDI.
struct FakePlugin : FramePlugin {
    using Event = std::pair<int, int>;  // time, status

    using FramePlugin::FramePlugin;
    using MAudioPlugin::connectedInputs;
    using MAudioPlugin::connectedOutputs;
    using MAudioPlugin::hostSampleRate;

    void ProcessMIDIEvent(int time, const std::uint8_t* bytes) override {
        events.emplace_back(time, bytes[0]);
        eventPosition = position;
    }
    void StoreSettings(const MStoreVisitor&) override {
        if (throwing) throw std::bad_alloc();
    }
    int GetTailLength() override { return tail; }
    void SendBack(const MOnParameterChangedParams&) { SendAutomation(0, 0.5); }
    void Process(float** inputs, float** outputs, int sampleCount) override {
        FramePlugin::Process(inputs, outputs, sampleCount);
        for (int i = 0; i < notes; ++i) SendNote(i * 30, 1, 60, 1, true);
    }

    std::vector<Event> events;
    double eventPosition = 0;
    int tail = -1;
    int notes = 0;  // sent in each block, 30 samples apart
};

// A host that holds one effect, by its structure alone. Opcodes are the interface's numbers.
struct VstHost {
    explicit VstHost(std::unique_ptr<MAudioPlugin> plugin, int newVersion = 2400)
        : version(newVersion) {
        pending = std::move(plugin);
        creating = this;
        ProductInfo product;
        product.name = "Product";
        product.vendor = "Vendor";
        product.versionNumber = 1234;
        product.create = [] { return std::move(pending); };
        effect = StartVSTPlugin(Callback, product);
        effect->user = this;
    }
    VstHost(const VstHost&) = delete;
    VstHost& operator=(const VstHost&) = delete;
    ~VstHost() { Call(1); }

    VstIntPtr Call(int opcode, int index = 0, VstIntPtr value = 0, void* pointer = nullptr,
                   float option = 0) const {
        return effect->dispatcher(effect, opcode, index, value, pointer, option);
    }
    VstIntPtr Ask(int opcode, std::string text) const { return Call(opcode, 0, 0, text.data()); }
    // A text of at most size bytes, terminator included.
    std::string Text(int opcode, int index, std::size_t size) const {
        std::string buffer(256, '#');
        Call(opcode, index, 0, buffer.data());
        EXPECT_EQ(std::string(256 - size, '#'), buffer.substr(size)) << opcode;
        return buffer.c_str();
    }

    VstIntPtr Answer(int opcode, int index, void* pointer, float option) {
        ++counts[static_cast<std::size_t>(opcode)];
        if (opcode == 0) onAutomate(index, option);
        if (opcode == 8) onEvents(*static_cast<VstEvents*>(pointer));
        if (opcode == 7) return reinterpret_cast<VstIntPtr>(time);
        if (opcode == 37) return abilities.contains(static_cast<const char*>(pointer)) ? 1 : -1;
        return opcode == 1 ? version : 0;
    }
    static VstIntPtr Callback(AEffect* effect, int opcode, int index, VstIntPtr, void* pointer,
                              float option) {
        const bool isKnown = effect != nullptr && effect->user != nullptr;
        VstHost& host = isKnown ? *static_cast<VstHost*>(effect->user) : *creating;
        return host.Answer(opcode, index, pointer, option);
    }

    AEffect* effect = nullptr;
    const int version;
    std::set<std::string, std::less<>> abilities;
    VstTimeInfo* time = nullptr;
    std::function<void(int index, float value)> onAutomate = [](int, float) {};
    std::function<void(const VstEvents&)> onEvents = [](const VstEvents&) {};
    std::array<std::atomic<int>, 64> counts{};  // of the effect's calls, by opcode

    static inline std::unique_ptr<MAudioPlugin> pending;
    static inline VstHost* creating = nullptr;
};

// A host and the plug-in in it.
struct HostedFake {
    explicit HostedFake(std::unique_ptr<FakePlugin> newPlugin = std::make_unique<FakePlugin>(),
                        int version = 2400)
        : plugin(*newPlugin), host(std::move(newPlugin), version) {
        host.time = &time;
    }
    void RunBlock() {
        Audio in = Silence(2, 64), out = in;
        host.effect->processReplacing(host.effect, WritePointers(in).data(),
                                      WritePointers(out).data(), 64);
    }

    FakePlugin& plugin;
    VstHost host;
    VstTimeInfo time{};
};
