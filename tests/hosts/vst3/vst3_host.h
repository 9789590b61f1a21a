// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>
#include <pluginterfaces/base/ibstream.h>

#include <functional>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "effect/chorus_entry.h"
#include "foundation/xml/store_visitor.h"
#include "hosting/vst3_objects.h"
#include "hosts/adapter/product_info.h"
#include "hosts/vst3/audio_plugin_vst3_adapter.h"
#include "hosts/vst3/vst3_entry.h"
#include "plugin/effect_adapter.h"
#include "plugin/frame/frame_plugin.h"

namespace Vst = Steinberg::Vst;
using Steinberg::kInvalidArgument, Steinberg::kResultFalse, Steinberg::kResultOk;

// With a number, a switch in a section and a stored text; it writes down its MIDI.
struct FakePlugin : FramePlugin {
    struct Midi {
        bool operator==(const Midi&) const = default;
        char kind;  // note, bend, pressure, controller or message
        int time;
        double position;
        int channel, number;
        double value;
    };

    explicit FakePlugin(std::size_t inputPins = 2, std::size_t outputPins = 2)
        : FramePlugin(inputPins, outputPins) {
        toggle.SetBoolean("Toggle", "Toggle", true);
        automation.Add(
            MakeParameterAdapter<ParameterBaseCustom>({this, "Band 1", {}, false}, toggle, 1));
        RebuildAutomationTable();
        midi.reserve(1000);
    }
    static std::unique_ptr<FakePlugin> WithMIDI() {
        auto plugin = std::make_unique<FakePlugin>();
        plugin->receivesMIDI = plugin->sendsMIDI = true;
        return plugin;
    }

    using MAudioPlugin::connectedInputs, MAudioPlugin::connectedOutputs;
    using MAudioPlugin::hostSampleRate;

    bool ProcessNote(MIDITime when, int channel, int note, double value, bool on) override {
        return Note({on ? 'N' : 'n', when.time, when.position, channel, note, value});
    }
    bool ProcessPitchBend(MIDITime when, int channel, double value) override {
        return Note({'b', when.time, when.position, channel, 0, value});
    }
    bool ProcessAftertouch(MIDITime when, int channel, int note, double value) override {
        return Note({'p', when.time, when.position, channel, note, value});
    }
    bool ProcessMIDIController(MIDITime when, int channel, int controller, double value) override {
        return Note({'c', when.time, when.position, channel, controller, value});
    }
    bool Note(const Midi& event) {
        midi.push_back(event);
        return true;
    }
    void StoreSettings(const MStoreVisitor& visitor) override {
        visitor.Text("Text", text, {});
        visitor.Number("Latency", latency, 0);
    }
    int GetTailLength() override { return tail; }
    void Process(float** inputs, float** outputs, int sampleCount) override {
        FramePlugin::Process(inputs, outputs, sampleCount);
        onProcess();
    }

    ParameterRecord toggle;
    std::vector<Midi> midi;
    MString text;
    int tail = -1;
    std::function<void()> onProcess = [] {};
};

inline std::unique_ptr<MAudioPlugin> MakeChorus() {
    auto plugin = std::make_unique<MAudioEffectPluginToAudioPluginAdapter>();
    plugin->Initialize("Chorus", "Chorus", ChorusEntry);
    return plugin;
}

// Keeps what a plug-in tells, as "begin 0; perform 0 0.5; end 0; ".
class RecordingHandler : public HostObject<Vst::IComponentHandler, Vst::IComponentHandler2> {
public:
    using tresult = Steinberg::tresult;
    tresult PLUGIN_API beginEdit(Vst::ParamID id) override { return Keep("begin", id); }
    tresult PLUGIN_API performEdit(Vst::ParamID id, Vst::ParamValue value) override {
        onEdit();
        return Keep("perform", id, " ", value);
    }
    tresult PLUGIN_API endEdit(Vst::ParamID id) override { return Keep("end", id); }
    tresult PLUGIN_API restartComponent(Steinberg::int32 flags) override {
        return Keep("restart", flags);
    }
    tresult PLUGIN_API setDirty(Steinberg::TBool state) override { return Keep("dirty", +state); }
    tresult PLUGIN_API requestOpenEditor(Steinberg::FIDString) override { return kResultFalse; }
    tresult PLUGIN_API startGroupEdit() override { return kResultFalse; }
    tresult PLUGIN_API finishGroupEdit() override { return kResultFalse; }

    std::string Take() {
        const std::lock_guard lock(mutex);
        return std::exchange(log, {});
    }

    std::function<void()> onEdit = [] {};

private:
    template <typename... Parts>
    tresult Keep(const char* what, const Parts&... parts) {
        std::ostringstream line;
        line << what << ' ';
        (line << ... << parts);
        const std::lock_guard lock(mutex);
        log += line.str() + "; ";
        return kResultOk;
    }

    std::mutex mutex;
    std::string log;
};

// A host's stream that gives and takes at most so many bytes a call, and none behind a limit.
class ByteStream : public HostObject<Steinberg::IBStream> {
public:
    using tresult = Steinberg::tresult;
    using int32 = Steinberg::int32;
    using int64 = Steinberg::int64;

    explicit ByteStream(std::string newBytes = {}, std::size_t chunk = 1 << 20,
                        std::size_t limit = 1 << 30)
        : bytes(std::move(newBytes)), chunk(chunk), limit(limit) {}

    tresult PLUGIN_API read(void* buffer, int32 count, int32* done) override {
        const std::size_t end = std::min(bytes.size(), limit);
        *done = static_cast<int32>(std::min({chunk, end - at, static_cast<std::size_t>(count)}));
        bytes.copy(static_cast<char*>(buffer), static_cast<std::size_t>(*done), at);
        at += static_cast<std::size_t>(*done);
        return *done > 0 || limit >= bytes.size() ? kResultOk : kResultFalse;
    }
    tresult PLUGIN_API write(void* buffer, int32 count, int32* done) override {
        *done = static_cast<int32>(
            std::min({chunk, limit - bytes.size(), static_cast<std::size_t>(count)}));
        bytes.append(static_cast<char*>(buffer), static_cast<std::size_t>(*done));
        return *done > 0 ? kResultOk : kResultFalse;
    }
    tresult PLUGIN_API seek(int64, int32, int64*) override { return kResultFalse; }
    tresult PLUGIN_API tell(int64*) override { return kResultFalse; }

    std::string bytes;

private:
    const std::size_t chunk, limit;
    std::size_t at = 0;
};

// A plug-in as the factory makes it, seen through its interfaces alone.
struct Vst3Host {
    template <typename Plugin>
    explicit Vst3Host(std::unique_ptr<Plugin> plugin) {
        pending = std::move(plugin);
        const auto factory = Steinberg::owned(GetVST3PluginFactory(Product()));
        Steinberg::PClassInfo info;
        factory->getClassInfo(0, &info);
        Vst::IComponent* made = nullptr;
        factory->createInstance(info.cid, Vst::IComponent::iid, reinterpret_cast<void**>(&made));
        component = Steinberg::owned(made);
        processor = component;
        controller = component;
        EXPECT_EQ(kResultOk, component->initialize(nullptr));
        controller->setComponentHandler(&handler);
    }
    Vst3Host(const Vst3Host&) = delete;
    Vst3Host& operator=(const Vst3Host&) = delete;
    ~Vst3Host() { component->terminate(); }

    static const ProductInfo& Product() {
        static constexpr ProductInfo kProduct{
            .name = "Product",
            .vendor = "Maker \"&\\ Co",
            .webAddress = "https://maker.invalid",
            .mailAddress = "mailto:nobody@maker.invalid",
            .version = "1.2.3",
            .vst3ClassID = {0x01234567, 0x89abcdef, 0xfedcba98, 0x76543210},
            .create = [] { return std::move(pending); }};
        return kProduct;
    }

    void Start(double rate = 48000, int block = 512) {
        Vst::ProcessSetup setup{Vst::kRealtime, Vst::kSample32, block, rate};
        EXPECT_EQ(kResultOk, processor->setupProcessing(setup));
        EXPECT_EQ(kResultOk, component->setActive(true));
        EXPECT_EQ(kResultOk, processor->setProcessing(true));
    }
    // A stereo block of the level, with what data holds besides; what comes out of it.
    Audio Run(float level, int sampleCount = 64, Vst::ProcessData data = {}) {
        Audio in = Constant(2, sampleCount, level), out = Constant(2, sampleCount, 9);
        const auto ins = WritePointers(in), outs = WritePointers(out);
        Vst::AudioBusBuffers inBus, outBus;
        inBus.numChannels = outBus.numChannels = 2;
        inBus.channelBuffers32 = const_cast<float**>(ins.data());
        outBus.channelBuffers32 = const_cast<float**>(outs.data());
        data.numSamples = sampleCount;
        data.numInputs = data.numOutputs = 1;
        data.inputs = &inBus;
        data.outputs = &outBus;
        EXPECT_EQ(kResultOk, processor->process(data));
        return out;
    }
    void Change(std::vector<HostedChange> points, int sampleCount = 64) {
        HostParameterChanges changes;
        for (const HostedChange& point : points) changes.Add(point);
        Vst::ProcessData data;
        data.inputParameterChanges = &changes;
        if (sampleCount > 0) {
            Run(0, sampleCount, data);
        } else {
            EXPECT_EQ(kResultOk, processor->process(data));
        }
    }
    std::string State() {
        ByteStream stream;
        EXPECT_EQ(kResultOk, component->getState(&stream));
        return stream.bytes;
    }
    Steinberg::tresult Load(const std::string& bytes, std::size_t chunk = 1 << 20) {
        ByteStream stream(bytes, chunk);
        return component->setState(&stream);
    }

    RecordingHandler handler;
    Steinberg::IPtr<Vst::IComponent> component;
    Steinberg::FUnknownPtr<Vst::IAudioProcessor> processor;
    Steinberg::FUnknownPtr<Vst::IEditController> controller;

    static inline std::unique_ptr<MAudioPlugin> pending;
};

// A host and the plug-in in it.
struct HostedFake {
    explicit HostedFake(std::unique_ptr<FakePlugin> newPlugin = std::make_unique<FakePlugin>())
        : plugin(*newPlugin), host(std::move(newPlugin)) {}

    FakePlugin& plugin;
    Vst3Host host;
};

inline std::string Narrow(const Vst::TChar* text) { return MString(text).ToUtf8(); }
