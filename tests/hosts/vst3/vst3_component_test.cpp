// SPDX-License-Identifier: GPL-3.0-or-later

// The processor: buses, set-up, and what a block brings and gives back.

#include <cmath>

#include "hosts/vst3/vst3_host.h"
#include "support/allocation_trap.h"

namespace {

constexpr SpeakerArrangement kMono = SpeakerArr::kMono, kStereo = SpeakerArr::kStereo;
constexpr SpeakerArrangement kEight = SpeakerArr::k71CineFrontHigh;

}  // namespace

TEST(Vst3Buses, FollowThePins) {
    HostedFake fake(4, 4, true);
    const std::tuple<MediaType, BusDirection, int, const char*, BusType, int> buses[] = {
        {kAudio, kInput, 0, "Stereo In", 0, 2},
        {kAudio, kInput, 1, "Sidechain", 1, 2},
        {kAudio, kOutput, 1, "Stereo Out 2", 0, 2},
        {kEvent, kInput, 0, "Midi In", 0, 1},
        {kEvent, kOutput, 0, "Midi Out", 0, 1}};
    for (const auto& [media, direction, index, name, type, channels] : buses) {
        BusInfo info{};
        EXPECT_EQ(kResultOk, fake.host.component->getBusInfo(media, direction, index, info));
        EXPECT_EQ(std::tuple(name, type, channels),
                  std::tuple(Narrow(info.name), info.busType, info.channelCount));
        EXPECT_EQ(media == kAudio ? 2 : 1, fake.host.component->getBusCount(media, direction));
    }
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
        HostedFake fake(c.channels == 8 ? 8 : 4, c.channels, false, c.channels);
        IAudioProcessor& processor = *fake.host.processor;
        const auto count = static_cast<int32>(c.in.size());
        const bool taken = c.connected.first != 0;
        EXPECT_EQ(!taken, processor.setBusArrangements(c.in.data(), count, &c.out, 1));
        SpeakerArrangement in = 0;
        processor.getBusArrangement(kInput, 0, in);
        EXPECT_EQ(taken ? c.in[0] : kStereo, in);
        EXPECT_EQ(taken ? c.connected : std::pair(2, 2),
                  std::pair(fake.plugin.connectedInputs, fake.plugin.connectedOutputs));
        EXPECT_EQ(kInvalidArgument, processor.setBusArrangements(nullptr, 1, &in, 1));
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
    context.timeSigNumerator = context.timeSigDenominator = 8;
    context.barPositionMusic = 2.98;  // of eighths
    context.cycleEndMusic = 8;
    using Seen = std::tuple<double, double, int, double, double, bool>;
    const Seen none(0, 120, 4, 0, -1, false), all(1, 90, 8, 3, 8, true);
    for (const unsigned valid : {0u, 1u << 1 | 1u << 2 | 15u << 9 | 1u << 13}) {
        context.state = valid;
        Block block(64);
        block.data.processContext = &context;
        fake.host.Run(block);
        EXPECT_EQ(valid == 0 ? none : all,
                  Seen(plugin.position, plugin.tempo, plugin.timeSigNumerator, plugin.barStart,
                       plugin.cycleEnd, plugin.playing));
    }
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
    events[2].type = Event::kPolyPressureEvent, events[2].polyPressure = {2, 61, 1, -1};
    events[3].type = Event::kNoteOnEvent, events[3].noteOn = {4, 60, 0, 0.5f, 0, -1};
    events[4].type = Event::kNoteOffEvent, events[4].noteOff = {4, 60, 0.25f, -1, 0};
    events[5].type = Event::kDataEvent, events[5].data = {1, 0, nullptr};
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
    EXPECT_EQ(std::pair(false, 1.0), std::pair(plugin.IsPedalDown(), plugin.Aftertouch(2)));
    EXPECT_EQ(std::tuple(48, 2.002, 0.25, false), plugin.lastNote);  // 1 ms at 120 beats a minute

    ASSERT_EQ(7, out.getEventCount());
    for (int32 i = 0; i < 7; ++i) out.getEvent(i, events[static_cast<std::size_t>(i)]);
    EXPECT_EQ(63, events[6].sampleOffset);  // not behind the block
    EXPECT_EQ(std::tuple(1, 3, 1), std::tuple(events[0].noteOn.velocity, events[1].noteOff.channel,
                                              events[2].polyPressure.pressure));
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

// Twenty buses of three channels where there is one of two.
TEST(Vst3Block, MayHaveTooManyBuffersOrNone) {
    HostedFake fake;
    Audio audio = Constant(5, 64, 0.5f);
    std::vector<float*> in = WritePointers(audio), out(in.begin() + 2, in.end());
    std::vector<AudioBusBuffers> ins(20), outs(20);
    for (auto& bus : ins) bus.numChannels = 2, bus.channelBuffers32 = in.data();
    for (auto& bus : outs) bus.numChannels = 3;
    outs[0].channelBuffers32 = out.data();
    Block block(64);
    block.data.inputs = ins.data();
    block.data.outputs = outs.data();
    block.data.numInputs = block.data.numOutputs = 20;
    fake.host.Run(block);
    EXPECT_EQ(std::tuple(0.5f, 0), std::tuple(audio[3][63], audio[4][0]));  // nobody fills that
    out.assign(3, nullptr);
    fake.host.Run(block);
    block.data.numInputs = block.data.numOutputs = 0;
    fake.host.Run(block);
    Block wide(64, 0.5f);
    wide.data.symbolicSampleSize = kSample64;
    fake.host.Run(wide);
    EXPECT_EQ(9, wide.out[0][0]);  // left alone
}

TEST(Vst3Block, RunsWhileEverythingElseIsCalled) {
    Vst3Host host(MakeChorus());
    host.Start();
    std::atomic<bool> done = false;
    std::thread main([&] {
        for (unsigned i = 0; !done; ++i) {
            host.Load(host.State(), 100);
            host.controller->setParamNormalized(i % 26, host.controller->getParamNormalized(3));
            host.processor->getTailSamples();
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
    main.join();
    EXPECT_LT(0.01, Peak(host.Run(0.5f, 512)));
}
