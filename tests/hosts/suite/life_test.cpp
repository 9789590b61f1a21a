// SPDX-License-Identifier: GPL-3.0-or-later

// The order of a host's calls, rates, blocks and buffers.

#include <algorithm>
#include <cmath>
#include <random>

#include "hosts/suite/built_plugin.h"

namespace {

const std::string kThreeBands = StateOf("BandCount=\"3\"", "Voices=\"4\"");
// What does not depend on where the voices are, which no new start brings back.
const std::string kDryBands = StateOf("BandCount=\"3\"", "Depth=\"0\"");

std::vector<int> RandomBlockSizes() {
    std::vector<int> sizes = {1, 8192};
    std::minstd_rand draw;
    for (int i = 0; i < 20; ++i) sizes.push_back(1 + static_cast<int>(draw() % 8192u >> i % 12));
    return sizes;
}

using Life = Suite;
FOR_BOTH_INTERFACES(Life);

}  // namespace

// S set up, s at another rate, A activate, D deactivate, P process, L load a state, R arrange.
TEST_P(Life, MayTakeAnyTurn) {
    const Audio input = Noise(2, 3000, 0.25f);
    const Audio expected = BuiltPlugin(GetParam(), kDryBands).Run(input);
    for (const std::string turns : {"", "P", "PSP", "AAPPDD", "sADSAD", "ADADADAD", "APDSAPD",
                                    "SPAPLP", "DDSSRR", "RSRAPD", "LALDLSL", "APLPDRsLAPDPSA"}) {
        SCOPED_TRACE(turns);
        const auto library = OpenBuilt(GetParam());
        BuiltPlugin plugin(*library, {});
        plugin->Activate(false);
        for (const char turn : turns) {
            if (turn == 'S') plugin->Setup(48000, 512);
            if (turn == 's') plugin->Setup(96000, 64);
            if (turn == 'A' || turn == 'D') plugin->Activate(turn == 'A');
            if (turn == 'L') plugin->SetState(kThreeBands);
            if (turn == 'R') plugin->Arrange(1, 1);
            if (turn == 'P') {
                EXPECT_LT(Peak(plugin.Run(input)), 10);
            }
        }
        plugin->SetState(kDryBands);
        plugin->Activate(false);
        plugin->Arrange(2, 2);
        plugin->Setup(48000, BuiltPlugin::kLargestBlock);
        plugin->Activate(true);
        EXPECT_EQ(plugin.Run(input), expected);
    }
}

TEST_P(Life, SoundsTheSameInAnyBlocksAtAnyRate) {
    const std::vector<int> sizes = RandomBlockSizes();
    const Audio input = Noise(2, 24000, 0.25f);
    const double rates[] = {8000, 11025, 22050, 44100, 48000, 88200, 96000, 192000, 384000};
    for (const double rate : rates) {
        BuiltPlugin steady(GetParam(), kThreeBands, rate), random(GetParam(), kThreeBands, rate);
        const Audio expected = steady.Run(input, {1000});
        EXPECT_EQ(random.Run(input, sizes), expected) << rate;
        EXPECT_GT(Peak(expected), 0.01) << rate;
        EXPECT_LT(Peak(expected), 2) << rate;
    }
}

// Of a plug-in that lets the dry sound through, and of one that is bypassed. Mono, since in stereo
// the dry sound comes 9 samples early.
TEST_P(Life, IsAsLateAsItTellsInEveryCrossover) {
    const char* const kinds[] = {"CrossoverMode=\"0\"",
                                 "CrossoverMode=\"1\"",
                                 "CrossoverMode=\"2\"",
                                 "CrossoverMode=\"3\"",
                                 "CrossoverMode=\"4\"",
                                 "CrossoverMode=\"5\"",
                                 "LinearPhaseCrossover=\"1\"",
                                 "LinearPhaseCrossover=\"1\" LinearPhaseCrossoverFixedQ=\"1\""};
    Audio impulse = Silence(1, 6000);
    impulse[0][0] = 0.5f;
    const auto arrival = [](const std::vector<float>& sound, float level) {
        return std::find_if(sound.begin(), sound.end(),
                            [=](float sample) { return std::abs(sample) > level; }) -
               sound.begin();
    };
    for (const std::string kind : kinds) {
        const bool isLinear = kind.starts_with('L');
        for (const std::string bands : {"1", "2", "6"}) {
            SCOPED_TRACE(kind + " " + bands);
            const std::string attributes = kind + " OutputGain=\"0\" BandCount=\"" + bands + '"';
            BuiltPlugin plugin(GetParam(), StateOf(attributes, "Depth=\"0\""));
            plugin->Activate(false);
            EXPECT_TRUE(plugin->Arrange(1, 1));
            plugin->Activate(true);
            EXPECT_EQ(plugin->Latency(), 18 + (isLinear && bands != "1" ? 3072 : 0));
            const Audio late = plugin.Run(impulse);
            // The analog kinds begin there, the others have their centre there.
            EXPECT_EQ(arrival(late[0], isLinear ? 0.4f : 1e-9f), plugin->Latency());
            BuiltPlugin bypassed(GetParam(), StateOf(attributes + " Bypass=\"1\""));
            const Audio passed = bypassed.Run(impulse);
            EXPECT_EQ(arrival(passed[0], 1e-9f), bypassed->Latency());
            EXPECT_EQ(passed[0][bypassed->Latency()], 0.5f);
        }
    }
}

TEST_P(Life, TellsALatencyThatChanges) {
    BuiltPlugin plugin(GetParam(), StateOf("BandCount=\"2\""));
    plugin->TakeNews();
    for (const auto& [linear, latency] : {std::pair{"1", 3090}, {"0", 18}}) {
        plugin->SetState(
            StateOf(std::string("BandCount=\"2\" LinearPhaseCrossover=\"") + linear + '"'));
        EXPECT_EQ(plugin->Latency(), latency);
        EXPECT_TRUE(plugin->TakeNews().latencyChanged) << latency;
    }
    plugin->SetState(StateOf("BandCount=\"2\" LinearPhaseCrossover=\"0\""));
    EXPECT_FALSE(plugin->TakeNews().latencyChanged);
}

TEST_P(Life, IsSilentForSilenceAndBehindItsTail) {
    for (const std::string bands : {"1", "4"}) {
        BuiltPlugin plugin(GetParam(), StateOf("BandCount=\"" + bands + "\"", "Delay=\"0.4\""));
        EXPECT_LT(Peak(plugin.Run(Silence(2, 10000))), 1e-12);
        const auto end = static_cast<int>(plugin->TailLength()) + plugin->Latency();
        Audio burst = Noise(2, 2000, 0.5f);
        for (auto& channel : burst) channel.resize(2000 + end + 2000);
        Audio sound = plugin.Run(burst);
        for (auto& channel : sound) channel.erase(channel.begin(), channel.begin() + 2000);
        EXPECT_GT(Peak({{sound[0].begin() + 48 * 350, sound[0].end()}}), 0.01) << "of a voice";
        EXPECT_LT(Peak({{sound[0].end() - 2000, sound[0].end()}}), 1e-6);
    }
}

TEST_P(Life, BearsBuffersThatAreMissingOrTooMany) {
    Audio in = Noise(2, 256, 0.25f), out = Silence(2, 256);
    auto inputs = WritePointers(in), outputs = WritePointers(out);
    float* halfIn[] = {in[0].data(), nullptr};
    float* halfOut[] = {out[0].data(), nullptr};
    float* none[] = {nullptr, nullptr};
    Audio more = Constant(3, 256, 9);
    auto extra = WritePointers(more);
    const std::vector<HostedBuffers> buses[] = {{},
                                                {{nullptr, 2}},
                                                {{nullptr, 0}},
                                                {{none, 2}},
                                                {{halfIn, 2}},
                                                {{inputs.data(), 1}},
                                                {{inputs.data(), 2}},
                                                {{extra.data(), 3}}};
    BuiltPlugin plugin(GetParam());
    plugin.Run(in);
    HostedBlock widest{.inputs = buses[7], .outputs = buses[7]};
    plugin->Process(widest);  // the host itself makes room
    for (const auto& from : buses) {
        for (std::vector<HostedBuffers> to : buses) {
            for (HostedBuffers& bus : to) {
                if (bus.channels == halfIn) bus.channels = halfOut;
                if (bus.channels == inputs.data()) bus.channels = outputs.data();
            }
            for (const int count : {0, 256}) {
                HostedBlock block{.sampleCount = count, .inputs = from, .outputs = to};
                plugin.Process(block);
            }
            EXPECT_LT(Peak(out), 1);
        }
    }
    if (GetParam() == Interface::Vst3) {
        EXPECT_EQ(Peak({more[2]}), 0) << "nobody else fills it";
    }
    plugin->SetState(kDryBands);
    const Audio input = Noise(2, 3000, 0.25f);
    EXPECT_EQ(plugin.Run(input), BuiltPlugin(GetParam(), kDryBands).Run(input));
}

TEST_P(Life, WorksInPlace) {
    const Audio input = Noise(2, 4096, 0.25f);
    BuiltPlugin plugin(GetParam(), kThreeBands);
    const Audio sound = plugin.Run(input, {512}, [](HostedBlock& block, int) {
        std::swap(block.inputs, block.outputs);
        for (int c = 0; c < 2; ++c)
            std::copy_n(block.outputs[0].channels[c], 512, block.inputs[0].channels[c]);
        block.outputs = block.inputs;
    });
    EXPECT_EQ(sound, BuiltPlugin(GetParam(), kThreeBands).Run(input));
}

TEST_P(Life, BearsEveryTransport) {
    const double bad = std::nan("");
    const HostedTransport transports[] = {
        {},
        {.isPlaying = true, .tempo = 0},
        {.tempo = -120, .position = bad},
        {.isPlaying = true, .tempo = bad, .position = HUGE_VAL, .signature = {{0, 0}}},
        {.isPlaying = true, .tempo = 1e9, .position = -1e12, .barStart = bad},
        {.tempo = 1e-9, .signature = {{-3, 1 << 30}}, .cycle = {{bad, bad}}},
        {true, 90, 7, 4, {{7, 8}}, {{4, 2}}},
    };
    const std::string synchronized = StateOf("BandCount=\"2\"", "sync=\"1\"");
    const Audio input = Noise(2, 2000, 0.25f);
    const Audio expected = BuiltPlugin(GetParam(), synchronized).Run(input);
    for (const HostedTransport& transport : transports) {
        SCOPED_TRACE(&transport - transports);
        BuiltPlugin plugin(GetParam(), synchronized);
        const Audio sound = plugin.Run(
            input, {512}, [&](HostedBlock& block, int) { block.transport = &transport; });
        EXPECT_LT(Peak(sound), 1);
        // Without tempo or position it is as without any.
        if (&transport == transports || transport.barStart == 4) {
            EXPECT_EQ(sound == expected, &transport == transports);
        }
        EXPECT_LT(Peak(plugin.Run(input)), 1) << "and without it again";
    }
}

TEST_P(Life, IsLivedByAHundredAtOnce) {
    constexpr int kCount = 100;
    const Audio input = Noise(2, 512, 0.25f);
    const auto library = OpenBuilt(GetParam());
    const Audio expected = BuiltPlugin(*library, {}).Run(input);
    const std::int64_t before = BytesInUse();
    std::vector<std::unique_ptr<BuiltPlugin>> plugins;
    for (int i = 0; i < kCount; ++i) plugins.push_back(std::make_unique<BuiltPlugin>(*library, ""));
    for (const auto& plugin : plugins) EXPECT_EQ(plugin->Run(input), expected);
    EXPECT_LE(BytesInUse() - before, kCount * std::int64_t{8} << 20);
    plugins.clear();
    EXPECT_LT(BytesInUse() - before, kCount * 1000) << "but what the allocator keeps ready";
}
