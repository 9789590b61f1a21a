// SPDX-License-Identifier: GPL-3.0-or-later
// What the product adds to the multi-band plug-in: presets, upsampling, the settings of the user.
#include <chrono>
#include <thread>

#include "effect/chorus_entry.h"
#include "foundation/xml/store_visitor.h"
#include "foundation/xml/xml_document.h"
#include "hosts/startup/module_home.h"
#include "hosts/startup/startup.h"
#include "plugin/frame/editor_double.h"
#include "plugin/frame/hammer.h"
#include "plugin/tavrendyne_audio_effect_plugin.h"
#include "support/byte_string.h"

namespace {

// What comes out is not worth hearing.
struct AnyUpsampler : MUpsampler {
    void CheckFactor(int) const override {}
};

struct Product : MTavrendyneAudioEffectPlugin {
    explicit Product(bool upsamples = false, PluginEntry entry = ChorusEntry)
        : upsamples(upsamples) {
        InitLattenkitSubSystems();
        Initialize("Test", "Test", entry);
        AnnounceBlockSize(512);
        SetHostSampleRate(48000);
        InitProcessing();
    }
    std::unique_ptr<MUpsampler> CreateUpsampler() override {
        if (!upsamples) return MTavrendyneAudioEffectPlugin::CreateUpsampler();
        return std::make_unique<AnyUpsampler>();
    }
    void ProcessBlock(float** inputs, float** outputs, int sampleCount) override {
        if (switching) Program(static_cast<std::uint8_t>(processed / 4096));
        processed = (processed + sampleCount) % (9 * 4096);
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
    bool switching = false;  // the audio thread gets program changes
    int processed = 0;       // samples
};

using ProductPlugin = ModuleHome;

constexpr int kDryWet = 0;  // the first of the host's parameters

}  // namespace

TEST_F(ProductPlugin, SwitchesPresetsByProgramChanges) {
    Product plugin, copy;
    plugin.SetParameter(kDryWet, 0.25, false);
    plugin.Program(9);
    ASSERT_TRUE(plugin.Reaches(1));
    plugin.SetParameter(kDryWet, 0.5, false);
    plugin.Program(16);
    ASSERT_TRUE(plugin.Reaches(0));
    EXPECT_EQ(plugin.GetParameter(kDryWet), 0.25);

    MAttribute state;
    EXPECT_TRUE(plugin.Store({true, state}) && copy.Store({false, state}));
    EXPECT_EQ(state.FindSubItem("Preset0"), nullptr) << "it is in use";
    EXPECT_EQ(state.GetSubItem("Preset1").FindSubItem("Preset0"), nullptr) << "no slots in slots";

    EditorDouble factory;  // leaves nothing to do for the thread
    factory.events.Reserve(8);
    factory.made = true;
    copy.editorFactory = &factory;
    MValueInt32 selector(MValueRef(), 0, 0, 7);
    copy.presetSelector = &selector;
    copy.Program(1);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(copy.GetCurrentPreset(), 0);
    factory.events.Process();
    EXPECT_EQ(selector.Get(), 1);
    EXPECT_EQ(copy.GetParameter(kDryWet), 0.5);
}

TEST_F(ProductPlugin, SwitchesWhileAudioRunsAndStatesAreAskedFor) {
    Product plugin;
    plugin.switching = true;
    HammerWhileAudioRuns(plugin, 300);
    plugin.switching = false;
    plugin.RequestPreset(6);
    EXPECT_TRUE(plugin.Reaches(6));
}

TEST_F(ProductPlugin, StoresItsKeysAndTakesWhatStatesLeaveOut) {
    Product plugin(true), plain;
    EXPECT_TRUE(plain.Load("upsampling=2 PresetIndex=3"));
    EXPECT_EQ(plain.Stored(), "1 - 1 0 3 ") << "it has no such upsampler";
    for (const auto& [loaded, stored] : {
             std::pair{"Sinc=0 AGC=1", "1 0 0 1 0 "},  // the older key wins
             {"", "1 - 1 1 0 "},                       // high quality where nothing is told
             {"hqupsampling=0 upsampling=4 AGC=0 PresetIndex=5", "4 0 0 0 5 "},
             {"hqupsampling=0 Sinc=1 upsampling=99 PresetIndex=8", "16 - 1 0 5 "},
             {"upsampling=many PresetIndex=-1", "16 - 1 0 5 "},
         }) {
        EXPECT_TRUE(plugin.Load(loaded));
        EXPECT_EQ(plugin.Stored(), stored) << loaded;
    }
    EXPECT_EQ(plugin.upsamplingValue.GetText().ToUtf8(), "16x");
    EXPECT_EQ(plugin.sampleRate, 768000);
    HostBuffers(2, 2, 100).Process(plugin);
    EXPECT_EQ(plugin.processed, 1600);
}

TEST_F(ProductPlugin, IsThereWithoutParametersWhereItsEffectCannotBeMade) {
    const auto none = [](MPlugin*, int, PluginArguments&) { return std::intptr_t{0}; };
    EXPECT_EQ(Product(false, none).GetParameterCount(), 0);
}

TEST_F(ProductPlugin, IsMadeAsTheUsersSettingsSay) {
    std::filesystem::create_directories(home.path / "quillorea");
    home.SetContent("quillorea/GlobalConfiguration.xml",
                    "<GlobalConfiguration><MAudioPluginSettings SurroundActivated=1 Foreign=1"
                    " DefaultBandCount=3 TabletMode=1/></GlobalConfiguration>");
    Product plugin;
    EXPECT_EQ(plugin.outputChannelNames.size(), 8u);
    EXPECT_EQ(plugin.GetBandCount(), 3);
    const int latency = plugin.GetReportedLatency();
    for (const auto off : {ProductSwitch::TabletMode, ProductSwitch::DryWetAffectsInputPan,
                           ProductSwitch::HighQualitySinc})
        plugin.SetSwitch(off, false);
    EXPECT_NE(plugin.GetReportedLatency(), latency);
    EXPECT_EQ(plugin.GetEditorMode(), MAudioPlugin::EditorMode::Mouse);
    plugin.SetNewBandCount(9);
    ForgetModule();
    Product next;
    EXPECT_EQ(next.GetBandCount(), 6);
    EXPECT_TRUE(next.GetSwitch(ProductSwitch::DryWetAffectsInputPan)) << "each has its own";
    EXPECT_TRUE(plugin.KeepAsDefaultSettings());
    EXPECT_FALSE(Product().GetSwitch(ProductSwitch::DryWetAffectsInputPan));
    const std::string kept = home.Content("quillorea/GlobalConfiguration.xml");
    EXPECT_NE(kept.find("Foreign"), std::string::npos);
}
