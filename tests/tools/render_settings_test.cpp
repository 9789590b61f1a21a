// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>

#include <cmath>
#include <sstream>

#include "tools/render_folder.h"

using testing::HasSubstr;

namespace {

class RenderSettings : public RenderFolder {
protected:
    void SetUp() override { WriteSound("in.wav", Tones(0.5, 2)); }

    std::string RenderedBytes(Arguments arguments) {
        arguments.insert(arguments.begin(), {"in.wav", "out.wav"});
        const RenderResult result = Render(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return Bytes("out.wav");
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
    std::vector<std::string> sounds;
    for (const auto& spellings : groups) {
        sounds.push_back(RenderedBytes(spellings[0]));
        for (const Arguments& spelling : spellings)
            EXPECT_EQ(RenderedBytes(spelling), sounds.back()) << testing::PrintToString(spelling);
    }
    for (std::size_t a = 0; a < sounds.size(); ++a)
        for (std::size_t b = 0; b < a; ++b) EXPECT_NE(sounds[a], sounds[b]) << a << ' ' << b;
}

TEST_F(RenderSettings, StandFromTheFirstSampleOnAndOverDrawnOnes) {
    const SoundData input = ReadSound("in.wav");
    const SoundData output = Rendered({"in.wav", "out.wav", "--tail=0", "--randomize=1", "--seed=9",
                                       "--set=Depth=0", "--set=Tremolo=0"},
                                      "out.wav");
    EXPECT_EQ(output.samples, input.samples);
}

TEST_F(RenderSettings, LockTheVoicesToASongThatMovesOn) {
    // A cycle for each quarter note: a whole quarter later is the same place, half a one is not.
    const auto at = [&](const char* position, const char* block) {
        return Rendered({"in.wav", "out.wav", "--tempo=120", "--position", position, "--block",
                         block, "--set=sync=on", "--set=Length=1 / 4"},
                        "out.wav")
            .samples;
    };
    const auto differ = [](const std::vector<float>& a, const std::vector<float>& b) {
        float largest = 0;
        for (std::size_t i = 0; i < a.size(); ++i)
            largest = std::max(largest, std::abs(a[i] - b[i]));
        return largest;
    };
    const std::vector<float> start = at("0", "512");
    EXPECT_LT(differ(start, at("1", "512")), 1e-5F);
    EXPECT_GT(differ(start, at("0.5", "512")), 0.05F);
    // Each block is set to the song's place anew: one that stood still would show.
    EXPECT_LT(differ(start, at("0", "32")), 1e-5F);
}

TEST_F(RenderSettings, AreListedInColumns) {
    const RenderResult result = Render({"--list"});
    EXPECT_EQ(result.exitCode, 0);
    std::istringstream lines(result.out);
    std::string header;
    std::getline(lines, header);
    std::string table;
    int rows = 0;
    for (std::string row; std::getline(lines, row) && !row.empty(); ++rows) {
        EXPECT_EQ(std::stoi(row), rows);
        for (const char* column : {"Name", "Identifier", "Range", "Default"}) {
            const std::size_t place = header.find(column);
            EXPECT_TRUE(place >= row.size() || row[place - 1] == ' ') << row;
        }
        table += row.substr(header.find("Name")) + '\n';
    }
    EXPECT_EQ(rows, 23);
    EXPECT_THAT(table, testing::ContainsRegex("Dry/wet +Depth +0 to 2 +1\n"));
    EXPECT_THAT(table, testing::ContainsRegex("Range +Range +0.0001 to 0.1 +0.01\n"));
    EXPECT_THAT(table, testing::ContainsRegex("Synchronization +sync +on or off +off\n"));
    EXPECT_THAT(table, testing::ContainsRegex("Length +synclength__ +see below +1 / 4\n"));
    EXPECT_THAT(result.out, HasSubstr("Type: 'Straight', 'Triplets', 'Dotted'\n"));
}
