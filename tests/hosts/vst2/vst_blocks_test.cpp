// SPDX-License-Identifier: GPL-3.0-or-later

// Blocks with their MIDI, and the state that hosts keep.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "hosts/adapter/state_text.h"
#include "hosts/vst2/vst_host.h"
#include "support/allocation_trap.h"

using testing::ElementsAre;
using Event = FakePlugin::Event;

namespace {

// A host's list of messages. The statuses 0xf0 and 0xf1 stand for entries of other types.
struct EventList {
    EventList(std::initializer_list<Event> told) {
        for (const auto& [time, status] : told) {
            const int type = status < 0xf0 ? 1 : status == 0xf0 ? 6 : 1000;
            std::memcpy(&events[count], &type, sizeof type);
            events[count].deltaFrames = time;
            events[count].midiData[0] = static_cast<unsigned char>(status);
            pointers[count] = &events[count];
            ++count;
        }
    }
    int count = 0;
    VstIntPtr reserved = 0;
    void* pointers[8] = {};
    VstMidiEvent events[8] = {};
};

}  // namespace

TEST(VstBlock, RunsWithoutTheHostsTime) {
    HostedFake fake;
    fake.time.ppqPos = 8;
    for (const bool uses : {true, false}) {
        fake.plugin.usesHostTime = uses;
        fake.RunBlock();
        fake.host.time = nullptr;
        fake.RunBlock();
        EXPECT_EQ(8, fake.plugin.position);
        EXPECT_EQ(2, fake.host.counts[7]);
    }
    EXPECT_THAT(fake.plugin.transportValid, ElementsAre(1, 1));
}

TEST(VstBlock, SpreadsPinsOverBuses) {
    HostedFake fake(std::make_unique<FakePlugin>(4, 4));
    fake.host.Call(12, 0, 1);
    Audio in = Noise(4, 64, 0.5f), out = Constant(4, 64, 0.25f);
    const Audio before = in;
    std::vector<float*> inputs = WritePointers(in), outputs = WritePointers(out);
    fake.host.Process(inputs.data(), outputs.data(), 64, false);
    for (std::size_t c = 0; c < 4; ++c)
        for (std::size_t i = 0; i < 64; ++i) EXPECT_EQ(0.25f + WithGuard(before[c][i]), out[c][i]);

    // A bus that the host does not give is silence; the next one still has its own channels.
    inputs = {nullptr, nullptr, in[2].data(), nullptr};
    fake.host.Process(inputs.data(), outputs.data(), 64);
    EXPECT_GT(1e-14f, Peak({out[0], out[1]}));
    EXPECT_EQ(out[2], out[3]);
    EXPECT_EQ(nullptr, inputs[3]);  // the host's array is the host's

    const Audio kept = out;
    fake.host.Process(inputs.data(), outputs.data(), 0);
    fake.host.Process(inputs.data(), nullptr, 64);
    EXPECT_EQ(kept, out);
    fake.host.Process(nullptr, outputs.data(), 64);
    EXPECT_GT(1e-14f, Peak(out));
}

TEST(VstBlock, HandsReceivedEventsToTheNextBlock) {
    HostedFake fake;
    // Beyond the block means at its end, in front of it at its start.
    EventList list{{64, 0x90}, {1, 0xf0}, {1, 0xf1}, {-1, 0xb0}, {7, 0xc0}};
    list.pointers[list.count++] = nullptr;
    EXPECT_EQ(1, fake.host.Call(25, 0, 0, &list));
    EXPECT_TRUE(fake.plugin.events.empty());
    fake.time.ppqPos = 12;
    fake.RunBlock();
    fake.RunBlock();
    EXPECT_THAT(fake.plugin.events, ElementsAre(Event{63, 0x90}, Event{0, 0xb0}, Event{7, 0xc0}));
    EXPECT_EQ(12, fake.plugin.eventPosition);
}

TEST(VstBlock, SendsGeneratedEventsBehindIt) {
    HostedFake fake;
    std::vector<Event> sent;
    fake.host.onEvents = [&](const VstEvents& list) {
        for (int i = 0; i < list.numEvents; ++i) {
            const auto* const event = reinterpret_cast<const VstMidiEvent*>(list.events[i]);
            EXPECT_EQ(32, event->type * event->byteSize);
            EXPECT_EQ(127, event->midiData[2]);
            sent.push_back({event->deltaFrames, event->midiData[0]});
        }
    };
    fake.RunBlock();
    EXPECT_EQ(0, fake.host.counts[8]);
    fake.plugin.notes = 3;
    fake.RunBlock();
    EXPECT_EQ(1, fake.host.counts[8]);
    EXPECT_THAT(sent, ElementsAre(Event{0, 0x91}, Event{30, 0x91}, Event{60, 0x91}));
    fake.plugin.notes = 5000;  // more than there is room for
    fake.RunBlock();
    EXPECT_EQ(2, fake.host.counts[8]);
    EXPECT_EQ(3 + MIDIQueue::kRoom, static_cast<int>(sent.size()));
}

TEST(VstState, LoadsInAnotherInstance) {
    VstHost first(MakeChorus()), second(MakeChorus());
    const std::string defaults = first.Chunk();
    for (int i = 0; i < first.effect->numParams; ++i)
        first.effect->setParameter(first.effect, i, static_cast<float>(i % 7) / 7);
    const std::string chunk = first.Chunk();
    EXPECT_NE(defaults, chunk);
    EXPECT_EQ(1, second.Load(chunk));
    EXPECT_EQ(chunk, second.Chunk());
    EXPECT_EQ(3.0f / 7, second.effect->getParameter(second.effect, 3));
    EXPECT_EQ(1, second.counts[42]);  // the host reads its values anew
    EXPECT_EQ(1, second.Load(defaults));
    EXPECT_EQ(defaults, second.Chunk());
}

TEST(VstState, IsKeptWhereAChunkIsRefused) {
    VstHost host(MakeChorus());
    for (int i = 0; i < host.effect->numParams; ++i)
        host.effect->setParameter(host.effect, i, 0.375f);
    const std::string kept = host.Chunk();
    std::string other = VstHost(MakeChorus()).Chunk();
    std::vector<std::string> refused;
    for (std::size_t length = 0; length <= other.rfind('>'); ++length)
        refused.push_back(other.substr(0, length));
    refused.emplace_back(100000, '\xff');
    refused.push_back("<settings>" + std::string(std::size_t{kLargestState}, ' ') + "</settings>");
    refused.emplace_back();
    for (int i = 0; i < 100000; ++i) refused.back() += "<settings>";
    for (const std::string& chunk : refused) ASSERT_EQ(0, host.Load(chunk)) << chunk.size();
    for (const VstIntPtr size : {VstIntPtr{1} << 40, VstIntPtr{-1}})
        EXPECT_EQ(0, host.Call(24, 0, size, other.data()));
    EXPECT_EQ(kept, host.Chunk());
    EXPECT_EQ(1, host.Load(other));
}

TEST(VstState, IsNothingWhereThePluginFails) {
    HostedFake fake;
    fake.plugin.throwing = true;
    void* data = &fake;
    EXPECT_EQ(0, fake.host.Call(23, 0, 0, &data));
    EXPECT_EQ(nullptr, data);
    EXPECT_EQ(0, fake.host.Load("<settings/>"));
}

TEST(VstThreads, StateAndParametersMoveWhileAudioRuns) {
    VstHost host(MakeChorus());
    host.Call(11, 0, 512);
    host.Call(12, 0, 1);
    Audio in = Noise(2, 512, 0.5f), out = in;
    auto inputs = WritePointers(in), outputs = WritePointers(out);
    EventList list{{5, 0xb0}};
    std::atomic<bool> done = false;
    std::thread state([&] {
        while (!done) EXPECT_EQ(1, host.Load(host.Chunk()));
    });
    std::thread parameters([&] {
        for (int i = 0; !done; ++i) {
            host.effect->setParameter(host.effect, i % host.effect->numParams, i % 100 / 100.0f);
            host.Text(7, i % host.effect->numParams, 8);
        }
    });
    for (int block = 0; block < 200; ++block) {
        AllocationTrap trap("a block with its events");
        host.Call(25, 0, 0, &list);
        host.Process(inputs.data(), outputs.data(), 512, block % 2 == 0);
    }
    done = true;
    state.join();
    parameters.join();
}
