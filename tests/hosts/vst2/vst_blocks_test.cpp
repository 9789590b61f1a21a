// SPDX-License-Identifier: GPL-3.0-or-later

// Blocks with their MIDI, and the state that hosts keep.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hosts/vst2/vst_host.h"

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

TEST(VstBlock, SpreadsPinsOverBuses) {
    HostedFake fake(std::make_unique<FakePlugin>(4, 4));
    fake.host.Call(12, 0, 1);
    Audio in = Noise(4, 64, 0.5f), out = Constant(4, 64, 0.25f);
    const Audio before = in;
    std::vector<float*> inputs = WritePointers(in), outputs = WritePointers(out);
    AEffect* const effect = fake.host.effect;
    effect->process(effect, inputs.data(), outputs.data(), 64);
    for (std::size_t c = 0; c < 4; ++c)
        for (std::size_t i = 0; i < 64; ++i) EXPECT_EQ(0.25f + WithGuard(before[c][i]), out[c][i]);

    // A bus that the host does not give is silence; the next one still has its own channels.
    inputs = {nullptr, nullptr, in[2].data(), nullptr};
    effect->processReplacing(effect, inputs.data(), outputs.data(), 64);
    EXPECT_GT(1e-14f, Peak({out[0], out[1]}));
    EXPECT_EQ(out[2], out[3]);
    EXPECT_EQ(nullptr, inputs[3]);  // the host's array is the host's
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
    fake.plugin.notes = 3;
    fake.RunBlock();
    EXPECT_EQ(1, fake.host.counts[8]);
    EXPECT_THAT(sent, ElementsAre(Event{0, 0x91}, Event{30, 0x91}, Event{60, 0x91}));
    fake.plugin.notes = 5000;  // more than there is room for
    fake.RunBlock();
    EXPECT_EQ(2, fake.host.counts[8]);
    EXPECT_EQ(3 + MIDIQueue::kRoom, static_cast<int>(sent.size()));
}

TEST(VstState, IsNothingWhereThePluginFailsOrTheSizeCannotBe) {
    HostedFake fake;
    void* data = nullptr;
    const VstIntPtr size = fake.host.Call(23, 0, 0, &data);
    for (const auto& [told, taken] :
         {std::pair{size, 1}, {-size, 0}, {size | VstIntPtr{1} << 40, 0}})
        EXPECT_EQ(taken, fake.host.Call(24, 0, told, data));
    fake.plugin.throwing = true;
    EXPECT_EQ(0, fake.host.Call(24, 0, size, data));
    EXPECT_EQ(0, fake.host.Call(23, 0, 0, &data));
    EXPECT_EQ(nullptr, data);
}
