// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <sstream>

#include "effect/chorus_driver.h"
#include "tools/render_folder.h"

using testing::HasSubstr;

namespace {

class RenderSettings : public RenderFolder {
protected:
    void SetUp() override { WriteSound("in.wav", Tones(0.5, 2)); }

    // Options, with bars between them. Cubic reads, which delay nothing, and no loss of level
    // unless they tell another.
    std::vector<float> With(const std::string& options) {
        Arguments arguments = {"in.wav", "out.wav", "--tail=0", "--quality=normal",
                               "--set=Output gain=0"};
        std::istringstream stream(options);
        for (std::string option; std::getline(stream, option, '|');) arguments.push_back(option);
        return Rendered(arguments, "out.wav").samples;
    }
};

}  // namespace

TEST_F(RenderSettings, MeanTheSameInEverySpelling) {
    const std::vector<std::vector<const char*>> groups = {
        {"", "--set=Voices=2", "--set|spreadmode=panorama", "--set=sync=off", "--channel-mode=7.1",
         "--automate=Depth=0:100% wet, 100% dry", "--bands=1|--crossover=linear",
         "--param=Output gain=0.5", "--set=Band 2 Voices=6"},
        {"--set=spreadmode=Haas (8 ms)", "--set=Spread mode=4", "--set|SPREADMODE=haas(8MS)"},
        {"--set=Depth=1.5", "--set|band 1 dry/wet=+1.5", "--automate=Depth=0:0.75",
         "--set=Depth=0.5|--set=DEPTH=1.5"},
        {"--set=Depth=0", "--randomize=1|--seed=9|--set=Depth=0|--set=Tremolo=0", "--bypass",
         "--set=Dry/wet=0", "--param=Bypass=1"},
        // Behind 3 of the whole, 6 gains, 5 limits, 2 triggers, 6 panoramas, a heading, 4 others.
        {"--set=27=6", "--automate=Voices=0:6", "--set=Voices=1|--automate=27=3:6,4:6",
         "--param=Voices=6", "--param|voices=0.5555555556", "--param=Band 1 - Voices=6",
         "--param=band1voices=6|--vst2", "--param=27=0.5555555556|--vst2"},
        {"--bands=3", "--bands=3|--crossover=24dB/oct|--set=Band limit 1=200 Hz",
         "--bands=3|--param=Band limit 2=2000 Hz"},
        {"--bands=3|--set=Voices=6", "--bands=3|--automate=Voices=0:6|--set=Voices=2",
         "--bands=3|--set=Band 1 Voices=6|--set=Band 2 Voices=6|--set=band3voices=6"},
        {"--bands=3|--set=Band 2 Voices=6", "--bands=3|--param=Band 2 - Voices=6"},
        {"--bands=3|--crossover=linear"},
        {"--bands=3|--crossover=hybrid"},
        {"--bands=3|--crossover=120 dB/oct"},
        {"--set=Spread=0.4", "--set=Spread=40 %", "--automate=Spread=0:0.4"},
        {"--channel-mode=Side", "--channel-mode=stereo", "--channel-mode|s"},
        // The end of the range, 1.3010299956639813, as it is listed.
        {"--set=Rate=1.30103", "--set=rate=1.3010299956639813"},
        {"--tempo=90|--set=sync=on|--set=length=1/8",
         "--tempo=90|--set=Synchronization=yes|--set=synclength__=10"},
        // "8" is the text of index 4 before it is an index.
        {"--tempo=90|--set=sync=on|--set=length=8",
         "--tempo=90|--automate=sync=0:On|--automate=length=0:8"},
        {"--seed=3|--randomize=1", "--randomize|1|--seed|3|--block=64"},
        {"--seed=4|--randomize=1"},
        {"--automate=Depth=0:0,0.1:1"},
        {"--tempo=100|--position=330.25|--set=sync=on"},
        {"--seed=4|--randomize=1|--bands=2", "--bands=2|--randomize=1|--seed=4"},
    };
    std::set<std::vector<float>> sounds;
    for (const auto& spellings : groups) {
        const std::vector<float> sound = With(spellings[0]);
        EXPECT_TRUE(sounds.insert(sound).second) << "sounds like a group before";
        // Positions have 32 bits there.
        const std::vector<float> other = With(std::string("--vst2|") + spellings[0]);
        EXPECT_THAT(other, testing::Pointwise(testing::FloatNear(1e-5F), sound)) << spellings[0];
        for (const char* spelling : spellings) EXPECT_EQ(With(spelling), sound) << spelling;
    }
}

TEST_F(RenderSettings, SoundAsTheEffectDoesAlone) {
    const std::vector<float> in = ReadSound("in.wav").samples;
    Audio input = Silence(2, static_cast<int>(in.size() / 2));
    for (std::size_t i = 0; i < in.size(); ++i) input[i % 2][i / 2] = in[i];
    ReferenceSettings settings{.sampleRate = 44100};
    settings.values[ReferenceSettings::kDryWet] = 0.7;
    const Audio alone = ChorusDriver(settings).Rendered(input);
    const std::vector<float> out = With("--set=Depth=0.7");
    for (std::size_t i = 0; i < in.size(); ++i) ASSERT_EQ(out.at(i), alone[i % 2][i / 2]) << i;
}

TEST_F(RenderSettings, MoveAndHoldAsAutomated) {
    // The wet part comes half a second late; the dry one fades by 2 - Depth, below full scale by
    // 0.6 dB for each of two voices.
    const double full = std::pow(10, -0.06);
    const std::vector<float> in = ReadSound("in.wav").samples;
    const auto faded = With("--block=64|--set=Delay=0.5|--automate=Depth=0.1:0.5,0.2:1,0.2:0.5");
    for (std::size_t i = 0; i < in.size() * 9 / 10; ++i) {
        const double t = static_cast<double>(i / 2) / 44100;
        const double gain = t < 0.1 || t > 0.2 ? 1 : 1 - (t - 0.1) * 10;
        const double tolerance = std::abs(t - 0.2) > 64 / 44100.0 ? 0.005 : 1;  // but for the jump
        ASSERT_NEAR(faded[i], full * gain * in[i], tolerance) << t;
    }
    // The first block from 0.25 s on is the one that starts at frame 22 * 512.
    const std::vector<float> plain = With("");
    const std::vector<float> held = With("--automate=voices=0:2,0.25:6");
    EXPECT_EQ((std::ranges::mismatch(plain, held).in1 - plain.begin()) / 2 / 512, 22);
}

TEST_F(RenderSettings, SplitIntoBandsAsAsked) {
    const std::vector<float> in = ReadSound("in.wav").samples;
    for (const auto& [kind, attribute] : {std::pair{"linear", "LinearPhaseCrossover=\"1\""},
                                          {"hybrid", "LinearPhaseCrossoverFixedQ=\"1\""},
                                          {"48dB/oct", "CrossoverMode=\"2\""}}) {
        const std::string options = "--bands=2|--set=Depth=0|--state-out=state|--crossover=";
        const std::vector<float> out = With(options + kind);
        EXPECT_THAT(Bytes("state"), HasSubstr(attribute));
        // Kernels add up to the input at their latency, but for rounding.
        for (std::size_t i = 0; i < in.size() && kind[0] != '4'; ++i)
            ASSERT_NEAR(out.at(i), in[i], 1e-6) << kind;
    }
}

TEST_F(RenderSettings, LockTheVoicesToASongThatMovesOn) {
    // A cycle for each quarter note: a whole quarter later is the same place, half a one is not.
    const auto at = [&](const std::string& position, const std::string& block) {
        const std::string song = "--tempo=120|--set=sync=on|--set=Length=1 / 4|--position=";
        return SoundData{44100, 2, 0, With(song + position + "|--block=" + block)};
    };
    const SoundData start = at("0", "512");
    EXPECT_LT(LargestDifference(start, at("1", "512")), 1e-5F);
    EXPECT_GT(LargestDifference(start, at("0.5", "512")), 0.05F);
    // Each block is set to the song's place anew: one that stood still would show.
    EXPECT_LT(LargestDifference(start, at("0", "32")), 1e-5F);
}

TEST_F(RenderSettings, AreListedInColumns) {
    const RenderResult result = Render({"--list"});
    for (const char* row :
         {"Index +Name +Identifier +Range +Default\n",
          "2 +Output gain +Output gain +-24 to 24 +-6 = -6.00 dB\n", "15 +Preset trigger - next ",
          "22 +Band 1 Main parameters +a heading\n",
          "25 +Band 1 Range +Band 1 Range +0.0001 to 0.1 +0.01 = 10 ms\n",
          "41 +Band 1 Synchronization +Band 1 sync +on or off +Off\n",
          "44 +Band 1 Phase .*\nThe same again, by index: Band 2 from 45, Band 3 from 68, ",
          "Type: 'Straight', 'Triplets', 'Dotted'\n"})
        EXPECT_THAT(result.out, testing::ContainsRegex(row));
}

TEST_F(RenderSettings, AreCarriedToTheOtherInterface) {
    const std::vector<float> sound = With(
        "--set=Voices=6|--channel-mode=Mid|--protection=extreme|--bands=3|--crossover=hybrid|"
        "--set=Band limit 1=250 Hz|--state-out=state");
    EXPECT_THAT(Bytes("state"), testing::AllOf(HasSubstr("<settings"), HasSubstr("Mono"),
                                               HasSubstr("MaxLFOBlockSize=\"1\"")));
    for (const char* interface : {"--bypass=false", "--vst2"})
        EXPECT_EQ(With(std::string("--state-in=state|") + interface), sound);
    // Without any sound to render, and through the other interface.
    EXPECT_EQ(Render({"--state-in=state", "--vst2", "--state-out=again"}).err, "");
    EXPECT_EQ(Bytes("again"), Bytes("state"));
}

TEST_F(RenderSettings, ArePartOfWhatIsTold) {
    for (const std::string interface : {"--bypass=false", "--vst2"}) {
        const std::string info = Render({"--info", interface}).out;
        for (const char* line : {"Name: +Quillorea\n", "Version: +0?.?1", "Latency: +18 samples\n",
                                 "Tail: +[0-9]+ samples\n", "main audio input, 2 channels\n"})
            EXPECT_THAT(info, testing::ContainsRegex(line)) << interface;
        EXPECT_THAT(Render({"--list-params", interface}).out,
                    testing::ContainsRegex("27 +27 +(Band 1|1Voices).* 0.111111 = 2\n"));
    }
}

TEST_F(RenderSettings, TakePositionsOfAPluginThatIsNotKnown) {
    const std::string other = std::string("--plugin=") + OTHER_PLUGIN;
    for (const char* interface : {"--bypass=false", "--vst2"}) {
        EXPECT_EQ(Render({"--list", other, interface}).out,
                  Render({"--list-params", other, interface}).out);
        // Its dry sound at position 0, without the product's -6 dB.
        EXPECT_EQ(Rendered({"in.wav", "out.wav", "--tail=0", other, interface, "--quality=normal",
                            "--param=1=0"},
                           "out.wav")
                      .samples,
                  ReadSound("in.wav").samples);
    }
}
