// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gmock/gmock.h>
#include <pluginterfaces/vst/ivstunits.h>
#include <public.sdk/source/common/memorystream.h>

#include <sstream>
#include <thread>

#include "foundation/xml/store_visitor.h"
#include "hosting/vst3_objects.h"
#include "hosts/adapter/product_info.h"
#include "hosts/vst3/audio_plugin_vst3_adapter.h"
#include "hosts/vst3/vst3_entry.h"
#include "parameters/effect_parameters.h"
#include "plugin/frame/frame_plugin.h"

using namespace Steinberg;
using namespace Steinberg::Vst;

// With a number, a switch in a section and a stored text.
struct FakePlugin : FramePlugin {
    explicit FakePlugin(int inputPins = 2, int outputPins = 2, bool hasMIDI = false)
        : FramePlugin(static_cast<std::size_t>(inputPins), static_cast<std::size_t>(outputPins)) {
        receivesMIDI = sendsMIDI = hasMIDI;
        toggle.SetBoolean("Toggle", "Toggle", true);
        const AutomationContext context{this, "Band 1", {}, false};
        automation.Add(MakeParameterAdapter<ParameterBaseCustom>(context, toggle, 1));
        RebuildAutomationTable();
    }

    using MAudioPlugin::connectedInputs, MAudioPlugin::connectedOutputs;
    using MAudioPlugin::hostSampleRate;

    void ProcessNotePerform(MIDITime when, int, int, double velocity, bool on) override {
        lastNote = {when.time, when.position, velocity, on};
    }
    void StoreSettings(const MStoreVisitor& visitor) override {
        visitor.Text("Text", text, {});
        visitor.Number("Latency", latency, 0);
    }
    void Process(float** inputs, float** outputs, int sampleCount) override {
        FramePlugin::Process(inputs, outputs, sampleCount);
        onProcess();
    }

    ParameterRecord toggle;
    std::tuple<int, double, double, bool> lastNote;  // samples, quarter notes, velocity, on
    MString text;
    std::function<void()> onProcess = [] {};
};

// Keeps what a plug-in tells, as "begin 0;perform 0 0.5;end 0;".
struct RecordingHandler : HostObject<IComponentHandler, IComponentHandler2> {
    tresult beginEdit(ParamID id) override { return Keep("begin ", id); }
    tresult performEdit(ParamID id, ParamValue value) override {
        onEdit();
        return Keep("perform ", id, " ", value);
    }
    tresult endEdit(ParamID id) override { return Keep("end ", id); }
    tresult restartComponent(int32 flags) override { return Keep("restart ", flags); }
    tresult setDirty(TBool state) override { return Keep("dirty ", +state); }
    tresult requestOpenEditor(FIDString) override { return kResultFalse; }
    tresult startGroupEdit() override { return kResultFalse; }
    tresult finishGroupEdit() override { return kResultFalse; }

    std::string Take() { return std::exchange(log, {}); }
    template <typename... Parts>
    tresult Keep(const Parts&... parts) {
        std::ostringstream line;
        (line << ... << parts) << ";";
        log += line.str();
        return kResultOk;
    }

    std::function<void()> onEdit = [] {};
    std::string log;
};

// A host's stream that gives and takes at most so many bytes a call, and takes none behind a limit.
struct ByteStream : MemoryStream {
    explicit ByteStream(const std::string& bytes = {}, int chunk = 1 << 20, int limit = 1 << 30)
        : chunk(chunk), limit(limit) {
        MemoryStream::write(const_cast<char*>(bytes.data()), static_cast<int32>(bytes.size()),
                            nullptr);
        seek(0, kIBSeekSet, nullptr);
    }
    tresult read(void* buffer, int32 count, int32* done) override {
        const int64 left = limit - cursor;
        if (left <= 0) return kResultFalse;
        return MemoryStream::read(buffer, std::min({count, chunk, static_cast<int32>(left)}), done);
    }
    tresult write(void* buffer, int32 count, int32* done) override {
        if (getSize() + count > limit) return kResultFalse;
        return MemoryStream::write(buffer, std::min(count, chunk), done);
    }
    std::string Bytes() { return {getData(), static_cast<std::size_t>(getSize())}; }

    const int chunk, limit;
};

// A stereo block with nothing else; the output is 9 where nobody writes.
struct Block {
    explicit Block(int sampleCount, float level = 0)
        : in(Constant(2, std::max(sampleCount, 1), level)), out(Constant(2, sampleCount, 9)) {
        inBus.numChannels = outBus.numChannels = 2;
        inBus.channelBuffers32 = ins.data();
        outBus.channelBuffers32 = outs.data();
        data.numSamples = sampleCount;
        data.numInputs = data.numOutputs = 1;
        data.inputs = &inBus;
        data.outputs = &outBus;
    }

    Audio in, out;
    std::vector<float*> ins = WritePointers(in), outs = WritePointers(out);
    AudioBusBuffers inBus, outBus;
    ProcessData data;
};

// A plug-in as the factory makes it, seen through its interfaces alone.
struct Vst3Host {
    explicit Vst3Host(std::unique_ptr<MAudioPlugin> plugin) {
        pending = std::move(plugin);
        const auto factory = owned(GetVST3PluginFactory(kProduct));
        PClassInfo info;
        factory->getClassInfo(0, &info);
        void* made = nullptr;
        EXPECT_EQ(kResultOk, factory->createInstance(info.cid, IComponent::iid, &made));
        component = owned(static_cast<IComponent*>(made));
        processor = component;
        controller = component;
        EXPECT_EQ(kResultOk, component->initialize(nullptr));
        controller->setComponentHandler(&handler);
    }
    ~Vst3Host() { component->terminate(); }

    void Start(double rate = 48000, int block = 512) {
        ProcessSetup setup{kRealtime, kSample32, block, rate};
        EXPECT_EQ(kResultOk, processor->setupProcessing(setup));
        EXPECT_EQ(kResultOk, component->setActive(true));
    }
    void Run(Block& block) { EXPECT_EQ(kResultOk, processor->process(block.data)); }
    Audio Run(float level, int sampleCount = 64) {
        Block block(sampleCount, level);
        Run(block);
        return block.out;
    }
    void Change(const std::vector<HostedChange>& points, int sampleCount = 64) {
        HostParameterChanges changes;
        changes.Fill(points);
        Block block(sampleCount);
        block.data.inputParameterChanges = &changes;
        Run(block);
    }
    std::string State() {
        ByteStream stream;
        EXPECT_EQ(kResultOk, component->getState(&stream));
        return stream.Bytes();
    }
    void Load(const std::string& bytes, int chunk = 1 << 20) {
        ByteStream stream(bytes, chunk);
        EXPECT_EQ(kResultOk, component->setState(&stream));
    }

    RecordingHandler handler;
    IPtr<IComponent> component;
    FUnknownPtr<IAudioProcessor> processor;
    FUnknownPtr<IEditController> controller;

    static inline std::unique_ptr<MAudioPlugin> pending;
    static constexpr ProductInfo kProduct{
        .name = "Product",
        .vendor = "Maker \"&\\ Co",
        .webAddress = "https://maker.invalid",
        .mailAddress = "mailto:nobody@maker.invalid",
        .version = "1.2.3",
        .vst3ClassID = {0x01234567, 0x89abcdef, 0xfedcba98, 0x76543210},
        .create = [] { return std::move(pending); }};
};

// A host and the plug-in in it.
struct HostedFake {
    explicit HostedFake(auto... arguments)
        : HostedFake(std::make_unique<FakePlugin>(arguments...)) {}
    explicit HostedFake(std::unique_ptr<FakePlugin> newPlugin)
        : plugin(*newPlugin), host(std::move(newPlugin)) {}

    FakePlugin& plugin;
    Vst3Host host;
};

inline std::string Narrow(const TChar* text) { return MString(text).ToUtf8(); }
