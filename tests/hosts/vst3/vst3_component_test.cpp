// SPDX-License-Identifier: GPL-3.0-or-later

// The processor: buses, set-up, and what a block brings and gives back.

#include <cmath>

#include "hosts/vst3/vst3_host.h"

namespace {

constexpr SpeakerArrangement kMono = SpeakerArr::kMono, kStereo = SpeakerArr::kStereo;

}  // namespace

TEST(Vst3Buses, FollowThePins) {
    HostedFake fake(4, 4, true);
    const std::tuple<MediaType, BusDirection, int, const char*, BusType, int> buses[] = {
        {kAudio, kInput, 1, "Sidechain", 1, 2},
        {kAudio, kOutput, 1, "Stereo Out 2", 0, 2},
        {kEvent, kOutput, 0, "Midi Out", 0, 1}};
    for (const auto& [media, direction, index, name, type, channels] : buses) {
        BusInfo info{};
        EXPECT_EQ(kResultOk, fake.host.component->getBusInfo(media, direction, index, info));
        EXPECT_EQ(std::tuple(name, type, channels),
                  std::tuple(Narrow(info.name), info.busType, info.channelCount));
        EXPECT_EQ(media == kAudio ? 2 : 1, fake.host.component->getBusCount(media, direction));
    }
}

// Each against a plug-in that was just made: stereo with a side-chain.
TEST(Vst3Buses, ArrangementsAreTakenWholeOrNotAtAll) {
    struct Case {
        std::vector<SpeakerArrangement> in;
        SpeakerArrangement out;
        std::pair<int, int> connected;  // 0: refused
    };
    Case cases[] = {{{kMono, kStereo}, kMono, {2, 1}},
                    {{}, kMono, {}},
                    {{kMono, SpeakerArr::k51}, kMono, {}},
                    {{kMono, kMono, kMono}, kMono, {}}};
    for (Case& c : cases) {
        HostedFake fake(4, 2);
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
    for (const double rate : {8000.4, 100.0, double{NAN}}) fake.host.Start(rate);
    EXPECT_EQ(8000, fake.plugin.hostSampleRate);
    for (const int block : {-1, 0, 0x7fffffff}) fake.host.Start(48000, block);
    EXPECT_EQ(0.5f, fake.host.Run(0.5f)[1][63]);
    ProcessSetup wide{kRealtime, kSample64, 64, 48000};
    EXPECT_EQ(kResultFalse, fake.host.processor->setupProcessing(wide));
    Block block(64, 0.5f);
    block.data.symbolicSampleSize = kSample64;
    fake.host.Run(block);
    EXPECT_EQ(9, block.out[0][0]);  // left alone
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
