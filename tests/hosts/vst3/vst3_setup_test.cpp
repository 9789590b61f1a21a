// SPDX-License-Identifier: GPL-3.0-or-later

// Buses, arrangements, rates and latency, up to the first block.

#include <limits>

#include "hosts/vst3/vst3_host.h"

using Steinberg::int32;
using Vst::SpeakerArrangement;

namespace {

constexpr SpeakerArrangement kMono = Vst::SpeakerArr::kMono, kStereo = Vst::SpeakerArr::kStereo;
constexpr SpeakerArrangement kEight = Vst::SpeakerArr::k71CineFrontHigh;

std::string BusText(Vst::IComponent& component) {
    std::ostringstream text;
    for (const Vst::MediaType media : {Vst::kAudio, Vst::kEvent})
        for (const Vst::BusDirection direction : {Vst::kInput, Vst::kOutput})
            for (int b = 0; b < component.getBusCount(media, direction); ++b) {
                Vst::BusInfo info{};
                EXPECT_EQ(kResultOk, component.getBusInfo(media, direction, b, info));
                text << Narrow(info.name) << (info.busType == Vst::kMain ? " main " : " aux ")
                     << info.channelCount << "; ";
            }
    return text.str();
}

std::unique_ptr<FakePlugin> Surround() {
    auto plugin = std::make_unique<FakePlugin>(8, 8);
    plugin->channelsPerBus = 8;
    return plugin;
}

}  // namespace

TEST(Vst3Buses, FollowThePins) {
    const auto text = [](std::unique_ptr<FakePlugin> plugin) {
        return BusText(*HostedFake(std::move(plugin)).host.component);
    };
    EXPECT_EQ("Stereo In main 2; Stereo Out main 2; ", text(std::make_unique<FakePlugin>()));
    EXPECT_EQ("Stereo In main 2; Sidechain aux 2; Stereo Out 1 main 2; Stereo Out 2 main 2; ",
              text(std::make_unique<FakePlugin>(4, 4)));
    EXPECT_EQ("Stereo Out main 2; ", text(std::make_unique<FakePlugin>(0, 2)));
    EXPECT_EQ("Stereo In main 2; Stereo Out main 2; Midi In main 1; Midi Out main 1; ",
              text(FakePlugin::WithMIDI()));
}

// Each against a plug-in that was just made: stereo, two inputs buses of two or one of eight.
TEST(Vst3Buses, ArrangementsAreTakenWholeOrNotAtAll) {
    struct Case {
        std::vector<SpeakerArrangement> in, out;
        int connectedIn, connectedOut;  // 0: refused
        bool surround = false;
    };
    const Case cases[] = {
        {{kMono}, {kMono}, 1, 1},
        {{kMono, kMono}, {kMono}, 1, 1},
        {{kMono, kStereo}, {kMono}, 2, 1},
        {{kStereo}, {kStereo}, 0, 0},
        {{kMono}, {kStereo}, 0, 0},
        {{}, {kMono}, 0, 0},
        {{kMono}, {kEight}, 0, 0},
        {{kMono, kEight}, {kMono}, 0, 0},
        {{kMono, kMono, kMono}, {kMono}, 0, 0},
        {{kEight}, {kEight}, 8, 8, true},
        {{Vst::SpeakerArr::k51}, {kMono}, 6, 1, true},
        {{kEight | Vst::kSpeakerM}, {kEight}, 0, 0, true},
    };
    for (Case c : cases) {
        HostedFake fake(c.surround ? Surround() : std::make_unique<FakePlugin>(4, 2));
        const bool taken = c.connectedIn != 0;
        EXPECT_EQ(taken ? kResultOk : kResultFalse,
                  fake.host.processor->setBusArrangements(
                      c.in.data(), static_cast<int32>(c.in.size()), c.out.data(),
                      static_cast<int32>(c.out.size())));
        SpeakerArrangement in = 0, out = 0;
        fake.host.processor->getBusArrangement(Vst::kInput, 0, in);
        fake.host.processor->getBusArrangement(Vst::kOutput, 0, out);
        EXPECT_EQ(taken ? c.in[0] : kStereo, in);
        EXPECT_EQ(taken ? c.out[0] : kStereo, out);
        EXPECT_EQ(taken ? c.connectedIn : 2, fake.plugin.connectedInputs);
        EXPECT_EQ(taken ? c.connectedOut : 2, fake.plugin.connectedOutputs);
    }
    HostedFake fake;
    SpeakerArrangement arrangement = kMono;
    EXPECT_EQ(kInvalidArgument,
              fake.host.processor->setBusArrangements(nullptr, 1, &arrangement, 1));
    EXPECT_EQ(kInvalidArgument,
              fake.host.processor->getBusArrangement(Vst::kInput, 1, arrangement));
}

TEST(Vst3Setup, TakesRatesThatCanBe) {
    HostedFake fake;
    const std::pair<double, int> rates[] = {
        {8000, 8000},         {384000, 384000},
        {100, 384000},        {44099.6, 44100},
        {0, 44100},           {-48000, 44100},
        {100.6, 101},         {1e300, 101},
        {1234567.8, 1234568}, {std::numeric_limits<double>::quiet_NaN(), 1234568}};
    for (const auto& [rate, expected] : rates) {
        fake.host.Start(rate);
        EXPECT_EQ(expected, fake.plugin.hostSampleRate) << rate;
    }
    Vst::ProcessSetup wide{Vst::kRealtime, Vst::kSample64, 64, 48000};
    EXPECT_EQ(kResultFalse, fake.host.processor->setupProcessing(wide));
    EXPECT_EQ(1234568, fake.plugin.hostSampleRate);
    EXPECT_EQ(kResultFalse, fake.host.processor->canProcessSampleSize(Vst::kSample64));
    for (const int block : {-1, 0, 1, std::numeric_limits<int>::max()})
        fake.host.Start(48000, block);
    fake.host.Run(0.5f);
}

// A host asks for it behind each activation; in between it has to be told, once.
TEST(Vst3Setup, TellsALatencyThatTheHostDoesNotAskFor) {
    HostedFake fake;
    fake.plugin.latency = 10;
    fake.host.Start();
    EXPECT_EQ("", fake.host.handler.Take());
    EXPECT_EQ(10u, fake.host.processor->getLatencySamples());
    fake.plugin.latency = 30;
    fake.plugin.InitProcessing();
    fake.plugin.InitProcessing();
    EXPECT_EQ("restart 8; ", fake.host.handler.Take());
    EXPECT_EQ(30u, fake.host.processor->getLatencySamples());

    EXPECT_EQ(0u, fake.host.processor->getTailSamples());  // unknown
    fake.plugin.tail = 1000;
    EXPECT_EQ(1000u, fake.host.processor->getTailSamples());
}

TEST(Vst3Life, RunsAnyNumberOfRoundsInAnyOrder) {
    Vst3Host host(MakeChorus());
    const std::string buses = BusText(*host.component);
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(kResultFalse, host.component->initialize(nullptr));
        host.Start();
        host.Start(96000, 64);
        EXPECT_LT(0.1, Peak(host.Run(0.5f, 2048)));
        EXPECT_EQ(kResultOk, host.processor->setProcessing(false));
        EXPECT_EQ(kResultOk, host.component->setActive(false));
        EXPECT_EQ(kResultOk, host.component->terminate());
        EXPECT_EQ(0, host.component->getBusCount(Vst::kAudio, Vst::kInput));
        EXPECT_EQ(0, host.controller->getParameterCount());
        host.Change({{0, 0, 0.5}});  // not a time for it, and no reason to fall over
        EXPECT_EQ(kResultOk, host.component->initialize(nullptr));
        EXPECT_EQ(buses, BusText(*host.component));
    }
}
