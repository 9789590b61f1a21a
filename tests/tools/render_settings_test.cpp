// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>

#include <set>

#include "tools/render_folder.h"

using testing::HasSubstr;

namespace {

class RenderSettings : public RenderFolder {
protected:
    void SetUp() override { WriteSound("in.wav", Tones(0.5, 2)); }

    SoundData With(Arguments arguments) {
        arguments.insert(arguments.begin(), {"in.wav", "out.wav"});
        return Rendered(arguments, "out.wav");
    }
};

}  // namespace

TEST_F(RenderSettings, MeanTheSameInEverySpelling) {
    const std::vector<std::vector<Arguments>> groups = {
        {{}, {"--set=Voices=2"}, {"--set", "spreadmode=panorama"}, {"--set=sync=off"}},
        {{"--set=spreadmode=Haas (8 ms)"},
         {"--set=Spread mode=4"},
         {"--set", "SPREADMODE=haas(8MS)"}},
        {{"--set=Depth=1.5"}, {"--set", "dry/wet=+1.5"}, {"--set=Depth=0.5", "--set=DEPTH=1.5"}},
        // The end of the range, 1.3010299956639813, as it is listed.
        {{"--set=Rate=1.30103"}, {"--set=rate=1.3010299956639813"}},
        {{"--tempo=90", "--set=sync=on", "--set=length=1/8"},
         {"--tempo=90", "--set=Synchronization=1", "--set=synclength__=10"}},
        // "8" is the text of index 4 before it is an index.
        {{"--tempo=90", "--set=sync=on", "--set=length=8"},
         {"--tempo=90", "--set=sync=on", "--set=length=4", "--set=length=8"}},
        {{"--seed=3", "--randomize=1"}, {"--randomize", "1", "--seed", "3", "--block=64"}},
        {{"--seed=4", "--randomize=1"}},
    };
    std::set<std::vector<float>> sounds;
    for (const auto& spellings : groups) {
        const std::vector<float> sound = With(spellings[0]).samples;
        EXPECT_TRUE(sounds.insert(sound).second) << "sounds like a group before";
        for (const Arguments& spelling : spellings)
            EXPECT_EQ(With(spelling).samples, sound) << testing::PrintToString(spelling);
    }
}

TEST_F(RenderSettings, StandFromTheFirstSampleOnAndOverDrawnOnes) {
    const SoundData output =
        With({"--tail=0", "--randomize=1", "--seed=9", "--set=Depth=0", "--set=Tremolo=0"});
    EXPECT_EQ(output.samples, ReadSound("in.wav").samples);
}

TEST_F(RenderSettings, LockTheVoicesToASongThatMovesOn) {
    // A cycle for each quarter note: a whole quarter later is the same place, half a one is not.
    const auto at = [&](const char* position, const char* block) {
        return With({"--tempo=120", "--position", position, "--block", block, "--set=sync=on",
                     "--set=Length=1 / 4"});
    };
    const SoundData start = at("0", "512");
    EXPECT_LT(LargestDifference(start, at("1", "512")), 1e-5F);
    EXPECT_GT(LargestDifference(start, at("0.5", "512")), 0.05F);
    // Each block is set to the song's place anew: one that stood still would show.
    EXPECT_LT(LargestDifference(start, at("0", "32")), 1e-5F);
}

TEST_F(RenderSettings, AreListedInColumns) {
    const RenderResult result = Render({"--list"});
    EXPECT_EQ(result.exitCode, 0);
    for (const char* row :
         {"Index +Name +Identifier +Range +Default\n", "1 +Dry/wet +Depth +0 to 2 +1\n",
          "3 +Range +Range +0.0001 to 0.1 +0.01\n", "9 +Advanced parameters\n",
          "19 +Synchronization +sync +on or off +off\n",
          "20 +Length +synclength__ +see below +1 / 4\n", "22 +Phase +syncphase +0 to 1 +0.25\n"})
        EXPECT_THAT(result.out, testing::ContainsRegex(row));
    EXPECT_THAT(result.out, HasSubstr("Type: 'Straight', 'Triplets', 'Dotted'\n"));
}
