// SPDX-License-Identifier: GPL-3.0-or-later

// What a block brings: parameter changes, transport, events, buffers; and what it gives back.

#include <pluginterfaces/vst/ivstmidicontrollers.h>
#include <pluginterfaces/vst/ivstprocesscontext.h>

#include <limits>
#include <thread>

#include "hosts/vst3/vst3_host.h"
#include "support/allocation_trap.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr Vst::ParamID kBypass = 0x7fff;

}  // namespace

TEST(Vst3Changes, ReachTheParameterWithTheirLastPoint) {
    HostedFake fake;
    fake.host.Start();
    fake.host.Change({{0, 0, 0.1}, {0, 20, 0.9}, {0, 63, 0.4}, {1, 5, 0}});
    EXPECT_EQ(0.4, fake.plugin.GetParameter(0));
    EXPECT_EQ(0, fake.plugin.GetParameter(1));
    fake.host.Change({{0, 0, 0.7}}, 0);
    EXPECT_EQ(0.7, fake.plugin.GetParameter(0));
    fake.host.Change({{0, 0, 1e9},
                      {1, 0, kNaN},
                      {2, 0, 0.2},
                      {9999, 0, 0.2},
                      {10130, 0, 0.2},
                      {0xffffffff, 0, 0.2}});
    EXPECT_EQ(1, fake.plugin.GetParameter(0));
    EXPECT_EQ(0, fake.plugin.GetParameter(1));  // no ID is taken for a neighbour's
    fake.host.Change({{kBypass, 0, 1}, {kBypass, 9, 0.5}}, 0);
    EXPECT_EQ(0, fake.plugin.bypassed);
    fake.host.Change({{kBypass, 0, 0.51}});
    EXPECT_EQ(1, fake.plugin.bypassed);
}

TEST(Vst3Changes, OfMappedControllersAreMIDI) {
    HostedFake fake(FakePlugin::WithMIDI());
    fake.host.Start();
    fake.plugin.position = 8;
    fake.host.Change({{10000, 3, 0.25}, {10127, 0, 1}, {10128, 0, 0.5}, {10129, 0, 0.25}}, 0);
    const std::vector<FakePlugin::Midi> expected{{'c', 0, 8, 0, 0, 0.25},
                                                 {'c', 0, 8, 0, 127, 1},
                                                 {'p', 0, 8, 0, -1, 0.5},
                                                 {'b', 0, 8, 0, 0, -0.5}};
    EXPECT_EQ(expected, fake.plugin.midi);
}

TEST(Vst3Transport, TakesWhatTheHostSaysIsValid) {
    HostedFake fake;
    fake.host.Start();
    Vst::ProcessContext context{};
    context.projectTimeMusic = 1;
    context.tempo = 90;
    context.timeSigNumerator = 6;
    context.timeSigDenominator = 8;
    context.barPositionMusic = 2.98;
    context.cycleStartMusic = 4;
    context.cycleEndMusic = 8;
    const auto run = [&](unsigned bits) {
        context.state = bits;
        Vst::ProcessData data;
        data.processContext = &context;
        fake.host.Run(0, 64, data);
        return std::tuple(fake.plugin.position, fake.plugin.tempo, fake.plugin.timeSigNumerator,
                          fake.plugin.barStart, fake.plugin.cycleEnd, fake.plugin.playing);
    };
    using Seen = std::tuple<double, double, int, double, double, bool>;
    EXPECT_EQ(Seen(0, 120, 4, 0, -1, false), run(0));
    EXPECT_EQ(Seen(1, 120, 4, 0, -1, true), run(1u << 9 | 1u << 1));
    EXPECT_EQ(Seen(1, 90, 4, 0, -1, false), run(1u << 10));
    EXPECT_EQ(Seen(1, 90, 6, 3, -1, false), run(1u << 13 | 1u << 11));  // in eighths
    EXPECT_EQ(Seen(1, 90, 6, 3, 8, true), run(1u << 2 | 1u << 1));
    EXPECT_EQ(1, fake.plugin.transportValid[0]);

    fake.plugin.usesHostTime = false;
    context.tempo = 200;
    EXPECT_EQ(Seen(1, 90, 6, 3, 8, true), run(~0u));
}

TEST(Vst3Events, ReachThePluginAndComeFromIt) {
    HostedFake fake(FakePlugin::WithMIDI());
    fake.host.Start();
    fake.plugin.position = 2;
    fake.plugin.tempo = 120;
    HostEventList in, out;
    const auto send = [&](auto fill) {
        Vst::Event event{};
        event.sampleOffset = 48;  // 1 ms, 1/500 of a quarter note
        fill(event);
        in.addEvent(event);
    };
    send([](Vst::Event& e) { e.type = 0, e.noteOn = {3, 60, 0, 0.5f, 0, -1}; });
    send([](Vst::Event& e) { e.type = 1, e.noteOff = {3, 60, 0.25f, -1, 0}; });
    send([](Vst::Event& e) { e.type = 3, e.polyPressure = {2, 61, 1, -1}; });
    send([](Vst::Event& e) { e.type = 65535, e.midiCCOut = {7, 1, 127, 0}; });
    send([](Vst::Event& e) { e.type = 65535, e.midiCCOut = {Vst::kPitchBend, 1, 0, 0}; });
    send([](Vst::Event& e) { e.type = 2, e.data = {1, 0, nullptr}; });
    send([](Vst::Event& e) { e.type = Vst::Event::kChordEvent; });
    const std::uint8_t messages[][3] = {{0x93, 60, 127}, {0x83, 60, 0}, {0xa1, 1, 2},
                                        {0xb2, 7, 8},    {0xc3, 9, 0},  {0xd4, 10, 0},
                                        {0xe5, 11, 12},  {0xf8, 0, 0}};
    fake.plugin.onProcess = [&] {
        for (int i = 0; i < 8; ++i) fake.plugin.GenerateMIDIEvent(i * 30, messages[i]);
    };
    Vst::ProcessData data;
    data.inputEvents = &in;
    data.outputEvents = &out;
    fake.host.Run(0, 64, data);

    const double there = 2.002;
    std::vector<FakePlugin::Midi> expected{{'N', 48, there, 3, 60, 0.5},
                                           {'n', 48, there, 3, 60, 0.25},
                                           {'p', 48, there, 2, 61, 1},
                                           {'c', 48, there, 1, 7, 1},
                                           {'b', 48, there, 1, 0, -1}};
    EXPECT_EQ(expected, fake.plugin.midi);

    const auto sent = [&](int index) {
        Vst::Event event{};
        EXPECT_EQ(kResultOk, out.getEvent(index, event));
        EXPECT_EQ(std::min(index * 30, 63), event.sampleOffset);
        return event;
    };
    ASSERT_EQ(7, out.getEventCount());
    EXPECT_EQ(1, sent(0).noteOn.velocity);
    EXPECT_EQ(3, sent(1).noteOff.channel);
    EXPECT_FLOAT_EQ(2 / 127.0f, sent(2).polyPressure.pressure);
    const int controllers[][4] = {{2, 7, 8, 0}, {3, 130, 9, 0}, {4, 128, 10, 0}, {5, 129, 11, 12}};
    for (int i = 0; i < 4; ++i) {
        const auto& [channel, number, value, value2] = controllers[i];
        const Vst::LegacyMIDICCOutEvent event = sent(3 + i).midiCCOut;
        EXPECT_EQ(std::tuple(channel, number, value, value2),
                  std::tuple(event.channel, event.controlNumber, event.value, event.value2));
    }
}

// An edit in the middle of a block goes out with it: the handler is for the main thread. What the
// host itself has just set does not come back.
TEST(Vst3Events, CarryEditsOfTheAudioThread) {
    HostedFake fake;
    fake.host.Start();
    fake.plugin.onProcess = [&] { fake.plugin.SendAutomation(1, 0.75); };
    HostParameterChanges in, out;
    in.Add({0, 0, 0.5});
    Vst::ProcessData data;
    data.inputParameterChanges = &in;
    data.outputParameterChanges = &out;
    fake.host.Run(0, 64, data);
    ASSERT_EQ(1, out.getParameterCount());
    EXPECT_EQ(1u, out.getParameterData(0)->getParameterId());
    fake.host.Run(0);  // a host that takes none
    EXPECT_EQ("", fake.host.handler.Take());
}

TEST(Vst3Buffers, MayBeShortMissingOrTooMany) {
    HostedFake fake;
    fake.host.Start();
    Audio audio = Constant(12, 64, 0.5f);
    std::vector<float*> channels = WritePointers(audio);
    std::vector<float*> nothing(2, nullptr);
    const auto run = [&](float** in, int inCount, float** out, int outCount, int buses) {
        std::vector<Vst::AudioBusBuffers> ins(static_cast<std::size_t>(buses)), outs = ins;
        for (auto& bus : ins) bus.numChannels = inCount, bus.channelBuffers32 = in;
        for (auto& bus : outs) bus.numChannels = outCount, bus.channelBuffers32 = out;
        Vst::ProcessData data;
        data.numSamples = 64;
        data.numInputs = data.numOutputs = buses;
        data.inputs = ins.data();
        data.outputs = outs.data();
        EXPECT_EQ(kResultOk, fake.host.processor->process(data));
    };
    float** const all = channels.data();
    run(all, 2, all, 2, 1);  // in place
    EXPECT_EQ(0.5f, audio[1][63]);
    run(all, 2, all + 2, 4, 1);
    EXPECT_EQ(0.5f, audio[3][0]);
    EXPECT_EQ(0, audio[4][0]);  // nobody fills it
    run(all, 1, all + 6, 1, 1);
    EXPECT_EQ(0.5f, audio[6][0]);
    run(nullptr, 2, all + 6, 2, 1);
    EXPECT_GE(kDenormalGuard, Peak({audio[6], audio[7]}));
    run(nothing.data(), 2, nothing.data(), 2, 1);
    run(nullptr, 0, nullptr, 0, 0);
    run(all, 12, all, 12, 20);  // more than there can be
    EXPECT_EQ(0, Peak({audio[11]}));

    Vst::ProcessData wide;
    wide.symbolicSampleSize = Vst::kSample64;
    EXPECT_EQ(9, fake.host.Run(0.5f, 64, wide)[0][0]);  // left alone
    fake.plugin.throwing = true;
    fake.host.Run(0.5f);
    fake.plugin.throwing = false;
    EXPECT_EQ(0.5f, fake.host.Run(0.5f)[1][63]);
}

TEST(Vst3Threads, AudioRunsWhileEverythingElseIsCalled) {
    Vst3Host host(MakeChorus());
    host.Start();
    const std::string state = host.State();
    std::atomic<bool> done = false;
    std::thread states([&] {
        while (!done) {
            host.Load(state, 100);
            host.State();
            host.processor->getTailSamples();
        }
    });
    std::thread main([&] {
        for (unsigned i = 0; !done; ++i) {
            host.controller->setParamNormalized(i % 26, 0.5);
            host.controller->getParamNormalized(i % 26);
            host.component->setActive(i % 2 == 0);
            host.processor->getLatencySamples();
        }
    });
    HostParameterChanges changes;
    for (unsigned i = 0; i < 27; ++i) changes.Add({i, 0, 0.3}), changes.Add({i, 9, 0.6});
    HostEventList events;
    Vst::ProcessContext context{};
    Audio in = Noise(2, 512, 0.5f), out = in;
    const auto ins = WritePointers(in), outs = WritePointers(out);
    Vst::AudioBusBuffers inBus, outBus;
    inBus.numChannels = outBus.numChannels = 2;
    inBus.channelBuffers32 = const_cast<float**>(ins.data());
    outBus.channelBuffers32 = const_cast<float**>(outs.data());
    Vst::ProcessData data;
    data.numInputs = data.numOutputs = 1;
    data.inputs = &inBus;
    data.outputs = &outBus;
    data.inputParameterChanges = &changes;
    data.inputEvents = data.outputEvents = &events;
    data.processContext = &context;
    for (int block = 0; block < 300; ++block) {
        data.numSamples = block % 513;
        AllocationTrap trap("process");
        host.processor->process(data);
    }
    done = true;
    states.join();
    main.join();
    EXPECT_LT(0.01, Peak(host.Run(0.5f, 512)));
}
