// SPDX-License-Identifier: GPL-3.0-or-later
// What the product adds to the multi-band plug-in: presets, upsampling, the settings of the user.
#include <atomic>
#include <chrono>
#include <thread>

#include "effect/chorus_entry.h"
#include "foundation/xml/store_visitor.h"
#include "foundation/xml/xml_document.h"
#include "hosts/startup/module_home.h"
#include "hosts/startup/startup.h"
#include "plugin/frame/editor_double.h"
#include "plugin/frame/frame_plugin.h"
#include "plugin/tavrendyne_audio_effect_plugin.h"
#include "support/allocation_trap.h"
#include "support/byte_string.h"

namespace {

// Repeats each sample, and takes every factor-th: any factor will do here.
struct RepeatingUpsampler : MUpsampler {
    void CheckFactor(int) const override {}
    void Up(const float* source, int count) override {
        MUpsampler::Reserve(count);
        for (int i = 0; i < count * factor; ++i) input.Data()[i] = source[i / factor];
    }
    void Down(float* destination, int count, Mode) override {
        for (int i = 0; i < count; ++i) destination[i] = output.Data()[i * factor];
    }
};

struct Product : MTavrendyneAudioEffectPlugin {
    explicit Product(PluginEntry entry = ChorusEntry, bool newUpsamples = false)
        : upsamples(newUpsamples) {
        InitLattenkitSubSystems();
        Initialize("Test", "Test", entry);
        AnnounceBlockSize(512);
        SetHostSampleRate(48000);
        InitProcessing();
    }
    std::unique_ptr<MUpsampler> CreateUpsampler() override {
        if (!upsamples) return MTavrendyneAudioEffectPlugin::CreateUpsampler();
        return std::make_unique<RepeatingUpsampler>();
    }
    void ProcessBlock(float** inputs, float** outputs, int sampleCount) override {
        processed += sampleCount;
        MTavrendyneAudioEffectPlugin::ProcessBlock(inputs, outputs, sampleCount);
    }
    bool Load(const std::string& attributes) {
        ByteString bytes("<settings " + attributes + "/>");
        MXMLDocument document;
        document.Load(bytes);
        return Store({false, document.Root()});
    }
    // The first of the keys that are the product's own.
    std::string Stored() {
        MAttribute root;
        EXPECT_TRUE(Store({true, root}));
        std::string text;
        for (const char* const key : {"upsampling", "hqupsampling", "Sinc", "AGC", "PresetIndex"})
            text += root.GetAttribute(key, "-").ToUtf8() + " ";
        return text;
    }
    void Program(std::uint8_t program) {
        const std::uint8_t bytes[] = {0xc0, program};
        ProcessMIDIEvent(0, bytes);
    }
    bool Reaches(int preset) {
        for (int i = 0; i < 5000 && (GetCurrentPreset() != preset || processingDisabled > 0); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return GetCurrentPreset() == preset;
    }

    const bool upsamples;
    int processed = 0;  // samples
};

using ProductPlugin = ModuleHome;

constexpr int kDryWet = 0;  // the first of the host's parameters

}  // namespace

TEST_F(ProductPlugin, SwitchesPresetsByProgramChanges) {
    Product plugin;
    const double first = 0.25, second = 0.5;
    plugin.SetParameter(kDryWet, first, false);
    plugin.Program(9);
    ASSERT_TRUE(plugin.Reaches(1));
    plugin.SetParameter(kDryWet, second, false);
    plugin.Program(0x80);  // no program
    plugin.Program(16);
    ASSERT_TRUE(plugin.Reaches(0));
    EXPECT_EQ(plugin.GetParameter(kDryWet), first);

    MAttribute state;
    EXPECT_TRUE(plugin.Store({true, state}));
    EXPECT_EQ(state.FindSubItem("Preset0"), nullptr) << "it is in use";
    EXPECT_EQ(state.GetSubItem("Preset1").FindSubItem("Preset0"), nullptr) << "no slots in slots";
    Product copy;
    EXPECT_TRUE(copy.Store({false, state}));
    copy.Program(1);
    ASSERT_TRUE(copy.Reaches(1));
    EXPECT_EQ(copy.GetParameter(kDryWet), second);
    copy.RequestPreset(-1);
    copy.RequestPreset(8);
    EXPECT_EQ(copy.GetCurrentPreset(), 1);
}

TEST_F(ProductPlugin, LeavesTheSwitchToTheUserInterfaceWhereThereIsOne) {
    EditorDouble factory;
    factory.events.Reserve(8);
    factory.made = true;
    Product plugin;
    plugin.editorFactory = &factory;
    MValueInt32 selector(MValueRef(), 0, 0, 7);
    plugin.presetSelector = &selector;
    {
        AllocationTrap trap("a program change");
        plugin.Program(3);
        plugin.Program(4);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(plugin.GetCurrentPreset(), 0);
    factory.events.Process();
    EXPECT_EQ(plugin.GetCurrentPreset(), 4);
    EXPECT_EQ(selector.Get(), 4);
    plugin.EditorDestroyed();
    plugin.editorFactory = nullptr;
    plugin.Program(5);
    EXPECT_TRUE(plugin.Reaches(5));
}

TEST_F(ProductPlugin, SwitchesWhileAudioRunsAndStatesAreAskedFor) {
    Product plugin;
    std::atomic<bool> done = false;
    std::thread host([&] {
        while (!done) {
            MAttribute state;
            EXPECT_TRUE(plugin.Store({true, state}) && plugin.Store({false, state}));
            plugin.SetParameter(kDryWet, 0.5, false);
        }
    });
    HostBuffers buffers(2, 2, 128);
    for (int block = 0; block < 400; ++block) {
        AllocationTrap trap("the audio thread");
        if (block % 20 == 0) plugin.Program(static_cast<std::uint8_t>(block / 20 % 9));
        buffers.Process(plugin);
        std::this_thread::yield();
    }
    done = true;
    host.join();
    plugin.Program(6);
    EXPECT_TRUE(plugin.Reaches(6));
    EXPECT_EQ(plugin.processingDisabled, 0);
}

TEST_F(ProductPlugin, StoresItsKeysAndTakesWhatStatesLeaveOut) {
    struct {
        const char *loaded, *stored;
    } const rows[] = {
        {"Sinc=0 AGC=1", "1 0 0 1 0 "},  // the older key wins
        {"", "1 - 1 1 0 "},              // high quality where nothing is told
        {"hqupsampling=0 upsampling=4 AGC=0 PresetIndex=5", "4 0 0 0 5 "},
        {"hqupsampling=0 Sinc=1 upsampling=99 PresetIndex=8", "16 - 1 0 5 "},
        {"upsampling=many PresetIndex=-1", "16 - 1 0 5 "},
        {"upsampling=0", "1 - 1 0 5 "},
    };
    Product plugin(ChorusEntry, true);
    for (const auto& [loaded, stored] : rows) {
        EXPECT_TRUE(plugin.Load(loaded));
        EXPECT_EQ(plugin.Stored(), stored) << loaded;
    }
}

TEST_F(ProductPlugin, RunsAtAMultipleOfTheHostsRate) {
    Product plugin(ChorusEntry, true), plain;
    plugin.upsamplingValue.Set(16);
    plugin.OnUpsamplingChange();
    EXPECT_EQ(plugin.upsamplingValue.GetText().ToUtf8(), "16x");
    EXPECT_EQ(plugin.sampleRate, 768000);
    HostBuffers(2, 2, 100).Process(plugin);
    EXPECT_EQ(plugin.processed, 1600);
    plain.upsamplingValue.Set(16);
    plain.OnUpsamplingChange();
    EXPECT_EQ(plain.upsamplingValue.Get(), 1) << "it has no such upsampler";
    EXPECT_TRUE(plain.Load("upsampling=2 PresetIndex=3"));
    EXPECT_EQ(plain.Stored(), "1 - 1 0 3 ");
}

TEST_F(ProductPlugin, IsSilentWhereItsEffectCannotBeMade) {
    Product plugin([](MPlugin*, int, PluginArguments&) { return std::intptr_t{0}; });
    plugin.outputChannelNames.resize(2);
    plugin.InitProcessing();
    HostBuffers host(0, 2, 64);
    host.Process(plugin);
    EXPECT_EQ(Peak(host.out), 0);
    EXPECT_TRUE(plugin.Load("AGC=1"));
}

TEST_F(ProductPlugin, IsMadeAsTheUsersSettingsSay) {
    SetSettings("SurroundActivated=1 DefaultBandCount=3 TabletMode=1 Foreign=1");
    Product plugin;
    EXPECT_EQ(plugin.outputChannelNames.size(), 8u);
    EXPECT_EQ(plugin.GetBandCount(), 3);
    EXPECT_EQ(plugin.GetEditorMode(), MAudioPlugin::EditorMode::Tablet);
    EXPECT_TRUE(plugin.GetSwitch(ProductSwitch::ShowConfirmations));

    plugin.SetSwitch(ProductSwitch::SurroundActivated, false);
    plugin.SetSwitch(ProductSwitch::TabletMode, false);
    plugin.SetSwitch(ProductSwitch::DryWetAffectsInputPan, false);
    plugin.SetNewBandCount(9);
    EXPECT_EQ(plugin.GetEditorMode(), MAudioPlugin::EditorMode::Mouse);
    ForgetModule();
    Product next;
    EXPECT_EQ(next.outputChannelNames.size(), 2u);
    EXPECT_EQ(next.GetBandCount(), 6);
    EXPECT_EQ(next.GetNewBandCount(), 6);
    EXPECT_TRUE(next.GetSwitch(ProductSwitch::DryWetAffectsInputPan)) << "each has its own";

    EXPECT_TRUE(plugin.KeepAsDefaultSettings());
    EXPECT_FALSE(Product().GetSwitch(ProductSwitch::DryWetAffectsInputPan));
    EXPECT_NE(home.Content("config/quillorea/GlobalConfiguration.xml").find("Foreign"),
              std::string::npos);
}

TEST_F(ProductPlugin, TellsTheHostOfNewSettingsThatBelongToTheSong) {
    struct Host : HostDouble {
        void StateChanged() override { ++changes; }
        int changes = 0;
    } host;
    Product plugin;
    host.plugin = &plugin;
    plugin.hostAdapter = &host;
    const int latency = plugin.GetReportedLatency();
    plugin.SetSwitch(ProductSwitch::HighQualitySinc, false);
    EXPECT_FALSE(plugin.GetSwitch(ProductSwitch::HighQualityUpsampling)) << "one flag";
    EXPECT_NE(plugin.GetReportedLatency(), latency);
    plugin.SetChannelMode(kModeRight);
    plugin.SetSurroundChannel(7, false);
    EXPECT_FALSE(plugin.IsSurroundChannelOn(7));
    EXPECT_TRUE(plugin.IsSurroundChannelOn(6) && !plugin.IsSurroundChannelOn(8));
    EXPECT_EQ(host.changes, 3);
    plugin.hostAdapter = nullptr;
}
