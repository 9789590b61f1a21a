// SPDX-License-Identifier: GPL-3.0-or-later

// The processor: buses, set-up, and what a block brings and gives back.

#include <pluginterfaces/vst/ivstprocesscontext.h>

#include <cmath>

#include "hosts/vst3/vst3_host.h"
#include "support/allocation_trap.h"

namespace {

constexpr SpeakerArrangement kMono = SpeakerArr::kMono, kStereo = SpeakerArr::kStereo;
constexpr SpeakerArrangement kEight = SpeakerArr::k71CineFrontHigh;

std::string BusText(IComponent& component) {
    std::ostringstream text;
    for (const MediaType media : {kAudio, kEvent})
        for (const BusDirection direction : {kInput, kOutput})
            for (int b = 0; b < component.getBusCount(media, direction); ++b) {
                BusInfo info{};
                EXPECT_EQ(kResultOk, component.getBusInfo(media, direction, b, info));
                text << Narrow(info.name) << ' ' << info.busType << ' ' << info.channelCount << ';';
            }
    return text.str();
}

}  // namespace

TEST(Vst3Buses, FollowThePins) {
    EXPECT_EQ("Stereo In 0 2;Stereo Out 0 2;", BusText(*HostedFake(2, 2).host.component));
    EXPECT_EQ("Stereo In 0 2;Sidechain 1 2;Stereo Out 1 0 2;Stereo Out 2 0 2;",
              BusText(*HostedFake(4, 4).host.component));
    EXPECT_EQ("Stereo Out 0 2;Midi In 0 1;Midi Out 0 1;",
              BusText(*HostedFake(0, 2, true).host.component));
}

// Each against a plug-in that was just made: stereo with a side-chain, or one bus of eight.
TEST(Vst3Buses, ArrangementsAreTakenWholeOrNotAtAll) {
    struct Case {
        std::vector<SpeakerArrangement> in;
        SpeakerArrangement out;
        std::pair<int, int> connected;  // 0: refused
        int channels = 2;               // of a bus
    };
    Case cases[] = {{{kMono}, kMono, {1, 1}},
                    {{kMono, kStereo}, kMono, {2, 1}},
                    {{kStereo}, kStereo, {}},
                    {{kMono}, kStereo, {}},
                    {{}, kMono, {}},
                    {{kMono, kEight}, kMono, {}},
                    {{kMono, kMono, kMono}, kMono, {}},
                    {{kEight}, kEight, {8, 8}, 8},
                    {{kEight | kSpeakerM}, kEight, {}, 8}};
    for (Case& c : cases) {
        auto made = std::make_unique<FakePlugin>(c.channels == 8 ? 8 : 4, c.channels);
        made->channelsPerBus = c.channels;
        HostedFake fake(std::move(made));
        IAudioProcessor& processor = *fake.host.processor;
        const auto count = static_cast<int32>(c.in.size());
        const bool taken = c.connected.first != 0;
        EXPECT_EQ(!taken, processor.setBusArrangements(c.in.data(), count, &c.out, 1));
        SpeakerArrangement in = 0, out = 0;
        processor.getBusArrangement(kInput, 0, in);
        processor.getBusArrangement(kOutput, 0, out);
        EXPECT_EQ(taken ? c.in[0] : kStereo, in);
        EXPECT_EQ(taken ? c.out : kStereo, out);
        EXPECT_EQ(taken ? c.connected : std::pair(2, 2),
                  std::pair(fake.plugin.connectedInputs, fake.plugin.connectedOutputs));
        EXPECT_EQ(kInvalidArgument, processor.setBusArrangements(nullptr, 1, &out, 1));
    }
}

TEST(Vst3Setup, TakesRatesAndSizesThatCanBe) {
    HostedFake fake;
    const std::pair<double, int> rates[] = {{384000, 384000}, {100, 384000}, {44099.6, 44100},
                                            {-48000, 44100},  {100.6, 101},  {1e300, 101},
                                            {NAN, 101},       {8000.4, 8000}};
    for (const auto& [rate, expected] : rates) {
        fake.host.Start(rate);
        EXPECT_EQ(expected, fake.plugin.hostSampleRate) << rate;
    }
    ProcessSetup wide{kRealtime, kSample64, 64, 48000};
    EXPECT_EQ(kResultFalse, fake.host.processor->setupProcessing(wide));
    EXPECT_EQ(8000, fake.plugin.hostSampleRate);
    for (const int block : {-1, 0, 0x7fffffff}) fake.host.Start(48000, block);
    EXPECT_EQ(0.5f, fake.host.Run(0.5f)[1][63]);
}

// A host asks for it behind each activation; in between it has to be told, once.
TEST(Vst3Setup, TellsALatencyThatTheHostDoesNotAskFor) {
    HostedFake fake;
    fake.plugin.latency = 10;
    fake.host.Start();
    EXPECT_EQ("", fake.host.handler.Take());
    fake.plugin.latency = 30;
    fake.plugin.InitProcessing();
    fake.plugin.InitProcessing();
    EXPECT_EQ("restart 8;", fake.host.handler.Take());
    EXPECT_EQ(30u, fake.host.processor->getLatencySamples());
    EXPECT_EQ(0u, fake.host.processor->getTailSamples());  // unknown
}

TEST(Vst3Setup, MayBeDoneAgainAndAgain) {
    Vst3Host host(MakeChorus());
    const std::string buses = BusText(*host.component);
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(kResultFalse, host.component->initialize(nullptr));
        host.Start();
        EXPECT_LT(0.1, Peak(host.Run(0.5f, 2048)));
        EXPECT_EQ(kResultOk, host.component->setActive(false));
        EXPECT_EQ(kResultOk, host.component->terminate());
        host.Change({{0, 0, 0.5}});  // not a time for it, and no reason to fall over
        EXPECT_EQ(kResultOk, host.component->initialize(nullptr));
        EXPECT_EQ(buses, BusText(*host.component));
    }
}

TEST(Vst3Block, TakesTheLastPointOfEachParameter) {
    HostedFake fake;
    fake.host.Change({{0, 0, 0.1}, {0, 20, 0.9}, {0, 63, 0.4}, {1, 5, 0}});
    EXPECT_EQ(0.4, fake.plugin.GetParameter(0));
    fake.host.Change({{0, 0, 0.7}}, 0);
    EXPECT_EQ(0.7, fake.plugin.GetParameter(0));
    fake.host.Change({{0, 0, 9}, {1, 0, NAN}, {2, 0, 0.6}, {10130, 0, 0.6}, {0xffffffff, 0, 0.6}});
    EXPECT_EQ(1, fake.plugin.GetParameter(0));
    EXPECT_EQ(0, fake.plugin.GetParameter(1));  // no ID is taken for a neighbour's
    fake.host.Change({{0x7fff, 0, 1}, {0x7fff, 9, 0.5}}, 0);
    EXPECT_EQ(0, fake.plugin.bypassed);
    fake.host.Change({{0x7fff, 0, 0.51}});
    EXPECT_EQ(1, fake.plugin.bypassed);
}

TEST(Vst3Block, TakesTheTransportThatTheHostSaysIsValid) {
    HostedFake fake;
    FakePlugin& plugin = fake.plugin;
    ProcessContext context{};
    context.projectTimeMusic = 1;
    context.tempo = 90;
    context.timeSigNumerator = 6;
    context.timeSigDenominator = 8;
    context.barPositionMusic = 2.98;
    context.cycleEndMusic = 8;
    using Seen = std::tuple<double, double, int, double, double, bool>;
    const auto expect = [&](unsigned bits, const Seen& expected) {
        context.state = bits;
        Block block(64);
        block.data.processContext = &context;
        fake.host.Run(block);
        EXPECT_EQ(expected, Seen(plugin.position, plugin.tempo, plugin.timeSigNumerator,
                                 plugin.barStart, plugin.cycleEnd, plugin.playing));
    };
    expect(0, {0, 120, 4, 0, -1, false});
    expect(1u << 9 | 1u << 1, {1, 120, 4, 0, -1, true});
    expect(1u << 10, {1, 90, 4, 0, -1, false});
    expect(1u << 13 | 1u << 11, {1, 90, 6, 3, -1, false});  // snapped to eighths
    expect(1u << 2 | 1u << 1, {1, 90, 6, 3, 8, true});
    plugin.usesHostTime = false;
    context.tempo = 200;
    expect(~0u, {1, 90, 6, 3, 8, true});
}

TEST(Vst3Block, CarriesMIDIBothWays) {
    HostedFake fake(2, 2, true);
    FakePlugin& plugin = fake.plugin;
    fake.host.Start();
    plugin.position = 2;
    fake.host.Change({{10064, 0, 1}, {10128, 0, 0.5}, {10129, 0, 0.25}}, 0);
    EXPECT_EQ(std::tuple(true, 0.5, -0.5),
              std::tuple(plugin.IsPedalDown(), plugin.Aftertouch(0), plugin.PitchBend(0)));
    std::vector<Event> events(7);
    for (Event& event : events) event.sampleOffset = 48, event.type = Event::kLegacyMIDICCOutEvent;
    events[0].midiCCOut = {64, 1, 0, 0};  // releases the pedal
    events[1].midiCCOut = {129, 1, 0, 0};
    events[2].type = Event::kPolyPressureEvent, events[2].polyPressure = {2, 61, 1, -1};
    events[3].type = Event::kNoteOnEvent, events[3].noteOn = {4, 60, 0, 0.5f, 0, -1};
    events[4].type = Event::kNoteOffEvent, events[4].noteOff = {4, 60, 0.25f, -1, 0};
    events[5].type = Event::kDataEvent, events[5].data = {1, 0, nullptr};
    events[6].type = Event::kChordEvent;
    HostEventList in, out;
    for (Event& event : events) in.addEvent(event);
    const std::uint8_t messages[8][3] = {{0x93, 60, 127}, {0x83, 60, 0}, {0xa1, 1, 127},
                                         {0xb2, 7, 8},    {0xc3, 9, 0},  {0xd4, 10, 0},
                                         {0xe5, 11, 12},  {0xf8, 0, 0}};
    plugin.onProcess = [&] {
        for (int i = 0; i < 8; ++i) plugin.GenerateMIDIEvent(i * 30, messages[i]);
    };
    Block block(64);
    block.data.inputEvents = &in;
    block.data.outputEvents = &out;
    fake.host.Run(block);
    EXPECT_EQ(std::tuple(false, 1.0, -1.0),
              std::tuple(plugin.IsPedalDown(), plugin.Aftertouch(2), plugin.PitchBend(1)));
    EXPECT_EQ(std::tuple(48, 2.002, 0.25, false), plugin.lastNote);  // 1 ms at 120 beats a minute

    ASSERT_EQ(7, out.getEventCount());
    for (int32 i = 0; i < 7; ++i) out.getEvent(i, events[static_cast<std::size_t>(i)]);
    EXPECT_EQ(63, events[6].sampleOffset);  // not behind the block
    EXPECT_EQ(1, events[0].noteOn.velocity);
    EXPECT_EQ(3, events[1].noteOff.channel);
    EXPECT_EQ(1, events[2].polyPressure.pressure);
    const int controllers[][4] = {{2, 7, 8, 0}, {3, 130, 9, 0}, {4, 128, 10, 0}, {5, 129, 11, 12}};
    for (std::size_t i = 0; i < 4; ++i) {
        const auto& [number, channel, value, value2] = events[3 + i].midiCCOut;
        EXPECT_THAT(controllers[i], testing::ElementsAre(channel, number, value, value2));
    }
}

// An edit in the middle of a block goes out with it: the handler is for the main thread.
TEST(Vst3Block, CarriesEditsOfTheAudioThread) {
    HostedFake fake;
    fake.plugin.onProcess = [&] { fake.plugin.SendAutomation(1, 0.75); };
    HostParameterChanges out;
    Block block(64);
    fake.host.Run(block);  // a host that takes none
    block.data.outputParameterChanges = &out;
    fake.host.Run(block);
    ASSERT_EQ(1, out.getParameterCount());
    EXPECT_EQ(1u, out.getParameterData(0)->getParameterId());
    EXPECT_EQ("", fake.host.handler.Take());
}

TEST(Vst3Block, MayHaveTooFewBuffersOrTooMany) {
    HostedFake fake;
    fake.host.Start();
    Audio audio = Constant(12, 64, 0.5f);
    std::vector<float*> channels = WritePointers(audio), nothing(2, nullptr);
    float** const all = channels.data();
    const auto run = [&](float** in, float** out, int count, std::size_t buses = 1) {
        std::vector<AudioBusBuffers> ins(buses), outs(buses);
        for (auto& bus : ins) bus.numChannels = 2, bus.channelBuffers32 = in;
        for (auto& bus : outs) bus.numChannels = count, bus.channelBuffers32 = out;
        Block block(64);
        block.data.numInputs = block.data.numOutputs = static_cast<int32>(buses);
        block.data.inputs = ins.data();
        block.data.outputs = outs.data();
        fake.host.Run(block);
    };
    run(all, all, 2);  // in place
    run(all, all + 2, 3);
    EXPECT_EQ(0.5f, audio[3][63]);
    EXPECT_EQ(0, audio[4][0]);  // nobody fills it
    run(all, all + 6, 1);
    EXPECT_EQ(0.5f, audio[6][0]);
    run(nullptr, all + 6, 2);
    EXPECT_GE(kDenormalGuard, Peak({audio[6], audio[7]}));
    run(nothing.data(), nothing.data(), 2);
    run(nullptr, nullptr, 0, 0);
    run(all, all, 12, 20);
    EXPECT_EQ(0, audio[11][0]);
    Block wide(64, 0.5f);
    wide.data.symbolicSampleSize = kSample64;
    fake.host.Run(wide);
    EXPECT_EQ(9, wide.out[0][0]);  // left alone
}

TEST(Vst3Block, RunsWhileEverythingElseIsCalled) {
    Vst3Host host(MakeChorus());
    host.Start();
    std::atomic<bool> done = false;
    std::thread states([&] {
        while (!done) host.Load(host.State(), 100), host.processor->getTailSamples();
    });
    std::thread main([&] {
        for (unsigned i = 0; !done; ++i) {
            host.controller->setParamNormalized(i % 26, host.controller->getParamNormalized(3));
            host.component->setActive(i % 2 == 0);
        }
    });
    HostParameterChanges changes;
    for (unsigned id = 0; id < 27; ++id) changes.Add({id, 0, 0.3});
    ProcessContext context{};
    Block block(512, 0.5f);
    block.data.inputParameterChanges = &changes;
    block.data.processContext = &context;
    for (int round = 0; round < 300; ++round) {
        block.data.numSamples = round % 513;
        AllocationTrap trap("process");
        host.processor->process(block.data);
    }
    done = true;
    states.join();
    main.join();
    EXPECT_LT(0.01, Peak(host.Run(0.5f, 512)));
}
