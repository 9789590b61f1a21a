// SPDX-License-Identifier: GPL-3.0-or-later

// What a host says, call by call.

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <thread>

#include "hosts/adapter/instance_count.h"
#include "hosts/vst2/vst_host.h"
#include "support/rows.h"

namespace {

// The words of a row's left side, one after the other.
struct Words {
    std::string Text() {
        std::string word;
        stream >> word;
        return word;
    }
    double Number() { return std::stod(Text()); }
    int Int() { return std::stoi(Text()); }

    std::istringstream stream;
};

template <typename... Values>
std::string Answer(const Values&... values) {
    std::ostringstream text;
    ((text << values << ' '), ...);
    return text.str().substr(0, text.str().size() - 1);
}

using Section = std::string (*)(HostedFake& fake, Words& row);
const std::map<std::string, Section> kSections = {
    {"opcode",
     [](HostedFake& fake, Words& row) {
         fake.plugin.receivesMIDI = true;
         const int opcode = row.Int(), index = row.Int();
         fake.plugin.tail = row.Int();
         return Answer(fake.host.Call(opcode, index, fake.plugin.tail));
     }},
    {"text",
     [](HostedFake& fake, Words& row) {
         fake.plugin.SetParameter(0, 0.25, true);
         fake.host.Ask(4, "A name of twenty-nine-\u20acuro");
         const int opcode = row.Int(), index = row.Int();
         return fake.host.Text(opcode, index, static_cast<std::size_t>(row.Int()));
     }},
    {"can do",
     [](HostedFake& fake, Words& row) {
         fake.plugin.receivesMIDI = true;
         const VstIntPtr receives = fake.host.Ask(51, row.stream.str());
         std::swap(fake.plugin.receivesMIDI, fake.plugin.sendsMIDI);
         return Answer(receives, fake.host.Ask(51, row.stream.str()));
     }},
    {"rate",
     [](HostedFake& fake, Words& row) {
         fake.host.Call(10, 0, 0, nullptr, static_cast<float>(row.Number()));
         return Answer(fake.plugin.hostSampleRate);
     }},
    {"events",
     [](HostedFake& fake, Words& row) {
         fake.host.abilities = {row.Text()};
         fake.plugin.receivesMIDI = row.Int() != 0;
         fake.host.Call(12, 0, 0);
         fake.host.Call(12, 0, 1);
         return Answer(fake.host.counts[6]);
     }},
    {"arrangement",
     [](HostedFake&, Words& row) {
         const auto pins = static_cast<std::size_t>(row.Int());
         HostedFake fake(std::make_unique<FakePlugin>(pins, pins));
         fake.plugin.channelsPerBus = row.Int();
         fake.plugin.connectedInputs = fake.plugin.connectedOutputs = 9;
         VstSpeakerArrangement input{1, row.Int()}, output{1, row.Int()};
         const auto told = [](VstSpeakerArrangement& side) {
             return side.numChannels == -9 ? nullptr : &side;
         };
         const auto first = reinterpret_cast<VstIntPtr>(told(input));
         const VstIntPtr taken = fake.host.Call(42, 0, first, told(output));
         return Answer(taken, fake.plugin.connectedInputs, fake.plugin.connectedOutputs);
     }},
    {"pin",
     [](HostedFake& fake, Words& row) {
         fake.plugin.inputChannelNames = {"In L", "In R"};
         fake.plugin.outputChannelNames = {"Out L", "Out R"};
         char room[129] = {};
         auto& pin = *reinterpret_cast<VstPinProperties*>(room);
         std::fill_n(room, 128, '#');
         const int opcode = row.Int();
         const VstIntPtr known = fake.host.Call(opcode, row.Int(), 0, room);
         if (known == 0) return Answer(known, room + 124);
         return Answer(known, pin.label, pin.shortLabel, pin.flags, pin.arrangementType,
                       room + 124);
     }},
    {"transport",
     [](HostedFake& fake, Words& row) {
         fake.time.ppqPos = row.Number();
         fake.time.flags = row.Int() << 1;
         fake.RunBlock();
         EXPECT_EQ(fake.time.ppqPos, fake.plugin.position);
         return Answer(fake.plugin.playing, fake.plugin.positionJumped, fake.plugin.playingChanged);
     }},
    {"time",
     [](HostedFake& fake, Words& row) {
         const FakePlugin& plugin = fake.plugin;
         VstTimeInfo& time = fake.time;
         for (double* const field : {&time.ppqPos, &time.tempo, &time.barStartPos,
                                     &time.cycleStartPos, &time.cycleEndPos})
             *field = row.Number();
         time.timeSigNumerator = row.Int();
         time.timeSigDenominator = row.Int();
         fake.RunBlock();
         return Answer(plugin.position, plugin.tempo, plugin.barStart, plugin.cycleStart,
                       plugin.cycleEnd, plugin.timeSigNumerator, plugin.timeSigDenominator);
     }},
};

}  // namespace

TEST(VstEffect, AnswersAsTheTableTells) {
    HostedFake moving;
    ForEachRow(QUILLOREA_VST_CASES, [&](const Row& row) {
        HostedFake fresh;
        Words words{std::istringstream(row.left)};
        const bool moves = row.section == "transport" || row.section == "time";
        EXPECT_EQ(row.right, kSections.at(row.section)(moves ? moving : fresh, words));
    });
}

TEST(VstEffect, TellsWhatItIs) {
    const HostedFake fake;
    const AEffect& effect = *fake.host.effect;
    EXPECT_EQ(1234, effect.version);
    EXPECT_EQ((1 << 4) | (1 << 5), effect.flags);  // replaces, keeps chunks; no editor
    EXPECT_EQ(nullptr, effect.processDoubleReplacing);
    EXPECT_EQ(1, InstanceCount::Get());

    VstPatchInfo info{1, effect.uniqueID, 1, 1};
    EXPECT_EQ(1, fake.host.Call(75, 0, 0, &info));
    info.uniqueID = 7;
    EXPECT_EQ(-1, fake.host.Call(76, 0, 0, &info));

    VstSpeakerArrangement kept{1, 2};
    VstSpeakerArrangement *input = &kept, *output = &kept;
    EXPECT_EQ(0, fake.host.Call(69, 0, reinterpret_cast<VstIntPtr>(&input), &output));
    EXPECT_TRUE(input == nullptr && output == nullptr);
}

TEST(VstEffect, DropsTheEchoOfItsOwnThreadOnlyAndSendsNone) {
    HostedFake fake;
    AEffect* const effect = fake.host.effect;
    fake.host.onAutomate = [&](int index, float value) {
        EXPECT_EQ(0.5f, value);
        effect->setParameter(effect, index, 0.9f);
        EXPECT_EQ(0, effect->getParameter(effect, 0));
        std::thread([&] { effect->setParameter(effect, index, 0.25f); }).join();
    };
    fake.plugin.SendAutomation(0, 0.5);
    fake.plugin.SendAutomation(1, 0.5);
    fake.plugin.Number().changed.Connect<&FakePlugin::SendBack>(&fake.plugin);
    effect->setParameter(effect, 0, 0.75f);  // no news to the host that sets it
    fake.host.Ask(27, "0.25");
    EXPECT_EQ(1, fake.host.counts[0]);
    EXPECT_EQ(0.25f, effect->getParameter(effect, 0));
}

TEST(VstEffect, IsStereoInAnOldHost) {
    auto plugin = std::make_unique<FakePlugin>(16, 16);
    plugin->channelsPerBus = 8;
    plugin->inputChannelNames[9] = "Side 2";
    HostedFake fake(std::move(plugin), 2299);
    EXPECT_EQ(4, fake.host.effect->numInputs);
    EXPECT_EQ(2, fake.host.effect->numOutputs);
    EXPECT_EQ(2, fake.plugin.GetInputBusCount());
    EXPECT_EQ("Side 2", fake.plugin.inputChannelNames[3].ToUtf8());
}
