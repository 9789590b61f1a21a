// SPDX-License-Identifier: GPL-3.0-or-later

// Parameters, their texts, and MIDI.

#include <chrono>
#include <cmath>
#include <thread>

#include "hosts/suite/built_plugin.h"

namespace {

using Parameters = Suite;
FOR_BOTH_INTERFACES(Parameters);

const double kNoNumber = std::nan("");

// What a text means when it is typed, which is its first number in the parameter's smallest unit:
// the text of that. Empty where there is no number.
std::string ReadBack(BuiltPlugin& plugin, std::uint32_t id, double position) {
    std::string text = plugin->TextAt(id, position);
    if (text == "center") return {};
    if (const auto kilo = text.find("kHz"); kilo != std::string::npos) text.erase(kilo, 1);
    if (text.find("% le") != std::string::npos) text = plugin->TextAt(id, 1 - position);
    if (text.starts_with("100% wet")) text = "100% wet, 100% dry";
    return text;
}

}  // namespace

TEST(Vst3Parameters, AreTheSharedOnesThenBypassThenControllers) {
    const auto parameters = OpenBuilt(Interface::Vst3)->Create()->Parameters();
    const std::uint32_t own = ParameterCount();
    ASSERT_EQ(parameters.size(), own + 1 + 130);
    for (std::uint32_t p = 0; p < parameters.size(); ++p) {
        SCOPED_TRACE(p);
        EXPECT_EQ(parameters[p].id, p < own ? p : p == own ? 0x7fff : 10000 + p - own - 1);
        EXPECT_EQ(parameters[p].isBypass, p == own);
        EXPECT_EQ(parameters[p].isHidden, p > own);
        if (p > own) {
            EXPECT_FALSE(parameters[p].isAutomatable);
        }
    }
    EXPECT_EQ(parameters[own].stepCount, 1);
    EXPECT_EQ(parameters.back().defaultPosition, 0.5) << "pitch bend";
    EXPECT_EQ(OpenBuilt(Interface::Vst2)->Create()->Parameters().size(), own);
}

// Points of one block, of which the last one counts; in a block without samples too.
TEST_P(Parameters, MoveToTheLastPointHeldInRange) {
    struct Case {
        std::vector<double> points;
        double expected;
    };
    const Case cases[] = {
        {{0.9, 0.1, 0.3}, 0.3},  {{0, 1}, 1}, {{-1}, 0}, {{2}, 1}, {{1, 0.5, -0.1}, 0},
        {{kNoNumber}, kNoNumber}};
    BuiltPlugin plugin(GetParam()), clean(GetParam());
    Audio sound = Silence(2, 64);
    auto pointers = WritePointers(sound);
    for (std::uint32_t id = 0; id < ParameterCount(); ++id) {
        for (const Case& row : cases) {
            SCOPED_TRACE(testing::Message() << id << " case " << &row - cases);
            HostedBlock block{.sampleCount = id % 2 == 0 ? 64 : 0,
                              .inputs = {{pointers.data(), 2}},
                              .outputs = {{pointers.data(), 2}}};
            for (const double point : row.points)
                block.changes.push_back({id, static_cast<int>(block.changes.size()), point});
            plugin.Process(block);
            if (!std::isnan(row.expected)) clean.Flush({{id, 0, row.expected}});
            ASSERT_EQ(plugin.Positions(), clean.Positions());
        }
    }
    plugin.Flush({{5000, 0, 0.5}, {0x7ffe, 0, 0.5}, {20000, 0, 0.5}, {0xffffffff, 0, 0.5}});
    EXPECT_EQ(plugin.Positions(), clean.Positions()) << "of nobody";
}

// VST 2 shows the start of a text, and reads the whole of it too.
TEST_P(Parameters, HaveTextsThatReadBack) {
    BuiltPlugin plugin(GetParam()), vst3(Interface::Vst3);
    const std::vector<double> before = plugin.Positions();
    for (const HostedParameter& parameter : plugin->Parameters()) {
        const std::uint32_t id = parameter.id;
        if (!parameter.isAutomatable && !parameter.isHidden) continue;  // a heading
        for (const double position : {0.0, 0.25, 1 / 3.0, 0.5, 0.75, 1.0}) {
            SCOPED_TRACE(testing::Message() << id << " at " << position);
            const std::string text = vst3->TextAt(id, position);
            const std::string shown = plugin->TextAt(id, position);
            EXPECT_FALSE(shown.empty());
            EXPECT_TRUE(text.starts_with(shown)) << text;
            const auto read = plugin->PositionOf(id, text);
            EXPECT_EQ(read ? vst3->TextAt(id, *read) : "", ReadBack(vst3, id, position)) << text;
        }
        EXPECT_FALSE(plugin->PositionOf(id, "nothing of the kind")) << id;
    }
    EXPECT_EQ(plugin.Positions(), before) << "as only asked for";
}

// All messages but program changes, broken ones too. So far they move nothing.
TEST_P(Parameters, LetMIDIPassUnheard) {
    const Audio input = Noise(2, 4000, 0.25f);
    const Audio expected = BuiltPlugin(GetParam()).Run(input, {100});
    BuiltPlugin plugin(GetParam());
    const Audio sound = plugin.Run(input, {100}, [](HostedBlock& block, int from) {
        for (int i = 0; i < 32; ++i) {
            const auto byte = [&](int k) { return static_cast<std::uint8_t>(from * 7 + i * k); };
            if ((byte(8) & 0xf0) != 0xc0)
                block.midi.push_back({i * 5, {byte(8), byte(3), byte(5)}});
        }
        block.midi.resize(30, {-5, {0x90, 0xff, 0xff}});
        EXPECT_TRUE(block.sentMidi.empty());
    });
    EXPECT_EQ(sound, expected);
}

// A slot that was never used takes over the settings of the present one. The host's audio goes on
// meanwhile: the worker swaps.
TEST_P(Parameters, AreThoseOfTheProgramThatMIDIAsksFor) {
    BuiltPlugin plugin(GetParam(), StateOf("BandCount=\"2\" InputGain=\"3\""));
    const std::uint32_t gain = IDOf("Input gain");
    const Audio input = Noise(2, 256, 0.25f);
    const auto change = [&](int program) {
        plugin.Run(input, {256}, [&](HostedBlock& block, int) {
            block.midi = {{0, {0xc3, static_cast<std::uint8_t>(program), 0}}};
        });
        const std::string index = "PresetIndex=\"" + std::to_string(program % 8) + '"';
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (plugin->State().find(index) == std::string::npos) {
            ASSERT_LT(std::chrono::steady_clock::now(), end) << program;
            plugin.Run(input);
            std::this_thread::yield();
        }
    };
    change(10);
    plugin.Flush({{gain, 0, 0.25}});
    change(0);
    EXPECT_NEAR(plugin->Position(gain), 27 / 48.0, 1e-6);
    change(2);
    EXPECT_EQ(plugin->Position(gain), 0.25);
    EXPECT_TRUE(plugin->TakeNews().valuesChanged);
    BuiltPlugin other(GetParam(), plugin->State());
    EXPECT_EQ(other.Positions(), plugin.Positions());
    EXPECT_EQ(other->State(), plugin->State());
}
