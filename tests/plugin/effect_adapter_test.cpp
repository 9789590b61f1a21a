// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <thread>

#include "effect/chorus_driver.h"
#include "plugin/adapter_double.h"
#include "plugin/frame/editor_double.h"
#include "plugin/frame/hammer.h"

namespace {

using P = ReferenceSettings;

struct ChorusPlugin : MAudioEffectPluginToAudioPluginAdapter {
    explicit ChorusPlugin(const ReferenceSettings& settings = {}) {
        Initialize("Chorus", "Chorus", ChorusEntry, {.surround = settings.channels > 2});
        hqUpsampling = settings.highQuality;
        channelModeRequested = settings.channels > 2 ? kModeSurround : kModeLeftRight;
        for (int p = 0; p < P::kCount; ++p) effect->descriptor.parameters[p].Set(settings[p]);
        AnnounceBlockSize(4096);
        SetHostSampleRate(settings.sampleRate);
        InitProcessing();
    }
};

// A host that looks whether it is told of a latency while a lock is held.
struct LockWatcher : HostDouble {
    void UpdateLatency() override {
        HostDouble::UpdateLatency();
        std::thread([this] {
            for (MLock* lock : {&plugin->stateLock, &plugin->processLock}) {
                if (lock->Acquire(0) == 0)
                    lock->Release();
                else
                    ADD_FAILURE() << "told under a lock";
            }
        }).join();
    }
};

// One block, with nothing allocated.
void ProcessInPlace(MAudioPlugin& plugin, Audio& audio) {
    ChannelPointers in{};
    std::ranges::copy(WritePointers(audio), in.begin());
    ChannelPointers out = in;
    AllocationTrap trap("ProcessAudio");
    plugin.ProcessAudio(in.data(), out.data(), static_cast<int>(audio[0].size()), true);
}

}  // namespace

TEST(ChorusAsAPlugin, SoundsLikeTheEffectInBlocksOfAnySize) {
    for (const int channels : {2, 8})
        for (const bool highQuality : {false, true}) {
            const auto settings = Settings(channels, 48000, highQuality,
                                           {{P::kVoices, 7}, {P::kSpreadMode, 4}, {P::kSync, 1}});
            const Audio input = Programme(channels, 4096, 0.5f);
            Audio guarded = input;
            for (auto& channel : guarded)
                for (float& sample : channel) sample = WithGuard(sample);
            const Audio expected = ChorusDriver(settings).Rendered(guarded);
            for (const int blockSize : {1000, 1, 7, 64, 333, 4096}) {
                ChorusPlugin plugin(settings);
                EXPECT_EQ(plugin.GetReportedLatency(), highQuality ? 18 : 0);
                EXPECT_EQ(RunPlugin(plugin, input, blockSize, blockSize == 64), expected)
                    << channels << " channels in blocks of " << blockSize;
            }
        }
}

// Every line and filter holds what is too large for a sample when the output breaks down.
TEST(ChorusAsAPlugin, IsSilencedAndClearedWhenItGoesWrong) {
    for (const int channels : {2, 8})
        for (const bool highQuality : {false, true}) {
            const auto settings =
                Settings(channels, 48000, highQuality,
                         {{P::kMinFrequency, 2}, {P::kMaxFrequency, 3.5}, {P::kSpreadMode, 6}});
            ChorusPlugin broken(settings), sound(settings);
            Audio loud = Noise(channels, 3000, 3e38f), silent = Silence(channels, 3000);
            ProcessInPlace(broken, loud);
            ProcessInPlace(sound, silent);
            EXPECT_EQ(broken.GetClearCount(), 1);
            EXPECT_EQ(Peak(loud), 0);
            const Audio input = Noise(channels, 3000, 0.5f);
            EXPECT_LT(
                LargestDifference(RunPlugin(broken, input, 500), RunPlugin(sound, input, 500)),
                1e-6);
            EXPECT_EQ(broken.GetClearCount(), 1);
        }
}

TEST(ChorusAsAPlugin, SurvivesChangesOnOtherThreads) {
    LockWatcher host;
    EditorDouble factory;
    ChorusPlugin plugin;
    host.plugin = &plugin;
    plugin.hostAdapter = &host;
    plugin.editorFactory = &factory;
    plugin.hasEditor = factory.made = true;
    factory.events.Reserve(8);
    HammerWhileAudioRuns(plugin, 600);
    factory.events.Process();
    for (std::size_t i = 1; i < host.latencies.size(); ++i)
        EXPECT_NE(host.latencies[i], host.latencies[i - 1]);
    EXPECT_EQ(plugin.GetClearCount(), 0);
}

TEST(PluginAutomation, ArrivesInStepsOfTheProtection) {
    constexpr int kBlock = 3000;
    EXPECT_EQ(ProbePlugin().GetProtection(), 32);
    for (const auto& [asked, steps] :
         {std::pair{5000, 2048}, {2047, 256}, {32, 32}, {31, 8}, {0, 1}}) {
        ProbePlugin plugin;
        plugin.SetProtection(asked);
        HostBuffers host(2, 2, kBlock);
        for (const double value : {0.25, 0.75, 0.75}) {  // the last block stands still
            plugin.SetParameter(0, value, false);
            host.Process(plugin);
        }
        const auto& calls = plugin.Probe().calls;
        ASSERT_EQ(static_cast<int>(calls.size()), 2 + (kBlock + steps - 1) / steps);
        for (std::size_t k = 1; k + 1 < calls.size(); ++k) {
            ASSERT_NEAR(calls[k].value, 0.25 + 0.5 * static_cast<double>(k - 1) * steps / kBlock,
                        1e-12);
            ASSERT_EQ(calls[k].updates, calls[k - 1].updates + 1);
        }
        EXPECT_EQ(calls.back().value, 0.75);
    }
    EXPECT_EQ(ProtectionText(kProtections[2]).ToUtf8(),
              "<p><b>High protection</b><p>High quality, higher CPU hit.");
}

TEST(PluginParameters, ReachTheEffectOnceBeforeItProcesses) {
    ProbePlugin plugin;
    HostBuffers host(2, 2, 100);
    const int before = plugin.Probe().updates;
    for (const double value : {0.3, 0.4}) plugin.SetParameter(0, value, false);
    EXPECT_EQ(plugin.Probe().updates, before);
    for (int block = 0; block < 2; ++block) host.Process(plugin);
    EXPECT_EQ(plugin.Probe().calls[0].updates, before + 1);
    EXPECT_EQ(plugin.Probe().updates, before + 1);
    PluginArguments index(0);
    plugin.effectHost->Command(PluginCommand::kParameterChanged, index);
    EXPECT_EQ(plugin.Probe().updates, before + 2);
}

TEST(PluginBlocks, AreNoLargerThanTheEffectTakesAndCarryTheTransport) {
    for (const bool asks : {true, false}) {
        ProbePlugin plugin({.flags = {asks ? PluginDescriptor::kUsesHostTime : std::uint8_t{0}, 0},
                            .maxBlockSize = 60});
        HostBuffers host(2, 2, 100);
        for (const bool playing : {false, true, false}) {
            plugin.playing = playing;
            plugin.tempo = playing ? 90 : 70;
            plugin.position = 4;
            plugin.barStart = 2;
            plugin.timeSigNumerator = 3;
            host.Process(plugin);
        }
        const auto& calls = plugin.Probe().calls;
        ASSERT_EQ(calls.size(), 6u);
        for (std::size_t k = 0; k < calls.size(); ++k) {
            const TransportInfo& transport = calls[k].transport;
            const bool plays = asks && k / 2 == 1;
            EXPECT_EQ(calls[k].sampleCount, k % 2 == 0 ? 60 : 40);
            EXPECT_EQ(transport.tempo, asks && k >= 2 ? 90 : -1);
            EXPECT_NEAR(transport.position, plays ? 4 + k % 2 * 60 * 90 / (48000 * 60.0) : -1,
                        1e-12);
            EXPECT_EQ(transport.barStart, plays ? 2 : -1);
            EXPECT_EQ(transport.timeSigNumerator, plays ? 3 : -1);
            EXPECT_EQ(transport.timeSigDenominator, plays ? 4 : -1);
        }
    }
    EXPECT_EQ(ProbePlugin({.maxBlockSize = 0}).GetTailLength(), 0);
}

TEST(PresetTriggers, StepOnceForEachRise) {
    PresetsDouble presets;
    EditorDouble factory;
    ProbePlugin plugin;
    plugin.presets = &presets;
    plugin.editorFactory = &factory;
    factory.available = true;
    factory.events.Reserve(8);
    ASSERT_EQ(plugin.GetHostParameterCount(), 3);
    EXPECT_EQ(plugin.GetParameterName(1).ToUtf8(), "Preset trigger - previous");
    EXPECT_EQ(plugin.GetParameterName(2).ToUtf8(), "Preset trigger - next");
    const auto move = [&](int trigger, std::initializer_list<double> positions) {
        HostBuffers host(2, 2, 10);
        for (const double position : positions) {
            AllocationTrap trap("ProcessAudio");
            plugin.SetParameter(trigger, position, false);
            host.Process(plugin);
        }
    };
    move(2, {0.66, 0.67, 1, 0.67, 0.5, 0.8});  // nobody is there to step: it waits
    plugin.CreateEditor(nullptr, nullptr);
    EXPECT_EQ(presets.steps, std::vector{2});
    move(1, {0.7, 0, 0.7, 0, 0.7});
    factory.events.Process();
    move(2, {0, 0.7});
    factory.events.Process();
    EXPECT_EQ(presets.steps, (std::vector{2, -3, 1}));
    plugin.ActualiseAfterLoading();
    EXPECT_EQ(presets.loads, 1);
}

TEST(PluginSetUp, PreparesTheEffectUnderTheLocksAndItsEditorLater) {
    PresetsDouble presets;
    EditorDouble factory;
    ProbePlugin plugin;
    plugin.presets = &presets;
    plugin.editorFactory = &factory;
    for (const bool hasEditor : {false, true}) {
        plugin.hasEditor = factory.made = hasEditor;
        plugin.Probe().log.clear();
        plugin.Probe().updates = 0;
        plugin.channelModeRequested = hasEditor ? kModeStereo : kModeLeft;
        plugin.SetHostSampleRate(96000);
        for (int repeat = 0; repeat < 2; ++repeat) plugin.InitProcessing();
        EXPECT_EQ(plugin.IsMidSideShown(), hasEditor);
        factory.events.Process();
        EXPECT_EQ(plugin.Probe().log, std::string("prepare 1 96000, 1 updates, reset, "
                                                  "prepare 1 96000, 2 updates, reset, ") +
                                          (hasEditor ? "GUI, " : ""));
    }
    EXPECT_EQ(presets.inits, 4);
    EXPECT_TRUE(plugin.usesHostTime);
    plugin.inputChannelNames.clear();
    EXPECT_EQ(plugin.GetHostInputChannels(), 1);
    EXPECT_EQ(plugin.GetProcessingInputChannels(), 1);
}

TEST(PluginSetUp, NamesAPinForEachChannel) {
    for (const auto& [buses, surround, inputs, outputs] :
         {std::tuple{0, false, "", "Out L,Out R,"},
          {1, false, "In L,In R,", "Out L,Out R,"},
          {2, false, "In L,In R,Sidechain L,Sidechain R,", "Out L,Out R,"},
          {3, false, "In L,In R,Sidechain 1 L,Sidechain 1 R,Sidechain 2 L,Sidechain 2 R,",
           "Out L,Out R,"},
          {1, true, "In 1,In 2,In 3,In 4,In 5,In 6,In 7,In 8,",
           "Out 1,Out 2,Out 3,Out 4,Out 5,Out 6,Out 7,Out 8,"}}) {
        ProbePlugin plugin({.inputBuses = buses}, {.surround = surround});
        const auto joined = [](const std::vector<MString>& names) {
            std::string all;
            for (const MString& name : names) all += name.ToUtf8() + ",";
            return all;
        };
        EXPECT_EQ(joined(plugin.inputChannelNames), inputs);
        EXPECT_EQ(joined(plugin.outputChannelNames), outputs);
        EXPECT_EQ(plugin.GetInputBusCount(), buses);
    }
}

TEST(PluginSetUp, LeavesASilentPluginWhereItFails) {
    for (const auto& [entry, text] :
         {std::pair{PluginEntry{}, "Error creating plugin."},
          {PluginEntry{ProbeEffect::Entry}, "Invalid plugin parameter type."}}) {
        ProbeEffect::wishes = {.type = static_cast<ParameterType>(8)};
        MAudioEffectPluginToAudioPluginAdapter plugin;
        try {
            plugin.Initialize("Probe", "Probe", entry);
            ADD_FAILURE();
        } catch (const MException& raised) {
            EXPECT_STREQ(raised.what(), text);
        }
        plugin.outputChannelNames.resize(2, "Out");
        plugin.InitProcessing();
        HostBuffers host(0, 2, 64);
        host.Process(plugin);
        EXPECT_EQ(Peak(host.out), 0);
        EXPECT_EQ(plugin.GetParameterCount() + plugin.GetLatency() - plugin.GetTailLength(), 1);
    }
}

TEST(PluginMeters, ShowTheChosenChannelsUntilTheEditorIsGone) {
    MeterDouble input, output, sideChain;
    EditorDouble factory;
    ProbePlugin plugin({.inputBuses = 2, .flags = {0, PluginDescriptor::kMetersInput}});
    plugin.editorFactory = &factory;
    factory.available = true;
    plugin.SetMeters({&input, &output, &sideChain});
    plugin.CreateEditor(nullptr, nullptr);
    EXPECT_EQ(output.channels, 2);
    plugin.SetMeteredChannels(1, 5);
    using Peaks = std::vector<std::pair<int, float>>;
    for (const int sampleCount : {3, 4}) {
        HostBuffers host(4, 2, sampleCount);
        for (auto& channel : host.in) channel = {-0.5f, 0.25f, -0.375f, 0.125f};
        host.Process(plugin);
        // Of a few samples the first counts with its sign.
        const Peaks expected = {{0, sampleCount < 4 ? 0.375f : 0.5f}};
        for (MeterDouble* const meter : {&input, &output, &sideChain}) {
            EXPECT_EQ(std::exchange(meter->peaks, {}), expected);
            EXPECT_EQ(std::exchange(meter->updates, 0), 1);
        }
    }
    plugin.DestroyEditor();
    HostBuffers(4, 2, 8).Process(plugin);
    EXPECT_TRUE(input.peaks.empty());
    EXPECT_EQ(input.updates + output.updates + sideChain.updates, 0);
}
