// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/effect_adapter.h"

#include <gtest/gtest.h>

#include "effect/chorus_driver.h"
#include "plugin/frame/editor_double.h"
#include "plugin/frame/hammer.h"
#include "plugin/frame/meter_sink.h"
#include "plugin/frame/preset_services.h"
#include "plugin/state_text.h"

namespace {

using P = ReferenceSettings;

// An effect of one smoothed parameter that passes its input on and writes down how it is called.
struct ProbeEffect final : MAudioEffectPlugin {
    struct Call {
        int sampleCount, updates;  // updates up to the call
        TransportInfo transport;
        double value;
    };
    inline static void (*configure)(ProbeEffect&);  // the next one

    ProbeEffect() {
        record.SetFloat("Number", "Number", 0, 1, 0.25);
        record.Raise(ParameterFlag::kSmoothed);
        descriptor.parameters = &record;
        descriptor.parameterCount = 1;
        maxBlockSize = 3000;
        calls.reserve(4000);
        configure(*this);
    }
    static std::intptr_t Entry(MPlugin* object, int code, PluginArguments& arguments) {
        if (object == nullptr) return reinterpret_cast<std::intptr_t>(new ProbeEffect);
        return object->Dispatch(code, arguments);
    }
    void Update() override { ++updates; }
    void Load(MAttribute* tree) override {
        if (throwing) throw MException("broken");
        MAudioEffectPlugin::Load(tree);
    }
    void Process(const TransportInfo& transport, const float* const* inputs, float* const* outputs,
                 int count) override {
        calls.push_back({count, updates, transport, record.Effective()});
        for (int c = 0; c < channels; ++c) std::copy_n(inputs[c], count, outputs[c]);
    }

    ParameterRecord record;
    int updates = 0;
    bool throwing = false;
    std::vector<Call> calls;
};

// What stands around a plug-in: meters, presets, a host. Writes down what it is told.
struct Surroundings : MMeterSink, MPresetServices, HostDouble {
    void Feed(int channel, float peak) override { told.push_back(10 * channel + peak); }
    void Update() override { told.push_back(-1); }
    void Resize(int channelCount) override { told.push_back(channelCount); }
    void StepPreset(int steps) override { told.push_back(steps); }
    void InitProcessingActivePresets() override { EXPECT_GE(plugin->processingDisabled, 1); }
    void ActualiseActivePresetsAfterLoading() override { ++loads; }
    void UpdateLatency() override {  // the locks are re-entrant: only another thread can tell
        std::thread([this] {
            MLocker state(plugin->stateLock, 0), process(plugin->processLock, 0);
        }).join();
        told.push_back(plugin->GetReportedLatency());
    }
    std::vector<double> Told() { return std::exchange(told, {}); }

    EditorDouble factory;
    std::vector<double> told;
    int loads = 0;
};

struct Plugin : MAudioEffectPluginToAudioPluginAdapter {
    using MAudioEffectPluginToAudioPluginAdapter::loadedVersion;

    explicit Plugin(const ReferenceSettings& settings) {
        Start(ChorusEntry);
        hqUpsampling = settings.highQuality;
        for (int p = 0; p < P::kCount; ++p) effect->descriptor.parameters[p].Set(settings[p]);
        InitProcessing();
    }
    explicit Plugin(void (*configure)(ProbeEffect&)) {
        ProbeEffect::configure = configure;
        Start(ProbeEffect::Entry);
    }
    void Start(PluginEntry entry) {
        around.plugin = this;
        presets = &around;
        editorFactory = &around.factory;
        around.factory.events.Reserve(8);
        usesHostTime = false;
        Initialize("Test", "Test", entry);
        EXPECT_EQ(effect->descriptor.lock, &processLock);
        AnnounceBlockSize(4096);
        SetHostSampleRate(48000);
        InitProcessing();
    }
    ProbeEffect& Probe() { return static_cast<ProbeEffect&>(*effect); }
    Surroundings around;
};

}  // namespace

TEST(ChorusAsAPlugin, SoundsLikeTheEffectInBlocksOfAnySize) {
    ReferenceSettings settings{.highQuality = true};
    settings[P::kVoices] = 7;
    settings[P::kSpreadMode] = 4;
    const Audio input = Programme(2, 4096, 0.5f);
    Audio guarded = input;
    for (auto& channel : guarded) std::ranges::transform(channel, channel.begin(), WithGuard);
    const Audio expected = ChorusDriver(settings).Rendered(guarded);
    for (const int blockSize : {1000, 1, 7, 64, 333, 4096}) {
        Plugin plugin(settings);
        EXPECT_EQ(RunPlugin(plugin, input, blockSize, blockSize == 64), expected) << blockSize;
    }
}

// Every line and filter holds what is too large for a sample when the output breaks down.
TEST(ChorusAsAPlugin, IsSilencedAndClearedWhenItGoesWrong) {
    ReferenceSettings settings{.highQuality = true};
    settings[P::kMinFrequency] = 2;
    settings[P::kMaxFrequency] = 3.5;
    settings[P::kSpreadMode] = 6;
    Plugin broken(settings), sound(settings);
    const Audio input = Noise(2, 3000, 0.5f);
    RunPlugin(sound, Silence(2, 3000), 3000);
    HostBuffers loud(2, 2, 3000, 3e38f);
    AllocationTrap trap("ProcessAudio");
    loud.Process(broken);
    EXPECT_EQ(trap.Calls(), 0);
    EXPECT_EQ(Peak(loud.out), 0);
    EXPECT_LT(LargestDifference(RunPlugin(broken, input, 500), RunPlugin(sound, input, 500)), 1e-6);
    EXPECT_EQ(broken.GetClearCount(), 1);
    trap.Forgive();
}

TEST(ChorusAsAPlugin, SurvivesChangesOnOtherThreadsAndTellsItsLatencyUnderNoLock) {
    Plugin plugin{ReferenceSettings()};
    plugin.hasEditor = plugin.around.factory.made = true;
    HammerWhileAudioRuns(plugin, 600);
    plugin.around.factory.events.Process();  // presets may have been stepped
    plugin.around.told.clear();
    EXPECT_EQ(plugin.GetClearCount(), 0);
    for (const std::uint8_t highQuality : {0, 1, 1, 0}) {
        plugin.hqUpsampling = highQuality;
        plugin.InitProcessing();
        plugin.hostAdapter = &plugin.around;
    }
    EXPECT_EQ(plugin.around.Told(), (std::vector<double>{18, 0}));
}

TEST(PluginParameters, ReachTheEffectOnceInStepsOfTheProtection) {
    constexpr int kBlock = 3000;
    for (const auto& [asked, steps] :
         {std::pair{5000, 2048}, {256, 256}, {32, 32}, {31, 8}, {0, 1}}) {
        Plugin plugin([](ProbeEffect&) {});
        if (asked != 32) plugin.SetProtection(asked);  // that is what it starts with
        HostBuffers host(2, 2, kBlock);
        const auto& calls = plugin.Probe().calls;
        for (const double value : {0.25, 0.75, 0.75}) {  // the last block stands still
            for (const double now : {0.1, value}) plugin.SetParameter(0, now, false);
            EXPECT_EQ(plugin.Probe().updates, calls.empty() ? 1 : calls.back().updates);
            host.Process(plugin);
        }
        ASSERT_EQ(static_cast<int>(calls.size()), 2 + (kBlock + steps - 1) / steps);
        for (std::size_t k = 1; k < calls.size(); ++k) {
            const double share = static_cast<double>(k - 1) * steps / kBlock;
            ASSERT_NEAR(calls[k].value, k + 1 < calls.size() ? 0.25 + 0.5 * share : 0.75, 1e-12);
            ASSERT_EQ(calls[k].updates, calls[k - 1].updates + 1);
        }
        const std::size_t before = calls.size();
        plugin.SetParameter(0, 0.25, false);
        HostBuffers(2, 2, 1).Process(plugin);
        host.Process(plugin);
        EXPECT_EQ(calls.size(), before + 2) << "a short block jumps, once and for all";
    }
}

TEST(PluginBlocks, AreNoLargerThanTheEffectTakesAndCarryTheTransport) {
    Plugin plugin([](ProbeEffect& probe) {
        probe.descriptor.flags[0] = PluginDescriptor::kUsesHostTime;
        probe.maxBlockSize = 60;
    });
    for (const bool playing : {false, true, false}) {
        plugin.position = 4;
        plugin.playing = playing;
        plugin.tempo = playing ? 90 : 70;
        HostBuffers(2, 2, 100).Process(plugin);
    }
    const double positions[] = {-1, -1, 4, 4 + 60 * 90 / (48000 * 60.0), -1, -1};
    ASSERT_EQ(plugin.Probe().calls.size(), 6u);
    for (std::size_t k = 0; k < 6; ++k) {
        const auto& call = plugin.Probe().calls[k];
        EXPECT_EQ(call.sampleCount, k % 2 == 0 ? 60 : 40);
        EXPECT_NEAR(call.transport.position, positions[k], 1e-12);
        EXPECT_EQ(call.transport.tempo, k < 2 ? -1 : 90);
    }
}

TEST(PluginEditor, IsFedByPresetTriggersAndByItsMetersUntilItIsGone) {
    Plugin plugin([](ProbeEffect& probe) {
        probe.descriptor.inputBusCount = 2;
        probe.descriptor.flags[1] = PluginDescriptor::kMetersInput;
    });
    EXPECT_EQ(plugin.inputChannelNames[2].ToUtf8(), "Sidechain L");
    EXPECT_EQ(plugin.GetParameterName(1).ToUtf8(), "Preset trigger - previous");
    const auto move = [&](int trigger, std::initializer_list<double> positions) {
        for (const double position : positions) {
            HostBuffers host(4, 2, 3);
            for (auto& channel : host.in) channel = {-0.5f, 0.25f, -0.375f};
            host.in[3][1] = 0.75f;
            plugin.SetParameter(trigger, position, false);
            AllocationTrap trap("ProcessAudio");
            host.Process(plugin);
        }
        plugin.around.factory.events.Process();
        return plugin.around.Told();
    };
    using Told = std::vector<double>;
    EXPECT_EQ(move(2, {0.66, 0.67, 1, 0.67, 0.5, 0.8}), Told());  // waits for an editor
    plugin.around.factory.available = true;
    plugin.CreateEditor(nullptr, nullptr);
    EXPECT_EQ(move(1, {0.7, 0, 0.7, 0, 0.7}), Told{2 - 3});
    plugin.around.told.reserve(6);
    plugin.SetMeters({&plugin.around, &plugin.around, &plugin.around});
    plugin.SetMeteredChannels(1, 5);
    // Of a few samples the first counts with its sign.
    EXPECT_EQ(move(2, {0.1}), (Told{0.375, 0.375, 0.75, -1, -1, -1}));
    plugin.DestroyEditor();
    EXPECT_EQ(move(2, {0.1}), Told());
}

TEST(PluginState, MakesAnyPluginSoundTheSame) {
    const Audio input = Programme(2, 4096, 0.5f);
    for (const bool compact : {false, true}) {
        ReferenceSettings settings{.highQuality = compact}, others{.highQuality = !compact};
        settings[P::kVoices] = 7;
        settings[P::kRate] = 0.1 / 3;
        settings[P::kSync] = compact;
        others[P::kDelay] = 0.02;
        Plugin plugin(settings), copy(others);
        plugin.channelModeRequested = compact ? kModeMonoStereo : kModeRight;
        plugin.SetProtection(8);
        plugin.InitProcessing();
        EXPECT_TRUE(LoadState(copy, StoredState(plugin, compact)));
        EXPECT_EQ(StoredState(copy), StoredState(plugin));
        for (int p = 0; p < plugin.GetParameterCount(); ++p)
            EXPECT_EQ(copy.GetParameter(p), plugin.GetParameter(p)) << p;
        EXPECT_EQ(RunPlugin(copy, input, 500), RunPlugin(plugin, input, 500));
    }
}

TEST(PluginState, TellsWhatIsNotStandardAndTakesWhatItFinds) {
    const char* const full =
        R"(<settings Version="393216" ChannelMode="Left + Right" ControllersEnabled="1"
           NoteControllersEnabled="1" Bypass="1" MaxLFOBlockSize="8" Number="0.75" Sinc="1">
           <PreviousNextPresetController Enabled="1" Controller="7" Channel="16"/></settings>)";
    const char* const standard =
        R"(<settings Version="393216" ChannelMode="Left + Right" Sinc="1">
           <PreviousNextPresetController/></settings>)";
    const auto spaceless = [](std::string text) {
        std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
        return text;
    };
    Plugin plugin([](ProbeEffect&) {});
    for (const auto& [loaded, expected, protection, loadedVersion] :
         {std::tuple(full, full, 8, 0x60000),
          {"<foreign Unknown=\"1\"><band0/></foreign>", standard, 256, 0x50300}}) {
        EXPECT_TRUE(LoadState(plugin, loaded));
        EXPECT_EQ(spaceless(StoredState(plugin)), spaceless(expected));
        EXPECT_EQ(plugin.GetProtection(), protection);
        EXPECT_EQ(plugin.loadedVersion, loadedVersion);
    }
    EXPECT_EQ(plugin.around.loads, 2);
    EXPECT_EQ(plugin.Probe().updates, 1 + 2 * 2);
    plugin.Probe().throwing = true;
    EXPECT_FALSE(LoadState(plugin, "<settings Number=\"0.5\" Sinc=\"0\"/>"));
    EXPECT_EQ(spaceless(StoredState(plugin)), spaceless(standard));
    EXPECT_EQ(plugin.processingDisabled, 0);
}

TEST(PluginSetUp, TakesThePinsThatTheUserWants) {
    MAttribute configuration;
    ProbeEffect::configure = [](ProbeEffect&) {};
    for (const bool surround : {true, false}) {
        MAudioEffectPluginToAudioPluginAdapter plugin, next;
        plugin.Initialize("Test", "Test", ProbeEffect::Entry, {.surround = surround});
        plugin.automationCompatibility = surround;
        plugin.SetDefaultSettingsToCurrent(configuration);
        next.Initialize("Test", "Test", ProbeEffect::Entry,
                        {.surround = !surround, .configuration = &configuration});
        EXPECT_EQ(next.outputChannelNames.size(), surround ? 8u : 2u);
        EXPECT_EQ(next.automationCompatibility, surround);
    }
}

TEST(PluginSetUp, LeavesASilentPluginWhereItFails) {
    MAudioEffectPluginToAudioPluginAdapter plugin;
    EXPECT_THROW(plugin.Initialize("Nothing", "Nothing", nullptr), MException);
    plugin.outputChannelNames.resize(2);
    plugin.InitProcessing();
    HostBuffers host(0, 2, 64);
    host.Process(plugin);
    EXPECT_EQ(Peak(host.out), 0);
}
